// Networks in text files.
#include <varnow/network/checks.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <utility>

namespace varnow {

namespace {

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using file = std::unique_ptr<std::FILE, closer>;

bool refuse_file(char const* routine, char const* why, Text const& name)
{
    errormessage("NEURAL_NET", routine, why, "plik: " + name);
    return false;
}
bool refuse_reading(Text const& name)
{
    return refuse_file("load(Text)", "nieudane otwarcie pliku do odczytu", name);
}
bool refuse_content(Text const& name)
{
    return refuse_file("load(Text)", "nieprawidlowa zawartosc pliku", name);
}
bool refuse_writing(Text const& name)
{
    return refuse_file("save(Text)", "nieudany zapis pliku", name);
}

// A line of whole numbers.
bool write_numbers(Text const& name, std::initializer_list<int> numbers)
{
    file f(std::fopen(name.str, "wt"));
    if (!f) return refuse_file("save(Text)", "nieudane otwarcie pliku do zapisu", name);
    bool sound = true;
    char const* separator = "";
    for (int n : numbers) {
        sound &= std::fprintf(f.get(), "%s%d", separator, n) > 0;
        separator = " ";
    }
    sound &= std::fputc('\n', f.get()) != EOF;
    sound &= std::fclose(f.release()) == 0;
    return sound || refuse_writing(name);
}

// `count` whole numbers at the begin of a file, and with `alone` nothing else.
bool read_numbers(Text const& name, int* numbers, int count, bool alone)
{
    file f(std::fopen(name.str, "rt"));
    if (!f) return refuse_reading(name);
    for (int k = 0; k < count; ++k) {
        double number;
        if (std::fscanf(f.get(), "%lf", &number) != 1 || std::floor(number) != number ||
            std::fabs(number) > INT_MAX)
            return refuse_content(name);
        numbers[k] = static_cast<int>(number);
    }
    char more;
    return !alone || std::fscanf(f.get(), " %c", &more) != 1 || refuse_content(name);
}

// `sparse` reads no further than its entries; the file of a net ends with them.
bool ends_with_entries(Text const& name, sparse const& w)
{
    file f(std::fopen(name.str, "rt"));
    std::int64_t words = 0;
    while (f && std::fscanf(f.get(), "%*s") != EOF) ++words;
    return words == 3 + 3 * std::int64_t(w.nnz);
}

bool read_weights(Text const& name, int rows, int cols, sparse& w)
{
    // Looked at first, so that no wrong size is ever allocated.
    int size[3];
    if (!read_numbers(name, size, 3, false)) return false;
    if (size[0] != rows || size[1] != cols || size[2] < 0) return refuse_content(name);
    if (w.readtxt(name.str, 0) != 0) return refuse_reading(name);
    return (w.sorted && ends_with_entries(name, w)) || refuse_content(name);
}

} // namespace

void neural_net::save(Text const& name) const
{
    if (!detail::weights_fit(*this, "save(Text)")) return;
    if (!write_numbers(name + "_layers.nn", {n_in, n_hid, 1}) ||
        !write_numbers(name + "_activ.nn", {act_hid, act_out}))
        return;
    struct
    {
        char const* ending;
        sparse const& weights;
    } const files[] = {{"_w1.nn", w1}, {"_b1.nn", b1}, {"_w2.nn", w2}, {"_b2.nn", b2}};
    for (auto const& part : files) part.weights.writetxt((name + part.ending).str, 1);
}

void neural_net::load(Text const& name)
{
    int layers[3], codes[2];
    Text const of_layers = name + "_layers.nn", of_codes = name + "_activ.nn";
    if (!read_numbers(of_layers, layers, 3, true)) return;
    int const in = layers[0], hid = layers[1];
    if (in < 0 || hid < 0 || layers[2] != 1 || std::int64_t(in) * hid > INT_MAX) {
        refuse_content(of_layers);
        return;
    }
    if (!read_numbers(of_codes, codes, 2, true)) return;
    for (int code : codes)
        if (code < 0 || code > 3) {
            refuse_content(of_codes);
            return;
        }
    sparse weights[4];
    if (!read_weights(name + "_w1.nn", in, hid, weights[0]) ||
        !read_weights(name + "_b1.nn", 1, hid, weights[1]) ||
        !read_weights(name + "_w2.nn", hid, 1, weights[2]) ||
        !read_weights(name + "_b2.nn", 1, 1, weights[3]))
        return;
    n_in = in;
    n_hid = hid;
    act_hid = codes[0];
    act_out = codes[1];
    w1 = std::move(weights[0]);
    b1 = std::move(weights[1]);
    w2 = std::move(weights[2]);
    b2 = std::move(weights[3]);
    init_vars();
}

} // namespace varnow
