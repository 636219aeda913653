#include <tests/support/folder.h>
#include <tests/support/number.h>
#include <tests/support/refusal.h>

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>
#include <varnow/core/platform.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <thread>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace varnow;

struct options
{
    int rownames = 0;
    int header = 0;
    int quotes = 0;
    char sep = ';';
};

template <class A> int read(A& a, std::string const& name, options const& o = {}, int fatal = 1)
{
    return a.readtxt(name.c_str(), 0, o.rownames, o.header, o.quotes, o.sep, fatal);
}
template <class A>
int write(A const& a, std::string const& name, options const& o = {}, char dec = '.', int fatal = 1)
{
    return a.writetxt(name.c_str(), 0, o.rownames, o.header, o.quotes, o.sep, dec, fatal);
}

std::string shown(double x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, 8);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.17g#%016llx", x, (unsigned long long)bits);
    return std::isnan(x) ? "missing" : buffer;
}
std::string shown(Text const& x)
{
    return x.len == 0 ? "missing" : std::to_string(x.len) + ":" + x.str;
}

// Sizes, names and cells in one text.
template <class A> std::string shown_object(A const& a)
{
    std::string r = std::to_string(a.rows) + "x" + std::to_string(a.cols);
    for (int j = 0; j < a.cols; ++j) r += "|" + shown(a.cnames[j]);
    for (int i = 0; i < a.rows; ++i) {
        r += "\n" + shown(a.rnames[i]);
        for (int j = 0; j < a.cols; ++j) r += "|" + shown(a.cell[i][j]);
    }
    return r;
}

// What a file of these bytes must give, by the plainest machine: one byte after the other.
template <class A> std::string expected_object(std::string bytes, options const& o)
{
    constexpr bool numbers = std::is_same<A, matrix>::value;
    bytes = bytes.substr(0, bytes.find('\xFF'));
    bytes = bytes.substr(0, bytes.rfind('\n') == bytes.npos ? 0 : bytes.rfind('\n') + 1);
    std::string field, names, rows;
    int lines = 0, fields = 0, most = 0;
    for (char c : bytes) {
        bool const in_header = o.header && lines == 0;
        if (c == '\r') continue;
        if (c == '\n' || c == o.sep) {
            bool const is_name = o.rownames && fields == 0;
            std::string const until_zero = field.c_str();
            if (in_header) {
                if (!is_name) names += "|" + shown(Text(until_zero));
            } else {
                if (fields == 0) rows += "\n" + (is_name ? "" : shown(Text()));
                if (fields > 0 || !is_name) rows += "|";
                if (numbers && !is_name)
                    rows += field.empty() ? "missing" : shown(test::standard_atof(field.c_str()));
                else
                    rows += shown(Text(until_zero));
            }
            field.clear();
            most = std::max(most, ++fields);
            if (c != '\n') continue;
            ++lines;
            fields = 0;
        } else if (!(o.quotes && c == '"')) {
            field += numbers && !in_header && c == ',' ? '.' : c;
        }
    }
    int const cols = std::max(0, most - (o.rownames ? 1 : 0));
    if (!o.header)
        for (int j = 0; j < cols; ++j) names += "|" + shown(Text());
    return std::to_string(std::max(0, lines - (o.header ? 1 : 0))) + "x" + std::to_string(cols) +
           names + rows;
}

template <class A> void expect_read(folder const& files, std::string const& bytes, options const& o)
{
    A a(3, 1);
    a.rnames[2] = "stale";
    EXPECT_EQ(read(a, files.put("in.txt", bytes), o), 0);
    std::string const expected = expected_object<A>(bytes, o), got = shown_object(a);
    if (got == expected) return;
    // A long file differs somewhere: say where.
    auto const at =
        std::mismatch(got.begin(),
                      got.begin() + std::ptrdiff_t(std::min(got.size(), expected.size())),
                      expected.begin())
            .first -
        got.begin();
    std::size_t const from = std::size_t(std::max<std::ptrdiff_t>(at - 60, 0));
    ADD_FAILURE() << "got      " << got.substr(from, 120) << "\nexpected "
                  << expected.substr(from, 120);
}

TEST(ReadTxt, FollowsTheFieldMachineByteByByte)
{
    struct example
    {
        char const* what;
        std::string bytes;
        options with;
        char const* matrix_sizes;
    };
    std::string const nul(1, '\0');
    example const examples[] = {
        {"header", "a;b\n1;2\n", {0, 1}, "1x2"},
        {"missing cell", "1;;3\n;;\n", {}, "2x3"},
        {"no last line end", "1;2\n3;4", {}, "1x2"},
        {"one line without an end", "1;2", {}, "0x0"},
        {"header without an end", "a;b", {1, 1}, "0x0"},
        {"long header without an end", std::string(300, 'x'), {0, 1}, "0x0"},
        {"decimal comma", "1,5;2\n,5;-1,25\n", {}, "2x2"},
        {"comma as separator", "1,5,2\n", {0, 0, 0, ','}, "1x3"},
        {"carriage returns anywhere", "\r1\r2;\r\r\n\r;3\r\n", {}, "2x2"},
        {"carriage returns in names", "\rn\r;a\rb\r\n\rx\ry;1\n", {1, 1}, "1x1"},
        {"a byte 0xFF",
         "1;2\n3;4\n\xFF"
         "5;6\n",
         {},
         "2x2"},
        {"a byte 0xFF in a line", "1;2\n3\xFF;4\n5;6\n", {}, "1x2"},
        {"a byte 0xFF first",
         "\xFF"
         "1\n",
         {0, 1},
         "0x0"},
        {"empty file", "", {}, "0x0"},
        {"empty file with all options", "", {1, 1, 1}, "0x0"},
        {"only a header", "a;b;c\n", {0, 1}, "0x3"},
        {"only row names", "a\nb\n", {1}, "2x0"},
        {"row names and header", "ROWNAME;a;\nr1;1;2\n;3;4\n", {1, 1}, "2x2"},
        {"comma in a row name", "a,b;1,5\n", {1}, "1x1"},
        {"comma in a column name", "a,b;c\n1;2\n", {0, 1}, "1x2"},
        {"quotes dropped", "\"a\";\"b\"\n\"1\";\"2,5\"\n", {0, 1, 1}, "1x2"},
        {"quotes protect nothing", "\"1;2\"\n", {0, 0, 1}, "1x2"},
        {"quoted empty fields", "\"\";\"\"\n\";\"\"\"\n", {0, 0, 1}, "2x2"},
        {"quotes inside", "1\"2;3\"\"4\n\"\r5\r\";6\"\r\n", {0, 0, 1}, "2x2"},
        {"quotes kept", "\"a\";\"1\"\n", {}, "1x2"},
        {"quote as separator", "1\"2\"\"\n", {0, 0, 1, '"'}, "1x4"},
        {"zero bytes", "1" + nul + "2;" + nul + "3\na" + nul + "b;" + nul + "\n", {}, "2x2"},
        {"zero bytes in names", "a" + nul + "b;" + nul + "\nc" + nul + ";1\n", {1, 1}, "1x1"},
        {"zero byte as separator", "1" + nul + "2\n" + nul + "\n", {0, 0, 0, '\0'}, "2x2"},
        {"point as separator", "1.5\n-2.-\n", {0, 0, 0, '.'}, "2x2"},
        {"digit as separator", "152\n858\n", {0, 0, 0, '5'}, "2x2"},
        {"minus as separator", "1-2\n-3\n", {0, 0, 0, '-'}, "2x2"},
        {"line end as separator", "1;2\n3\n", {0, 0, 0, '\n'}, "2x1"},
        {"carriage return as separator", "1\r2\n3\r\n", {0, 0, 0, '\r'}, "2x1"},
        {"blank as separator", "1 2\n 3\n", {0, 0, 0, ' '}, "2x2"},
        {"empty lines", "\n\n1\n", {}, "3x1"},
        {"fields of 255 characters",
         std::string(255, 'x') + ";" + std::string(255, '7') + "\n" + std::string(254, '\r') +
             std::string(255, '1') + "\r;\"" + std::string(254, '8') + "\n",
         {0, 1, 1},
         "1x2"},
    };
    folder const files;
    for (example const& e : examples) {
        SCOPED_TRACE(e.what);
        expect_read<matrix>(files, e.bytes, e.with);
        expect_read<table>(files, e.bytes, e.with);
        matrix m;
        read(m, files.path("in.txt"), e.with);
        EXPECT_EQ(std::to_string(m.rows) + "x" + std::to_string(m.cols), e.matrix_sizes);
    }
}

// Numbers in every form that the C library knows, and some that it doesn't.
char const* const forms[] = {"0",
                             "-0",
                             "7",
                             "-12",
                             "+3",
                             "0.1",
                             "-0.5",
                             "1234567.7654321",
                             "12345678",
                             "0.12345678",
                             "123456789.125",
                             "9007199254740993",
                             "9007199254740993.0",
                             "18446744073709551617",
                             "0.000000000000000000001",
                             "1.7976931348623157e308",
                             "1.7976931348623159e308",
                             "4.9e-324",
                             "2.2250738585072011e-308",
                             "1e-400",
                             "-1e400",
                             "1e5",
                             "1E+05",
                             "1e",
                             "1e+",
                             "5.",
                             ".5",
                             ".",
                             "-",
                             "--1",
                             "+-1",
                             "1-",
                             "0x10",
                             "0x1p-3",
                             "0x",
                             "inf",
                             "-inf",
                             "nan",
                             "NA",
                             "abc",
                             "12abc",
                             "1.2.3",
                             " 7",
                             "\t8",
                             " ",
                             "1 2",
                             "00012.50",
                             "-.25",
                             "1,5",
                             ",5",
                             "1,2,3",
                             "1.5,2",
                             "0.30000000000000004",
                             "123456789012345678.5",
                             "72057594037927945",
                             "1e22",
                             "1e23",
                             "1d5"};

TEST(ReadTxt, ReadsLongFilesAsTheFieldMachineAndAtofDo)
{
    folder const files;
    std::mt19937 random(5);
    auto below = [&](int n) { return static_cast<int>(random() % unsigned(n)); };
    for (int round = 0; round < 24; ++round) {
        options const o = {below(2), below(2), below(2), ";,\t "[round % 4]};
        int const fields = 1 + below(12);
        std::string bytes;
        // Beyond one block of the reader, so that fields lie across the border of two.
        int const size = round < 20 ? 2000 : 700000;
        while (static_cast<int>(bytes.size()) < size) {
            for (int j = 0; j < fields; ++j) {
                std::string field = forms[below(std::size(forms))];
                if (below(3) == 0) field = std::to_string(below(2000000) - 1000000);
                if (below(3) == 0) field.insert(field.size() / 2, ".");
                if (below(9) == 0) field.clear();
                if (below(40) == 0) field.resize(std::size_t(below(120)), "x\r\"1"[below(4)]);
                if (below(6) == 0) field = "\"" + field + "\"";
                for (char& c : field)
                    if (c == o.sep) c = '8';
                bytes += field + (j < fields - 1 ? std::string(1, o.sep) : "");
            }
            bytes += below(4) == 0 ? "\r\n" : "\n";
        }
        SCOPED_TRACE(round);
        expect_read<matrix>(files, bytes, o);
        expect_read<table>(files, bytes, o);
    }
}

TEST(ReadTxt, KeepsTheArraysOfAnObjectOfEqualSizes)
{
    folder const files;
    std::string const file = files.put("in.txt", "a;b\n1;2\n3;4\n");
    matrix m(2, 2);
    table t(2, 2);
    t.fill(Text("previous"));
    double** const cells = m.cell;
    Text* const names = m.cnames;
    Text* const row = t.cell[1];
    read(m, file, {0, 1});
    read(t, file, {0, 1});
    EXPECT_EQ(m.cell, cells);
    EXPECT_EQ(m.cnames, names);
    EXPECT_EQ(t.cell[1], row);
    EXPECT_EQ(m(2, "b"), 4);
    EXPECT_EQ(t(2, "b"), "4");
    // a name out of the object itself
    t.cnames[0] = file.c_str();
    EXPECT_EQ(t.readtxt(t.cnames[0].str, 0, 0, 0, 0, ';', 0), 0);
    EXPECT_EQ(t.rows, 3);
}

TEST(ReadTxt, ReturnsOneAndLeavesTheObjectWhenNothingCanBeRead)
{
    folder const files;
    matrix m("1 2; 3 4");
    std::string const before = shown_object(m);
    for (std::string const& name : {files.path("missing.txt"), files.make_folder("folder"),
                                    files.path("no/such/folder.txt"), std::string()}) {
        EXPECT_EQ(read(m, name, {}, 0), 1) << name;
        EXPECT_EQ(shown_object(m), before);
    }
}

TEST(ReadTxtDeathTest, RefusesWithTheNameOfTheFile)
{
    folder const files;
    std::string const routine = "int readtxt(char *)";
    std::string const long_field(256, '1');
    struct example
    {
        char const* what;
        std::string bytes;
        options with;
        char const* message;
    };
    example const examples[] = {
        {"short line", "1;2\n3\n", {}, "zmienna liczba elementow w wierszu: 2"},
        {"lines that make it up",
         "1;2;3\n1;2;3\n1;2\n1;2;3;4\n",
         {},
         "zmienna liczba elementow w wierszu: 3"},
        {"the header counts", "a\n1;2\n", {0, 1}, "zmienna liczba elementow w wierszu: 2"},
        {"ragged far off",
         [] {
             std::string s;
             for (int i = 0; i < 100000; ++i) s += "1;2;3;4\n";
             return s + "1;2;3\n";
         }(),
         {},
         "zmienna liczba elementow w wierszu: 100001"},
        {"before a long field",
         long_field + "\n1;2\n",
         {},
         "zmienna liczba elementow w wierszu: 2"},
        {"long cell", "1;2\n3;" + long_field + "\n", {}, "tekst ma zbyt wiele znakow"},
        {"long row name", long_field + ";1\n", {1}, "tekst ma zbyt wiele znakow"},
        {"quotes count unless dropped",
         "\"" + long_field.substr(1) + "\n",
         {},
         "tekst ma zbyt wiele znakow"},
        {"long column name",
         "a;" + long_field + "\n1;2\n",
         {0, 1},
         "nazwa kolumny ma zbyt wiele znakow"},
    };
    for (example const& e : examples) {
        SCOPED_TRACE(e.what);
        std::string const file = files.put("in.txt", e.bytes);
        matrix m;
        table t;
        EXPECT_REFUSAL_DETAIL(read(m, file, e.with, 0), "MATRIX", routine, e.message,
                              "plik: " + file);
        EXPECT_REFUSAL_DETAIL(read(t, file, e.with, 0), "TABLE", routine, e.message,
                              "plik: " + file);
    }
    matrix m;
    for (std::string const& name : {files.path("missing.txt"), files.make_folder("folder")})
        EXPECT_REFUSAL_DETAIL(read(m, name), "MATRIX", routine,
                              "nieudane otwarcie pliku do odczytu", "plik: " + name);
}

TEST(TextFiles, ShowProgressOnlyWhenAsked)
{
    folder const files;
    std::string const file = files.path("x.txt");
    matrix m(1, 1);
    m = 1;
    for (int show : {0, 1}) {
        testing::internal::CaptureStdout();
        m.writetxt(file.c_str(), show);
        std::string const writing = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        m.readtxt(file.c_str(), show);
        std::string const reading = testing::internal::GetCapturedStdout();
        EXPECT_EQ(writing, show ? "100%    " : "");
        EXPECT_EQ(reading, writing);
    }
}

TEST(ReadTxt, ReadsAPipe)
{
#if defined(_WIN32)
    GTEST_SKIP() << "a folder holds no pipes here";
#else
    folder const files;
    std::string const pipe = files.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string bytes;
    for (int i = 0; i < 200000; ++i) bytes += std::to_string(i) + ";x\n";
    std::thread writer([&] { files.put("pipe", bytes); });
    table t;
    EXPECT_EQ(read(t, pipe), 0);
    writer.join();
    EXPECT_EQ(t.rows, 200000);
    EXPECT_EQ(t(200000, 1), "199999");
#endif
}

TEST(WriteTxt, WritesEveryFieldInItsForm)
{
    double const inf = std::numeric_limits<double>::infinity();
    matrix m("1,5 -2; 0 4");
    m.cell[1][0] = std::nan("");
    m.cell[1][1] = -inf;
    m.cnames[0] = "a.b,c";
    m.rnames[0] = "r\"1\"";
    table t(2, 2);
    t.cell[0][0] = "1,5.";
    t.cell[0][1] = "%s%n%d";
    t.cell[1][1] = Text("a\0b", 3);
    t.cnames[1] = "x.y,z";
    t.rnames[1] = "%n";
    struct example
    {
        options with;
        char dec;
        char const* of_matrix;
        char const* of_table;
    };
    example const examples[] = {
        {{}, '.', "1.500000;-2.000000\n;-inf\n", "1.5.;%s%n%d\n;a\n"},
        {{0, 1}, ',', "a.b,c;\n1,500000;-2,000000\n;-inf\n", ";x.y,z\n1,5,;%s%n%d\n;a\n"},
        {{1, 0, 0, '%'}, '.', "r\"1\"%1.500000%-2.000000\n%%-inf\n", "%1.5.%%s%n%d\n%n%%a\n"},
        {{1, 1, 1, '\t'},
         '.',
         "\"ROWNAME\"\t\"a.b,c\"\t\"\"\n\"r\"1\"\"\t\"1.500000\"\t\"-2.000000\"\n"
         "\"\"\t\"\"\t\"-inf\"\n",
         "\"ROWNAME\"\t\"\"\t\"x.y,z\"\n\"\"\t\"1.5.\"\t\"%s%n%d\"\n\"%n\"\t\"\"\t\"a\"\n"},
    };
    folder const files;
    for (example const& e : examples) {
        SCOPED_TRACE(e.of_matrix);
        EXPECT_EQ(write(m, files.path("m.txt"), e.with, e.dec), 0);
        EXPECT_EQ(write(t, files.path("t.txt"), e.with, e.dec), 0);
        EXPECT_EQ(files.text("m.txt"), e.of_matrix);
        EXPECT_EQ(files.text("t.txt"), e.of_table);
    }
#if defined(_WIN32)
    EXPECT_EQ(files.bytes("t.txt").find("z\"\r\n"), 18u);
#endif
    // objects without cells
    matrix rows_only(2, 0), cols_only(0, 2);
    rows_only.rnames[1] = "r";
    write(rows_only, files.path("m.txt"), {1, 1});
    EXPECT_EQ(files.text("m.txt"), "ROWNAME\n\nr\n");
    write(rows_only, files.path("m.txt"), {0, 1});
    EXPECT_EQ(files.text("m.txt"), "");
    write(cols_only, files.path("m.txt"), {0, 1});
    EXPECT_EQ(files.text("m.txt"), ";\n");
    write(matrix(), files.path("m.txt"), {0, 1});
    EXPECT_EQ(files.text("m.txt"), "");
}

TEST(WriteTxt, WritesNumbersAsPrintfDoes)
{
    std::mt19937_64 random(7);
    int const rows = 4000;
    matrix m(rows, 6);
    std::string expected;
    for (int i = 0; i < rows; ++i) {
        std::uint64_t const bits = random();
        double any;
        std::memcpy(&any, &bits, 8);
        double const whole =
            std::floor(std::ldexp(1.0, int(bits % 70)) * (1 + double(bits) / 2e19));
        double const values[] = {any,                                     // every magnitude
                                 double(int(bits % 20000001)) / 1e6 - 10, // the usual case
                                 (double(bits % 2000) + 0.5) / 64 /
                                     1e4, // near ties of the last decimal
                                 (double(bits % 4096) + 0.5) / 128 / 15625, // exact ties
                                 -whole,
                                 double(bits % 3) * -1e-7};
        for (int j = 0; j < 6; ++j) {
            m.cell[i][j] = values[j];
            char buffer[400] = "";
            if (values[j] == values[j]) std::snprintf(buffer, sizeof buffer, "%f", values[j]);
            expected += buffer + std::string(j < 5 ? "|" : "\n");
        }
    }
    folder const files;
    write(m, files.path("m.txt"), {0, 0, 0, '|'});
    EXPECT_TRUE(files.text("m.txt") == expected);
}

TEST(WriteTxt, ReturnsOneWhenTheFileCannotBeWritten)
{
    folder const files;
    table t(300, 300);
    t.fill(Text("some text"));
    for (std::string const& name : {files.path("no/such/folder.txt"), files.make_folder("folder")})
        EXPECT_EQ(write(t, name, {}, '.', 0), 1) << name;
    if (!std::filesystem::exists("/dev/full")) return;
    EXPECT_EQ(write(t, "/dev/full", {}, '.', 0), 1);
    // one that fails only when it is closed
    EXPECT_EQ(write(t[1], "/dev/full", {}, '.', 0), 1);
}

TEST(WriteTxtDeathTest, RefusesWithTheNameOfTheFile)
{
    folder const files;
    std::string const routine = "int writetxt(char *)";
    std::string const nowhere = files.path("no/such/folder.txt"),
                      file = files.put("x.txt", "old\n");
    table t(2, 2);
    matrix m(2.0);
    EXPECT_REFUSAL_DETAIL(write(t, nowhere), "TABLE", routine, "nieudane otwarcie pliku do zapisu",
                          "plik: " + nowhere);
    // the opening comes first
    EXPECT_EQ(write(m, nowhere, {}, ';', 0), 1);
    EXPECT_REFUSAL_DETAIL(write(m, file, {}, ';', 0), "MATRIX", routine,
                          "oczekiwany separator dziesietny '.' lub ','", "plik: " + file);
    EXPECT_EQ(files.bytes("x.txt"), "");
}

TEST(TextFiles, ComeBackAsTheyWereWritten)
{
    folder const files;
    table t(40, 7);
    t.test("p", "c");
    matrix m(40, 7);
    m.test(0.25, "q");
    for (int k = 0; k < 32; ++k) {
        options const o = {1, 1, k & 1, ";,\t|"[k / 2 % 4]};
        char const dec = k & 8 ? ',' : '.';
        if (o.sep == dec) continue;
        table t2;
        matrix m2;
        write(t, files.path("t.txt"), o, dec);
        write(m, files.path("m.txt"), o, dec);
        read(t2, files.path("t.txt"), o);
        read(m2, files.path("m.txt"), o);
        EXPECT_EQ(shown_object(t2), shown_object(t));
        EXPECT_EQ(shown_object(m2), shown_object(m));
    }
}

// A matrix whose cells all tell which of many it is.
matrix numbered(int k)
{
    matrix m(40 + k % 50, 30);
    m.fill(static_cast<double>(k));
    return m;
}

// The number, or -1 for anything but the whole of it.
int number_of(matrix const& m)
{
    int const k = m.rows > 0 && m.cols > 0 ? static_cast<int>(m.cell[0][0]) : -1;
    return k >= 0 && shown_object(m) == shown_object(numbered(k)) ? k : -1;
}

int const hand_overs = 100;

// Runs both jobs at once, the second one in a process of its own where processes can be forked;
// each returns whether all was well.
template <class F, class G> void run_both(F first, G second)
{
#if defined(_WIN32)
    bool sound = false;
    std::thread other([&] { sound = second(); });
    EXPECT_TRUE(first());
    other.join();
    EXPECT_TRUE(sound);
#else
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(100);
        _exit(second() ? 0 : 1);
    }
    EXPECT_TRUE(first());
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
#endif
}

TEST(HandOver, CarriesWholeFilesThereAndBack)
{
    folder const files;
    std::string const there = files.path("there.txt"), back = files.path("back.txt");
    int const turns = hand_overs;
    // Whoever has read a file removes it before answering.
    auto carry = [&](std::string const& in, std::string const& out, int k) {
        matrix m;
        m.lreadtxt(in.c_str(), 0, 0, 0, 0, ';', 0);
        if (std::remove(in.c_str()) != 0 || number_of(m) != k) return false;
        m = numbered(k + 1);
        m.ulwritetxt(out.c_str(), 0, 0, 0, 0, ';', '.', 0);
        return true;
    };
    run_both(
        [&] {
            numbered(0).ulwritetxt(there.c_str(), 0, 0, 0, 0, ';', '.', 0);
            for (int k = 1; k < 2 * turns; k += 2)
                if (!carry(back, there, k)) return false;
            return true;
        },
        [&] {
            for (int k = 0; k < 2 * turns; k += 2)
                if (!carry(there, back, k)) return false;
            return true;
        });
    EXPECT_EQ(files.names(), std::vector<std::string>{"there.txt"});
}

TEST(HandOver, NeverShowsHalfAFileToReadersThatComeAtAnyTime)
{
    folder const files;
    std::string const file = files.path("shared.txt");
    int const writes = hand_overs, reads = hand_overs;
    numbered(0).ulwritetxt(file.c_str(), 0, 0, 0, 0, ';', '.', 0);
    auto read_many = [&] {
        matrix m;
        for (int i = 0; i < reads; ++i) {
            m.lreadtxt(file.c_str(), 0, 0, 0, 0, ';', 0);
            if (number_of(m) < 0) return false;
        }
        return true;
    };
    auto write_many = [&] {
        for (int k = 1; k <= writes; ++k)
            numbered(k).ulwritetxt(file.c_str(), 0, 0, 0, 0, ';', '.', 0);
        return true;
    };
    run_both(
        [&] {
            bool sound = true;
            run_both([&] { return sound = read_many(); }, write_many);
            return sound;
        },
        read_many);
    EXPECT_EQ(files.names(), std::vector<std::string>{"shared.txt"});
}

bool comes_true_soon(std::function<bool()> const& condition)
{
    for (int i = 0; i < 2000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return condition();
}

TEST(HandOver, WaitsForWhatIsInTheWay)
{
    folder const files;
    std::string const file = files.path("x.txt");
    matrix const m = numbered(5);
    // The underscore stands before the file's own name, and the file there is whole.
    files.make_folder("x.txt/in the way");
    std::thread writer([&] { m.ulwritetxt(file.c_str(), 0, 0, 0, 0, ';', '.', 0); });
    EXPECT_TRUE(comes_true_soon([&] { return files.holds("_x.txt"); }));
    // Where a file that is being moved cannot be opened, that takes several attempts.
    matrix held;
    held.sreadtxt(files.path("_x.txt").c_str(), 0, 0, 0, 0, ';', 0);
    EXPECT_EQ(number_of(held), 5);
    std::filesystem::remove_all(file);
    writer.join();
    EXPECT_EQ(files.names(), std::vector<std::string>{"x.txt"});
    EXPECT_EQ(files.text("x.txt").size(), 45u * 30u * 9u);

    // An older file is replaced.
    numbered(7).ulwritetxt(file.c_str(), 0, 0, 0, 0, ';', '.', 0);
    matrix late;
    late.lreadtxt(file.c_str(), 0, 0, 0, 0, ';', 0);
    EXPECT_EQ(number_of(late), 7);
    EXPECT_EQ(files.names(), std::vector<std::string>{"x.txt"});

    std::atomic<bool> came{false};
    std::thread reader([&] {
        matrix r;
        r.sreadtxt(files.path("later/y.txt").c_str(), 0, 0, 0, 0, ';', 0);
        came = number_of(r) == 5;
    });
    std::thread plain(
        [&] { m.swritetxt(files.path("later/z.txt").c_str(), 0, 0, 0, 0, ';', '.', 0); });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(came);
    files.make_folder("later");
    plain.join();
    std::filesystem::rename(files.path("later/z.txt"), files.path("later/y.txt"));
    reader.join();
    EXPECT_TRUE(came);
}

TEST(HandOverDeathTest, LeavesNothingBesideTheNamesAfterARefusal)
{
    folder const files;
    matrix m(1.0);
    EXPECT_EXIT(m.ulwritetxt(files.path("x.txt").c_str(), 0, 0, 0, 0, ';', '?', 0),
                testing::ExitedWithCode(0), testing::HasSubstr("oczekiwany separator"));
    EXPECT_EQ(files.names(), std::vector<std::string>());
}

} // namespace
