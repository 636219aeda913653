#include <varnow/core/text.h>

#include "tests/support/refusal.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/mman.h>
#include <unistd.h>
#endif

using namespace varnow;

namespace {

std::string bytes(Text const& x)
{
    return std::string(x.str, static_cast<std::size_t>(x.len) + 1);
}

// With the terminator, which every text must have.
std::string terminated(char const* s, std::size_t n)
{
    return std::string(s, n) + '\0';
}

// A file of these bytes under a name of its own, removed at the end.
struct file
{
    std::string name = testing::TempDir() + "varnow_text_test.bin";
    explicit file(std::string const& content)
    {
        std::FILE* f = std::fopen(name.c_str(), "wb");
        std::fwrite(content.data(), 1, content.size(), f);
        std::fclose(f);
    }
    ~file() { std::remove(name.c_str()); }
};

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
    EXPECT_EQ(bytes(Text()), terminated("", 0));
    EXPECT_EQ(bytes(Text("abc")), terminated("abc", 3));
    EXPECT_EQ(bytes(Text('\0')), terminated("\0", 1));
    EXPECT_EQ(bytes(Text(std::string("a\0b", 3))), terminated("a\0b", 3));
    EXPECT_EQ(Text(INT_MIN), "-2147483648");
    EXPECT_EQ(Text(-7L), "-7");
    EXPECT_EQ(Text(0.5), "0.500000000000");
    EXPECT_EQ(Text(-0.0), "-0.000000000000");
    EXPECT_EQ(Text(12345678901.5), "12345678901.500000000000");
    EXPECT_EQ(Text(NAN).len, 0);
    EXPECT_EQ(Text(-INFINITY), "-inf");
}

TEST(Text, TakesCharactersAndNumbersByAssignment)
{
    Text x("old");
    x = 0; // no null pointer
    EXPECT_EQ(x, "0");
    x = 'c';
    EXPECT_EQ(x, "c");
    x = 0.5f;
    EXPECT_EQ(x, "0.500000000000");
    x = -7L;
    EXPECT_EQ(x, "-7");
    x = NAN;
    EXPECT_EQ(x, "");
}

TEST(Text, OwnsABufferOfItsOwn)
{
    Text a("abc"), b(a), c;
    c = a;
    EXPECT_NE(a.str, b.str);
    EXPECT_NE(a.str, c.str);
    a.str[0] = 'x';
    EXPECT_EQ(b, "abc");
    EXPECT_EQ(c, "abc");

    a = a.str + 1; // the text's own buffer
    EXPECT_EQ(a, "bc");
    a = *&a;
    a += a;
    EXPECT_EQ(a, "bcbc");
    Text moved(std::move(a));
    EXPECT_EQ(moved, "bcbc");
    EXPECT_EQ(a.len, 0);

    Text emptied("abc");
    char* const first = emptied.str;
    emptied.str = nullptr; // assignments and the destructor accept it
    emptied = moved;
    EXPECT_EQ(emptied, "bcbc");
    char* const second = emptied.str;
    emptied.str = nullptr;
    detail::free_text(first, 3);
    detail::free_text(second, 4);
    emptied.len = 0;
    Text const empty;
    emptied = empty;
    EXPECT_STREQ(emptied.str, "");
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
    for (Text const& copy : {Text(x), assigned}) EXPECT_EQ(bytes(copy), terminated("ab\0\0\0", 5));
    EXPECT_EQ(bytes(x + "yz"), terminated("abyz\0\0\0", 7));
    EXPECT_EQ(bytes("yz" + x), terminated("yzab\0\0\0", 7));
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
    std::vector<Text> const sorted = {"",
                                      "\x80",
                                      "\xB1",
                                      "\xB1"
                                      "a",
                                      "\xFF",
                                      "A",
                                      "a",
                                      "a\xB1",
                                      "aB",
                                      "ab",
                                      "abcdefgh",
                                      "abcdefgh\xB1",
                                      "abcdefgha",
                                      "abcdefghi",
                                      "abcdefghiabcdefgh\xB1",
                                      "abcdefghiabcdefghz",
                                      "b"};
    for (std::size_t i = 0; i < sorted.size(); ++i)
        for (std::size_t j = 0; j < sorted.size(); ++j) {
            SCOPED_TRACE(testing::Message() << i << " " << j);
            Text const &a = sorted[i], &b = sorted[j];
            EXPECT_EQ(a < b, i < j);
            EXPECT_EQ(a <= b, i <= j);
            EXPECT_EQ(a > b, i > j);
            EXPECT_EQ(a >= b, i >= j);
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(a != b, i != j);
        }
}

TEST(Text, ComparesWithCharactersAsTextAndWithNumbersAsANumber)
{
    Text const x("10"), missing;
    EXPECT_TRUE(x == "10" && "10" == x && x != '1' && x > '1' && x < "9");
    EXPECT_TRUE(x > 9 && 9.5 < x && x == 10L && x <= 10.0f);
    EXPECT_TRUE(missing == "" && missing != 0.0 && !(missing < 1) && !(missing >= 1));
}

TEST(Text, FindsCharactersAndTexts)
{
    Text const x("abcabc"), none;
    EXPECT_EQ(x.firstpos('b'), 2);
    EXPECT_EQ(x.lastpos('b'), 5);
    EXPECT_EQ(x.nthpos('b', 2), 5);
    for (int k : {3, 0, -1, INT_MIN, INT_MAX}) EXPECT_EQ(x.nthpos('b', k), -1);
    EXPECT_EQ(x.firstpos("bc"), 2);
    EXPECT_EQ(x.lastpos("bc"), 5);
    EXPECT_EQ(Text("aaa").lastpos("aa"), 2);
    EXPECT_EQ(x.firstpos(x), 1);
    EXPECT_TRUE(x.exist("cab") && x.exist('c') && !x.exist("cb") && !x.exist('z'));
    for (Text const& nowhere : {Text(), x + "d", Text("\xE1")}) {
        EXPECT_EQ(x.exist(nowhere), 0);
        EXPECT_EQ(x.firstpos(nowhere), -1);
        EXPECT_EQ(x.lastpos(nowhere), -1);
    }
    EXPECT_EQ(none.firstpos(none), -1);
    EXPECT_EQ(none.lastpos('a'), -1);
    EXPECT_EQ(none.exist('\0'), 0);
    EXPECT_EQ(x.letter(3), "c");
    for (int i : {0, 7, INT_MIN, INT_MAX}) EXPECT_EQ(x.letter(i), "");
}

TEST(Text, ReplacesFromTheLeftWithoutOverlaps)
{
    struct
    {
        char const *x, *a, *b, *expected;
    } const cases[] = {
        {"aaaaa", "aa", "b", "bba"},  {"aXbX", "X", "", "ab"},
        {"ab", "", "x", "ab"},        {"ab", "abc", "x", "ab"},
        {"a.b", ".", "...", "a...b"}, {"abab", "ab", "abab", "abababab"},
        {"", "a", "b", ""},           {"aa", "aa", "", ""},
    };
    for (auto const& c : cases) EXPECT_EQ(replace(t(c.x), t(c.a), t(c.b)), c.expected) << c.x;
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
    in >> x;
    EXPECT_EQ(x, "one");
    in >> x;
    EXPECT_EQ(x, Text(longest));
    in >> x;
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(x, "");

    std::ostringstream out;
    x.str = nullptr;
    out << x;
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(out.str(), "");
}

TEST(Text, WritesAndReadsItsFileForm)
{
    std::FILE* f = std::tmpfile();
    ASSERT_TRUE(f);
    Text("ab").write(f);
    Text().write(f);
    Text("x y\0z\n", 6).write(f);
    Text("  lead").write(f);
    std::fputs("|rest", f);
    std::rewind(f);
    char written[64] = {};
    std::size_t const n = std::fread(written, 1, sizeof written, f);
    EXPECT_EQ(std::string(written, n), std::string("2 ab0 6 x y\0z\n6   lead|rest", 27));

    std::rewind(f);
    Text x("old");
    x.read(f);
    EXPECT_EQ(x, "ab");
    x.read(f);
    EXPECT_EQ(x, "");
    x.read(f);
    EXPECT_EQ(x, Text("x y\0z\n", 6));
    x.read(f); // loses its leading blanks and takes as much from what follows
    EXPECT_EQ(x, "lead|r");
    std::fclose(f);
}

TEST(Text, ReadingDamagedFilesTakesNoMoreThanIsThere)
{
    struct
    {
        char const *content, *expected;
    } const cases[] = {
        {"", ""},
        {"   ", ""},
        {"abc", ""},
        {"-5 abc", ""},
        {"2147483647 ab", "ab"},
        {"99999999999999999999 ab", "ab"},
        {"3 ab", "ab"},
        {"5", ""},
        {"- 3 abc", ""},
        {"+2 abc", "ab"},
        {"2abc", "ab"},
    };
    for (auto const& c : cases) {
        file on_disk(c.content);
        std::FILE* f = std::fopen(on_disk.name.c_str(), "rb");
        Text x("old");
        x.read(f);
        EXPECT_EQ(x, c.expected) << c.content;
        std::fclose(f);
    }
}

TEST(Text, ReadsAWholeFileWithoutCarriageReturnsUpToAByteOf255)
{
    struct
    {
        std::string content, expected;
    } const cases[] = {
        {"", ""},
        {"a\r\nb\r\n", "a\nb\n"},
        {"\r\r\r", ""},
        {"ab\xFF"
         "cd",
         "ab"},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
        {std::string(40000, 'x') + "\r\xFE\n", std::string(40000, 'x') + "\xFE\n"},
        {std::string(16384, 'y') + "\xFF"
                                   "z",
         std::string(16384, 'y')},
    };
    for (auto const& c : cases) {
        file on_disk(c.content);
        EXPECT_EQ(read_file(on_disk.name.c_str()), c.expected);
        Text x("old");
        x.read_file(on_disk.name.c_str());
        EXPECT_EQ(x, Text(c.expected));
        EXPECT_EQ(read_file(Text(on_disk.name)), Text(c.expected));
    }
}

TEST(TextDeathTest, RefusesAFileThatCannotBeRead)
{
    for (std::string const& name : {std::string("no/such/file"), testing::TempDir()})
        EXPECT_REFUSAL_DETAIL(Text().read_file(name.c_str()), "TEXT", "read_file(char*)",
                              "Nieudane otwarcie pliku:", name);
}

TEST(Text, ALengthBeyondIntIsAnAllocationFailure)
{
    Text x;
    EXPECT_THROW(Text("", std::size_t(INT_MAX)), std::bad_alloc);
    EXPECT_THROW(Text("", SIZE_MAX), std::bad_alloc);
}

TEST(Text, BuffersWanderBetweenThreads)
{
    // Made here, dropped there, of every size around the edges of the pools; each text must keep
    // its own bytes.
    auto const content = [](int i) {
        return std::string(std::size_t(i % 140), char('a' + i % 26));
    };
    for (int round = 0; round < 4; ++round) {
        std::vector<std::vector<Text>> made(4);
        std::vector<std::thread> team;
        for (std::vector<Text>& mine : made)
            team.emplace_back([&mine, &content] {
                for (int i = 0; i < 20000; ++i) mine.emplace_back(content(i));
            });
        for (std::thread& worker : team) worker.join();
        team.clear();
        for (std::size_t k = 0; k < made.size(); ++k)
            team.emplace_back([&made, &content, k] {
                for (int i = 0; i < 20000; ++i) {
                    std::string const expected = content(i);
                    Text& x = made[k][std::size_t(i)];
                    ASSERT_EQ(std::string(x.str, std::size_t(x.len)), expected);
                    x = i % 3 ? Text() : Text(content(i + 70));
                }
                made[k].clear();
            });
        for (std::thread& worker : team) worker.join();
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
