// The dump of a matrix inside an open stream.
#include <varnow/containers/matrix.h>

#include <algorithm>
#include <vector>

namespace varnow {

namespace {

// Whether a length stands next, as each name begins with one.
bool at_length(std::FILE* f)
{
    int c;
    do c = std::getc(f);
    while (c == ' ' || (c >= '\t' && c <= '\r'));
    std::ungetc(c, f);
    return c >= '0' && c <= '9';
}

// Containers grow with what the file delivers, so that damaged sizes cost no memory.
bool read_name(std::FILE* f, std::vector<Text>& names)
{
    if (!at_length(f)) return false;
    names.emplace_back();
    names.back().read(f);
    return names.back().len == 0 || !std::feof(f);
}

void move_names(std::vector<Text>& from, Text* to)
{
    std::move(from.begin(), from.end(), to);
}

} // namespace

void matrix::writebin(std::FILE* f) const
{
    std::fprintf(f, "%d %d ", rows, cols);
    for (int j = 0; j < cols; ++j) cnames[j].write(f);
    for (int i = 0; i < rows; ++i) {
        rnames[i].write(f);
        for (int j = 0; j < cols; ++j) std::fprintf(f, "%.6f ", cell[i][j]);
    }
}

void matrix::readbin(std::FILE* f)
{
    auto refuse = [] {
        errormessage("MATRIX", "void readbin(FILE*)", "nieprawidlowa zawartosc pliku", "");
    };
    int r, c;
    if (std::fscanf(f, "%d %d ", &r, &c) != 2 || r < 0 || c < 0) return refuse();
    std::vector<Text> columns, names;
    std::vector<double> cells;
    for (int j = 0; j < c; ++j)
        if (!read_name(f, columns)) return refuse();
    for (int i = 0; i < r; ++i) {
        if (!read_name(f, names)) return refuse();
        for (int j = 0; j < c; ++j) {
            double x;
            if (std::fscanf(f, "%lg ", &x) != 1) return refuse();
            cells.push_back(x);
        }
    }
    resize(r, c);
    move_names(columns, cnames);
    move_names(names, rnames);
    for (int i = 0; i < r; ++i)
        std::copy_n(cells.begin() + static_cast<std::ptrdiff_t>(i) * c, c, cell[i]);
}

} // namespace varnow
