#include "tests/support/folder.h"
#include "tests/support/refusal.h"
#include "tests/support/words.h"

#include <varnow/core/text.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <new>
#include <set>
#include <thread>

#if !defined(_WIN32)
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace varnow;
using namespace std::string_literals;

namespace {

// With the terminator, which every text must have.
std::string bytes(Text const& x)
{
    return std::string(x.str, static_cast<std::size_t>(x.len) + 1);
}

} // namespace

#if !defined(_WIN32)
TEST(Text, ReadsNothingBehindTheEndOfACString)
{
    auto const page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void* const two =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(two, MAP_FAILED);
    char* const end = static_cast<char*>(two) + page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    std::string const all = "abcdefghijklmnopqrstuvwxyzABCDEF";
    for (std::size_t n = 1; n <= all.size(); ++n) {
        std::string const part = all.substr(0, n);
        std::copy_n(part.c_str(), n + 1, end - n - 1);
        EXPECT_EQ(bytes(Text(end - n - 1)), part + '\0');
        std::copy_n(part.c_str(), n, end - n);
        EXPECT_EQ(bytes(Text(end - n, n)), part + '\0');
    }
    munmap(two, 2 * page);
}
#endif

TEST(Text, IsMadeFromCharactersStringsAndNumbers)
{
    std::string const with_zero = "a\0b"s;
    std::pair<Text, std::string> const cases[] = {{Text(), ""},
                                                  {Text("abc"), "abc"},
                                                  {Text('\0'), "\0"s},
                                                  {Text(with_zero), with_zero},
                                                  {Text(INT_MIN), "-2147483648"},
                                                  {Text(-7L), "-7"},
                                                  {Text(0.5), "0.500000000000"},
                                                  {Text(-0.0), "-0.000000000000"},
                                                  {Text(12345678901.5), "12345678901.500000000000"},
                                                  {Text(NAN), ""},
                                                  {Text(-INFINITY), "-inf"}};
    for (auto const& [x, expected] : cases) EXPECT_EQ(bytes(x), expected + '\0');
    Text x("old");
    EXPECT_EQ(x = 0, "0"); // no null pointer
    EXPECT_EQ(x = 'c', "c");
    EXPECT_EQ(x = 0.5f, "0.500000000000");
    EXPECT_EQ(x = -7L, "-7");
    EXPECT_EQ(x = NAN, "");
    for (std::size_t n : {std::size_t(INT_MAX), SIZE_MAX})
        EXPECT_THROW(Text("", n), std::bad_alloc);
}

TEST(Text, OwnsABufferOfItsOwn)
{
    Text a("abc"), b(a), c;
    c = a;
    a.str[0] = 'x';
    EXPECT_EQ(b, "abc");
    EXPECT_EQ(c, "abc");

    a = a.str + 1; // the text's own buffer
    a = *&a;
    a += a;
    EXPECT_EQ(a, "bcbc");
    Text moved(std::move(a));
    EXPECT_EQ(moved, "bcbc");
    EXPECT_EQ(a.len, 0);

    for (Text const& other : {moved, Text()}) {
        Text emptied("abc");
        char* const buffer = std::exchange(emptied.str, nullptr);
        emptied = other; // assignments and the destructor accept it
        EXPECT_EQ(bytes(emptied), bytes(other));
        detail::free_text(buffer, 3);
    }
}

TEST(Text, EmptyTextsTakeNoMemory)
{
    std::vector<Text> many(1000000);
    many[1] = "x";
    many[1] = "";
    many[2] = Text(NAN);
    many[3] = many[0] + many[2];
    for (Text const& x : many) ASSERT_EQ(x.str, detail::empty_text);
}

TEST(Text, CountsAZeroByteButCopiesAndJoinsUpToIt)
{
    Text const x("ab\0cd", 5);
    Text assigned("12345");
    assigned = x;
    std::pair<Text, std::string> const cases[] = {{Text(x), "ab\0\0\0\0"s},
                                                  {assigned, "ab\0\0\0\0"s},
                                                  {x + "yz", "abyz\0\0\0\0"s},
                                                  {"yz" + x, "yzab\0\0\0\0"s}};
    for (auto const& [got, expected] : cases) EXPECT_EQ(bytes(got), expected);
    std::ostringstream out;
    out << x;
    EXPECT_EQ(out.str(), "ab");
    EXPECT_EQ(x.firstpos('d'), 5);
    EXPECT_EQ(x.firstpos(Text("\0c", 2)), 3);
    EXPECT_FALSE(x == Text("ab"));
    EXPECT_LT(Text("ab\0c", 4), x);
}

TEST(Text, JoinsTextsCharactersAndNumbersInOrdinaryExpressions)
{
    EXPECT_EQ((Text('a') + Text("")).len, 1);
    EXPECT_EQ("x" + Text("a") + 'b' + "c" + 1 + 2L, "xabc12");
    EXPECT_EQ(0.5 + t("a"), "0.500000000000a");
    Text sum;
    for (int i = 0; i < 300; ++i) sum += "ab"; // past every pool
    EXPECT_EQ(sum.len, 600);
    EXPECT_EQ(sum.nthpos('b', 300), 600);
}

TEST(Text, OrdersBySignedBytesAndThenByLength)
{
    // Ascending: bytes of 0x80 and above stand before all of ASCII, a prefix before the longer
    // text.
    std::vector<std::string> const sorted = test::split(
        "|\200|\261|\261a|\377|A|a|a\261|aB|ab|abcdefgh|abcdefgh\261|abcdefgha|abcdefghi|"
        "abcdefghiabcdefgh\261|abcdefghiabcdefghz|b",
        '|');
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j) {
            SCOPED_TRACE(testing::Message() << i << " " << j);
            Text const a = sorted[i], b = sorted[j];
            EXPECT_TRUE((a < b) == (i < j) && (a <= b) == (i <= j));
            EXPECT_TRUE((a > b) == (i > j) && (a >= b) == (i >= j));
            EXPECT_TRUE((a == b) == (i == j) && (a != b) == (i != j));
        }
    // With characters as text, with numbers as a number.
    Text const x("10"), missing;
    EXPECT_TRUE(x == "10" && "10" == x && x != '1' && x > '1' && x < "9");
    EXPECT_TRUE(x > 9 && 9.5 < x && x == 10L && x <= 10.0f);
    EXPECT_TRUE(missing == "" && missing != 0.0 && !(missing < 1) && !(missing >= 1));
}

TEST(Text, FindsCharactersAndTexts)
{
    Text const x("abcabc"), none;
    std::pair<int, int> const cases[] = {
        {x.firstpos('b'), 2},  {x.lastpos('b'), 5},       {x.nthpos('b', 2), 5},
        {x.firstpos("bc"), 2}, {x.lastpos("bc"), 5},      {Text("aaa").lastpos("aa"), 2},
        {x.firstpos(x), 1},    {none.firstpos(none), -1}, {none.lastpos('a'), -1},
        {none.exist('\0'), 0}, {x.exist("cab"), 1},       {x.exist('c'), 1},
        {x.exist("cb"), 0},    {x.exist('z'), 0}};
    for (auto const& [got, expected] : cases) EXPECT_EQ(got, expected);
    for (int k : {3, 0, -1, INT_MIN, INT_MAX}) EXPECT_EQ(x.nthpos('b', k), -1);
    for (Text const& nowhere : {Text(), x + "d", Text("\xE1")}) {
        EXPECT_EQ(x.exist(nowhere), 0);
        EXPECT_EQ(x.firstpos(nowhere), -1);
        EXPECT_EQ(x.lastpos(nowhere), -1);
    }
    EXPECT_EQ(x.letter(3), "c");
    for (int i : {0, 7, INT_MIN, INT_MAX}) EXPECT_EQ(x.letter(i), "");
}

TEST(Text, ReplacesFromTheLeftWithoutOverlaps)
{
    char const* const cases[][4] = {
        {"aaaaa", "aa", "b", "bba"},  {"aXbX", "X", "", "ab"},
        {"ab", "", "x", "ab"},        {"ab", "abc", "x", "ab"},
        {"a.b", ".", "...", "a...b"}, {"abab", "ab", "abab", "abababab"},
        {"", "a", "b", ""},           {"aa", "aa", "", ""}};
    for (auto const& [x, a, b, expected] : cases) EXPECT_EQ(replace(t(x), t(a), t(b)), expected);
    EXPECT_EQ(replace("banana", 'a', 'o'), "bonono");
    EXPECT_EQ(dot2com("1.2,3."), "1,2,3,");
    EXPECT_EQ(com2dot("1.2,3,"), "1.2.3.");
    EXPECT_EQ(to_upper("az{\xB1\xE6"), "AZ{\xB1\xE6");
    EXPECT_EQ(to_lower("AZ[\xA1\xC6"), "az[\xA1\xC6");
}

TEST(Text, StreamsWordsOfAnyLength)
{
    std::string const longest(5000, 'w');
    std::istringstream in("  one\t" + longest + "\n");
    Text x;
    for (std::string const& expected : {"one"s, longest, ""s}) {
        in >> x;
        EXPECT_EQ(x, Text(expected));
    }
    EXPECT_TRUE(in.fail());
    std::ostringstream out;
    x.str = nullptr;
    out << x;
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(out.str(), "");
}

TEST(Text, WritesAndReadsItsFileForm)
{
    folder const files;
    std::string const with_zero = "x y\0z\n"s, form = "2 ab0 6 x y\0z\n6   lead|rest"s;
    std::FILE* f = std::fopen(files.path("written").c_str(), "wb");
    for (std::string const& s : {"ab"s, ""s, with_zero, "  lead"s}) Text(s).write(f);
    std::fclose(f);
    EXPECT_EQ(files.bytes("written") + "|rest", form);
    // Read back, the last loses its leading blanks and takes as much from what follows; of damaged
    // files no more is taken than is there.
    auto const expect_read = [&](std::string const& content,
                                 std::vector<std::string> const& texts) {
        f = std::fopen(files.put("f", content).c_str(), "rb");
        Text x("old");
        for (std::string const& expected : texts) {
            x.read(f);
            EXPECT_EQ(bytes(x), expected + '\0') << content;
        }
        std::fclose(f);
    };
    expect_read(form, {"ab", "", with_zero, "lead|r"});
    for (char const* s : {"2147483647 ab", "99999999999999999999 ab", "3 ab", "+2 abc", "2abc"})
        expect_read(s, {"ab"});
    for (char const* s : {"", "   ", "abc", "-5 abc", "5", "- 3 abc"}) expect_read(s, {""});
}

TEST(Text, ReadsAWholeFileWithoutCarriageReturnsUpToAByteOf255)
{
    folder const files;
    using std::string;
    std::pair<string, string> const cases[] = {
        {"", ""},
        {"a\r\nb\r\n", "a\nb\n"},
        {"\r\r\r", ""},
        {"ab\377cd", "ab"},
        {"a\0b"s, "a\0b"s},
        {string(40000, 'x') + "\r\xFE\n", string(40000, 'x') + "\xFE\n"},
        {string(16384, 'y') + "\377z", string(16384, 'y')}};
    for (auto const& [content, expected] : cases) {
        Text const name = files.put("f", content);
        EXPECT_EQ(read_file(name.str), expected);
        Text x("old");
        x.read_file(name.str);
        EXPECT_EQ(x, Text(expected));
        EXPECT_EQ(read_file(name), Text(expected));
    }
}

TEST(TextDeathTest, RefusesAFileThatCannotBeRead)
{
    for (std::string const& name : {"no/such/file"s, testing::TempDir()})
        EXPECT_REFUSAL_DETAIL(Text().read_file(name.c_str()), "TEXT", "read_file(char*)",
                              "Nieudane otwarcie pliku:", name);
}

// Made here, dropped there, of every size around the edges of the pools; each text must keep its
// own bytes.
TEST(Text, BuffersWanderBetweenThreads)
{
    auto const content = [](int i) {
        return std::string(std::size_t(i % 140), char('a' + i % 26));
    };
    auto const in_threads = [](std::vector<std::vector<Text>>& made, auto work) {
        std::vector<std::thread> team;
        for (std::vector<Text>& mine : made) team.emplace_back(work, std::ref(mine));
        for (std::thread& worker : team) worker.join();
    };
    for (int round = 0; round < 4; ++round) {
        std::vector<std::vector<Text>> made(4);
        in_threads(made, [&](std::vector<Text>& mine) {
            for (int i = 0; i < 20000; ++i) mine.emplace_back(content(i));
        });
        in_threads(made, [&](std::vector<Text>& mine) {
            for (int i = 0; i < 20000; ++i) {
                Text& x = mine[std::size_t(i)];
                ASSERT_EQ(bytes(x), content(i) + '\0');
                x = i % 3 ? Text() : Text(content(i + 70));
            }
            mine.clear();
        });
    }
}

#if !defined(__SANITIZE_ADDRESS__) // which gives no memory out again for a while

TEST(Text, AThreadThatEndsLeavesItsMemoryToTheOthers)
{
    std::set<std::uintptr_t> blocks; // of 64 KiB
    std::size_t after_one = 0;
    for (int i = 0; i < 100; ++i) {
        std::thread([&blocks] {
            std::vector<Text> mine(5000, Text("short"));
            mine.resize(10000, Text("a text that takes a larger buffer"));
            for (Text const& x : mine) blocks.insert(reinterpret_cast<std::uintptr_t>(x.str) >> 16);
        }).join();
        if (i == 0) after_one = blocks.size();
    }
    EXPECT_LE(blocks.size(), 3 * after_one);
}

#endif
