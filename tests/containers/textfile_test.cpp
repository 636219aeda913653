#include <tests/support/bits.h>
#include <tests/support/containers.h>
#include <tests/support/folder.h>
#include <tests/support/number.h>

#include <varnow/containers/slicing.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

using namespace varnow;

struct options
{
    int rownames = 0, header = 0, quotes = 0;
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

TEST(ReadTxt, ReadsFieldsAsTheyStand)
{
    folder const files;
    // A table holds the same where nothing else is said.
    auto expect = [&](std::string const& bytes, options const& o, std::string const& of_matrix,
                      std::string const& of_table = "") {
        SCOPED_TRACE(bytes);
        std::string const file = files.put("in.txt", bytes);
        matrix m(3, 1);
        table t(3, 1);
        t.rnames[2] = m.rnames[2] = "stale";
        EXPECT_EQ(read(m, file, o), 0);
        EXPECT_EQ(read(t, file, o), 0);
        EXPECT_EQ(test::show(m), of_matrix);
        EXPECT_EQ(test::show(t), of_table.empty() ? of_matrix : of_table);
    };
    expect("ROWNAME;a;b\nr1;;2\n;3;-1\n", {1, 1}, "2x2 a b | r1: NaN 2 | .: 3 -1",
           "2x2 a b | r1: . 2 | .: 3 -1");
    expect("a;;c\n", {0, 1}, "0x3 a . c");
    expect("a\nb\n", {1}, "2x0 | a: | b:");
    expect("", {1, 1, 1}, "0x0");
    // what no line end closes is dropped, and all from a byte 0xFF on
    expect("1;2\n3;4", {}, "1x2 . . | .: 1 2");
    expect("1;2\n3\xFF;4\n5;6\n", {}, "1x2 . . | .: 1 2");
    expect(std::string(300, 'x'), {0, 1}, "0x0");
    // in the lines of a matrix each comma becomes a point
    expect("n;a,b\nr,s;1,5\n;,5\n", {1, 1}, "2x1 a,b | r.s: 1.5 | .: 0.5",
           "2x1 a,b | r,s: 1,5 | .: ,5");
    expect("1.5,2,\n", {0, 0, 0, ','}, "1x3 . . . | .: 1.5 2 NaN", "1x3 . . . | .: 1.5 2 .");
    expect("\rn\r;a\rb\r\n\rx\ry;\r1\r2\r\r\n", {1, 1}, "1x1 ab | xy: 12");
    // quotes are dropped and protect nothing
    expect("\"a\";b\"\n\"1;2\"\n\"\";3\"\"4\n", {0, 1, 1}, "2x2 a b | .: 1 2 | .: NaN 34",
           "2x2 a b | .: 1 2 | .: . 34");
    expect("\"a\"\n\"1\"\n", {0, 1}, "1x1 \"a\" | .: .", "1x1 \"a\" | .: \"1\"");
    std::string const nul(1, '\0'), eights(254, '8'), ones(255, '1');
    expect("a" + nul + "b;" + nul + "\n1" + nul + "2;" + nul + "\n", {0, 1}, "1x2 a . | .: 1 .");
    expect(std::string(254, '\r') + ones + "\r;\"" + eights + "\n", {0, 0, 1},
           "1x2 . . | .: 1.11111e+254 8.88889e+253", "1x2 . . | .: " + ones + " " + eights);
}

// What a file of these bytes must give, by the plainest machine: one byte after the other.
template <class T> data<T> plainly_read(std::string const& bytes, options const& o)
{
    std::vector<std::vector<std::string>> lines(1, {""});
    for (char const c : bytes.substr(0, bytes.find('\xFF'))) {
        if (c == '\r') continue;
        if (c == '\n')
            lines.push_back({""});
        else if (c == o.sep)
            lines.back().emplace_back();
        else if (!o.quotes || c != '"')
            lines.back().back() += c;
    }
    lines.pop_back();
    int const rows = static_cast<int>(lines.size()), header = rows > 0 ? o.header : 0;
    data<T> a(rows - header, rows > 0 ? static_cast<int>(lines[0].size()) - o.rownames : 0);
    for (int i = -header; i < a.rows; ++i)
        for (int j = -o.rownames; j < a.cols; ++j) {
            std::string& field = lines[std::size_t(i + header)][std::size_t(j + o.rownames)];
            if (i >= 0) std::replace(field.begin(), field.end(), ',', commod<T>(','));
            if (i < 0 && j < 0) continue;
            if (i < 0 || j < 0)
                (i < 0 ? a.cnames[j] : a.rnames[i]) = field.c_str();
            else if constexpr (std::is_same<T, Text>::value)
                a.cell[i][j] = field.c_str();
            else
                a.cell[i][j] = field.empty() ? NAN : test::standard_atof(field.c_str());
        }
    return a;
}

// Numbers in every form that the C library knows, and some that it doesn't.
char const forms[] =
    "0|-0|7|-12|+3|0.1|-0.5|1234567.7654321|12345678|0.12345678|123456789.125|9007199254740993|"
    "9007199254740993.0|18446744073709551617|0.000000000000000000001|1.7976931348623157e308|"
    "1.7976931348623159e308|4.9e-324|2.2250738585072011e-308|1e-400|-1e400|1e5|1E+05|1e|1e+|5.|.5|"
    ".|-|--1|+-1|1-|0x10|0x1p-3|0x|inf|-inf|nan|NA|abc|12abc|1.2.3| 7|\t8| |1 2|00012.50|-.25|1,5|"
    ",5|1,2,3|1.5,2|0.30000000000000004|123456789012345678.5|72057594037927945|1e22|1e23|1d5";

TEST(ReadTxt, ReadsAnyFileAsAPlainLoopAndAtofDo)
{
    std::vector<std::string> numbers;
    std::istringstream all(forms);
    for (std::string number; std::getline(all, number, '|');) numbers.push_back(number);
    folder const files;
    std::mt19937 random(5);
    auto below = [&](std::size_t n) { return static_cast<int>(random() % n); };
    for (int round = 0; round < 624; ++round) {
        // Many small ones of any bytes; the last reach beyond one block of the reader, so that
        // fields lie across the border of two.
        bool const small = round < 600;
        std::size_t const size = small ? std::size_t(below(60)) : round < 620 ? 2000 : 700000;
        options const o = {below(2), below(2), below(2), ";,\t .5-\n\r\"\0"[below(small ? 11 : 4)]};
        int const fields = 1 + below(small ? 4 : 12);
        std::string bytes;
        while (bytes.size() < size) {
            for (int j = 0; j < fields; ++j) {
                std::string field = numbers[std::size_t(below(numbers.size()))];
                if (below(3) == 0) field = std::to_string(below(2000000) - 1000000);
                if (below(3) == 0) field.insert(field.size() / 2, ".");
                if (below(9) == 0) field.clear();
                if (below(40) == 0) field.resize(std::size_t(below(120)), "x\r\"1"[below(4)]);
                if (below(6) == 0) field = "\"" + field + "\"";
                for (int k = small ? below(4) : 0; k > 0; --k)
                    field.insert(std::size_t(below(field.size() + 1)), 1, "\"\r,;x\0"[below(6)]);
                std::replace(field.begin(), field.end(), o.sep, '8');
                bytes += field + (j < fields - 1 ? std::string(1, o.sep) : "");
            }
            bytes += below(4) == 0 ? "\r\n" : "\n";
        }
        if (small && below(4) == 0) bytes.insert(std::size_t(below(bytes.size() + 1)), 1, '\xFF');
        if (below(4) == 0) bytes += "1";
        SCOPED_TRACE(testing::Message() << round << ": " << bytes.substr(0, 200));
        std::string const file = files.put("in.txt", bytes);
        matrix m;
        table t;
        EXPECT_EQ(read(m, file, o), 0);
        EXPECT_EQ(read(t, file, o), 0);
        data<double> const numbers_read = plainly_read<double>(bytes, o);
        EXPECT_EQ(test::show(m), test::show(numbers_read));
        EXPECT_TRUE(test::same_bits(m, numbers_read));
        EXPECT_EQ(test::show(t), test::show(plainly_read<Text>(bytes, o)));
    }
}

TEST(ReadTxt, KeepsTheArraysOfAnObjectOfEqualSizes)
{
    folder const files;
    std::string const file = files.put("in.txt", "a;b\n1;2\n3;4\n");
    table t(2, 2);
    t.fill(Text("previous"));
    void const* const arrays[] = {t.cell, t.cnames, t.cell[1]};
    read(t, file, {0, 1});
    EXPECT_THAT(arrays, testing::ElementsAre(t.cell, t.cnames, t.cell[1]));
    // a name out of the object itself
    t.cnames[0] = file.c_str();
    EXPECT_EQ(t.readtxt(t.cnames[0].str, 0, 0, 0, 0, ';', 0), 0);
    EXPECT_EQ(test::show(t), "3x2 . . | .: a b | .: 1 2 | .: 3 4");
}

TEST(ReadTxtDeathTest, LeavesTheObjectOrRefusesWhenNothingCanBeRead)
{
    folder const files;
    for (std::string const& name : {files.path("missing.txt"), files.make_folder("folder"),
                                    files.path("no/such/folder.txt"), std::string()}) {
        matrix m("1 2; 3 4");
        EXPECT_EQ(read(m, name, {}, 0), 1) << name;
        EXPECT_EQ(test::show(m), "2x2 . . | .: 1 2 | .: 3 4");
        EXPECT_REFUSAL_DETAIL(read(m, name), "MATRIX", "int readtxt(char *)",
                              "nieudane otwarcie pliku do odczytu", "plik: " + name);
    }
}

TEST(ReadTxtDeathTest, RefusesUnequalLinesAndLongFieldsWithTheNameOfTheFile)
{
    folder const files;
    auto expect = [&](std::string const& bytes, options const& o, std::string const& message) {
        std::string const file = files.put("in.txt", bytes), detail = "plik: " + file;
        matrix m;
        table t;
        EXPECT_REFUSAL_DETAIL(read(m, file, o, 0), "MATRIX", "int readtxt(char *)", message,
                              detail);
        EXPECT_REFUSAL_DETAIL(read(t, file, o, 0), "TABLE", "int readtxt(char *)", message, detail);
    };
    std::string const longest(255, '1'), too_long(256, '1');
    std::string const cell = "tekst ma zbyt wiele znakow",
                      ragged = "zmienna liczba elementow w wierszu: ";
    std::string many;
    for (int i = 0; i < 100000; ++i) many += "1;2;3;4\n";
    expect("1;2\n3\n", {}, ragged + "2");
    expect("1;2;3\n1;2;3\n1;2\n1;2;3;4\n", {}, ragged + "3");
    expect("a\n1;2\n", {0, 1}, ragged + "2");
    expect(many + "1;2;3\n", {}, ragged + "100001");
    expect(too_long + "\n1;2\n", {}, ragged + "2");
    expect("1;2\n3;" + too_long + "\n", {}, cell);
    expect(too_long + ";1\n", {1}, cell);
    expect("\"" + longest + "\n", {}, cell);
    expect("a;" + too_long + "\n1;2\n", {0, 1}, "nazwa kolumny ma zbyt wiele znakow");
}

TEST(TextFiles, ShowProgressOnlyWhenAsked)
{
    folder const files;
    matrix m(1.0);
    for (int show : {0, 1}) {
        testing::internal::CaptureStdout();
        m.writetxt(files.path("x.txt").c_str(), show);
        std::fputs("|", stdout);
        m.readtxt(files.path("x.txt").c_str(), show);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), show ? "100%    |100%    " : "|");
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
    matrix m("1,5 -2; 0 4"), rows_only(2, 0);
    m.cell[1][0] = std::nan("");
    m.cell[1][1] = -std::numeric_limits<double>::infinity();
    m.cnames[0] = "a.b,c";
    m.rnames[0] = "r\"1\"";
    rows_only.rnames[1] = "r";
    table t = c("1,5.", "%s%n%d") & c("", "");
    t.cell[1][1] = Text("a\0b", 3);
    t.cnames[1] = "x.y,z";
    t.rnames[1] = "%n";
    folder const files;
    auto written = [&](auto const& a, options const& o, char dec = '.') {
        EXPECT_EQ(write(a, files.path("x.txt"), o, dec), 0);
        return files.text("x.txt");
    };
    EXPECT_EQ(written(m, {}), "1.500000;-2.000000\n;-inf\n");
    EXPECT_EQ(written(t, {}), "1.5.;%s%n%d\n;a\n");
    EXPECT_EQ(written(m, {0, 1}, ','), "a.b,c;\n1,500000;-2,000000\n;-inf\n");
    EXPECT_EQ(written(t, {0, 1}, ','), ";x.y,z\n1,5,;%s%n%d\n;a\n");
    EXPECT_EQ(written(m, {1, 0, 0, '%'}), "r\"1\"%1.500000%-2.000000\n%%-inf\n");
    EXPECT_EQ(written(t, {1, 0, 0, '%'}), "%1.5.%%s%n%d\n%n%%a\n");
    EXPECT_EQ(written(m, {1, 1, 1, '\t'}),
              "\"ROWNAME\"\t\"a.b,c\"\t\"\"\n\"r\"1\"\"\t\"1.500000\"\t"
              "\"-2.000000\"\n\"\"\t\"\"\t\"-inf\"\n");
    EXPECT_EQ(written(t, {0, 1, 1, '\t'}), "\"\"\t\"x.y,z\"\n\"1.5.\"\t\"%s%n%d\"\n\"\"\t\"a\"\n");
#if defined(_WIN32)
    EXPECT_EQ(files.bytes("x.txt").find("z\"\r\n"), 8u);
#endif
    EXPECT_EQ(written(rows_only, {1, 1}), "ROWNAME\n\nr\n");
    EXPECT_EQ(written(rows_only, {0, 1}), "");
    EXPECT_EQ(written(matrix(0, 2), {0, 1}), ";\n");
    EXPECT_EQ(written(matrix(), {0, 1}), "");
}

TEST(WriteTxt, WritesManyNumbersAsPrintfDoes)
{
    std::mt19937_64 random(7);
    matrix m(4000, 2);
    std::string expected;
    for (int k = 0; k < 8000; ++k) {
        double& x = m.cell[k / 2][k % 2];
        std::uint64_t const bits = random();
        std::memcpy(&x, &bits, 8);
        if (k % 3 == 0) x = double(int(bits % 20000001)) / 1e6 - 10;
        char buffer[400] = "";
        if (x == x) std::snprintf(buffer, sizeof buffer, "%f", x);
        expected += buffer + std::string(k % 2 ? "\n" : "|");
    }
    folder const files;
    write(m, files.path("m.txt"), {0, 0, 0, '|'});
    EXPECT_TRUE(files.text("m.txt") == expected);
}

TEST(WriteTxtDeathTest, ReturnsOneOrRefusesWhenTheFileCannotBeWritten)
{
    folder const files;
    std::string const file = files.put("x.txt", "old\n");
    std::vector<std::string> names = {files.path("no/such/folder.txt"),
                                      files.make_folder("folder")};
    if (std::filesystem::exists("/dev/full")) names.push_back("/dev/full");
    // Much fails in the writing, little only when the file is closed.
    matrix little(2.0);
    table much(300, 300);
    much.fill(Text("some text"));
    for (std::string const& name : names) {
        EXPECT_EQ(write(much, name, {}, '.', 0), 1) << name;
        EXPECT_EQ(write(little, name, {}, '.', 0), 1) << name;
        EXPECT_REFUSAL_DETAIL(write(much, name), "TABLE", "int writetxt(char *)",
                              "nieudane otwarcie pliku do zapisu", "plik: " + name);
    }
    // the opening comes first
    EXPECT_EQ(write(little, names[0], {}, ';', 0), 1);
    EXPECT_REFUSAL_DETAIL(write(little, file, {}, ';', 0), "MATRIX", "int writetxt(char *)",
                          "oczekiwany separator dziesietny '.' lub ','", "plik: " + file);
    EXPECT_EQ(files.bytes("x.txt"), "");
    // and what is handed over leaves nothing beside its name
    EXPECT_EXIT(little.ulwritetxt(files.path("y.txt").c_str(), 0, 0, 0, 0, ';', '?', 0),
                testing::ExitedWithCode(0), testing::HasSubstr("oczekiwany separator"));
    EXPECT_EQ(files.names(), (std::vector<std::string>{"folder", "x.txt"}));
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
    return k >= 0 && test::same_bits(m, numbered(k)) ? k : -1;
}

matrix taken(std::string const& name)
{
    matrix m;
    m.lreadtxt(name.c_str(), 0, 0, 0, 0, ';', 0);
    return m;
}
void hand_over(matrix const& m, std::string const& name)
{
    m.ulwritetxt(name.c_str(), 0, 0, 0, 0, ';', '.', 0);
}

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

TEST(HandOver, NeverShowsHalfAFileToReadersThatComeAtAnyTime)
{
    folder const files;
    std::string const file = files.path("shared.txt");
    hand_over(numbered(0), file);
    auto read_many = [&] {
        for (int i = 0; i < 100; ++i)
            if (number_of(taken(file)) < 0) return false;
        return true;
    };
    auto write_many = [&] {
        for (int k = 1; k <= 100; ++k) hand_over(numbered(k), file);
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

TEST(HandOver, WaitsForWhatIsInTheWay)
{
    folder const files;
    std::string const file = files.path("x.txt"), later = files.path("later/y.txt");
    auto pause = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
    files.make_folder("x.txt/in the way");
    std::atomic<int> came{0};
    std::thread reader([&] {
        matrix held;
        held.sreadtxt(files.path("_x.txt").c_str(), 0, 0, 0, 0, ';', 0);
        came = number_of(held);
    });
    pause();
    EXPECT_EQ(came, 0);
    // The underscore stands before the file's own name, and the file there is whole.
    std::thread writer([&] { hand_over(numbered(5), file); });
    reader.join();
    EXPECT_EQ(came, 5);
    pause();
    EXPECT_TRUE(files.holds("_x.txt"));
    std::filesystem::remove_all(file);
    writer.join();
    EXPECT_EQ(files.names(), std::vector<std::string>{"x.txt"});

    std::thread plain([&] { numbered(7).swritetxt(later.c_str(), 0, 0, 0, 0, ';', '.', 0); });
    pause();
    files.make_folder("later");
    plain.join();
    EXPECT_EQ(number_of(taken(later)), 7);
}

} // namespace
