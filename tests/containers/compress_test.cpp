#include <tests/support/folder.h>
#include <tests/support/refusal.h>

#include <varnow/containers/compress.h>

#include <cstdlib>
#include <random>

namespace {

using namespace varnow;

// Makes the system's temporary place the folder, so that what is left behind can be seen.
void use_as_temporary(std::string const& place)
{
    std::string const absolute = std::filesystem::absolute(place).string();
#if defined(_WIN32)
    _putenv_s("TMP", absolute.c_str());
#else
    setenv("TMPDIR", absolute.c_str(), 1);
#endif
}

std::string noise(int n, int values)
{
    std::mt19937 random(3);
    std::string s(static_cast<std::size_t>(n), 0);
    for (char& c : s) c = static_cast<char>(random() % unsigned(values));
    return s;
}

// The result and what was printed.
template <class F> std::string outcome(F f)
{
    testing::internal::CaptureStderr();
    int const result = f();
    return std::to_string(result) + " " + testing::internal::GetCapturedStderr();
}

TEST(Gzip, PacksAndUnpacksAnyBytes)
{
    folder const files;
    std::string const contents[] = {"",
                                    "a",
                                    "text\r\nwith lines\n",
                                    noise(1000, 256),
                                    noise(700000, 256),
                                    std::string(3000000, 'a')};
    for (std::string const& bytes : contents) {
        std::string const in = files.put("in", bytes), packed = files.path("packed"),
                          out = files.put("out", "older");
        EXPECT_EQ(gzip(in.c_str(), packed.c_str()), 0);
        EXPECT_EQ(files.bytes("packed").substr(0, 3), "\x1F\x8B\x08");
        EXPECT_EQ(gunzip(packed.c_str(), out.c_str()), 0);
        EXPECT_TRUE(files.bytes("out") == bytes);
    }
    EXPECT_LT(files.bytes("packed").size(), 10000u);
    // files packed one after the other are one file
    std::string const a = files.put("a", "first "), b = files.put("b", "second");
    gzip(a.c_str(), files.path("a.gz").c_str());
    gzip(b.c_str(), files.path("b.gz").c_str());
    std::string const both = files.put("both.gz", files.bytes("a.gz") + files.bytes("b.gz"));
    EXPECT_EQ(gunzip(both.c_str(), files.path("both").c_str()), 0);
    EXPECT_EQ(files.bytes("both"), "first second");
}

TEST(Gzip, TellsWhatFailsAndLeavesNothingHalf)
{
    folder const files;
    std::string const good = files.put("good", noise(200000, 16)), packed = files.path("packed.gz");
    ASSERT_EQ(gzip(good.c_str(), packed.c_str()), 0);
    std::string const bytes = files.bytes("packed.gz");
    std::string flipped = bytes, bad_sum = bytes;
    flipped[bytes.size() / 2] ^= 0x10;
    bad_sum[bytes.size() - 6] ^= 1;
    std::string const place = files.make_folder("folder"), missing = files.path("missing"),
                      nowhere = files.path("no/folder/x"), out = files.put("out", "older");
    struct example
    {
        int (*f)(char const*, char const*);
        std::string in, out, failure;
    };
    std::vector<example> examples = {
        {gzip, missing, out, "Opening file `" + missing},
        {gunzip, missing, out, "Opening file `" + missing},
        {gzip, good, nowhere, "Opening file `" + nowhere},
        {gunzip, packed, nowhere, "Opening file `" + nowhere},
        {gzip, good, place, "Opening file `" + place},
        {gunzip, packed, place, "Opening file `" + place},
    };
#if !defined(_WIN32) // where a folder opens for reading
    examples.push_back({gzip, place, out, "Reading file `" + place});
    examples.push_back({gunzip, place, out, "Reading file `" + place});
#endif
    int k = 0;
    for (std::string const& damage :
         {std::string(), std::string("a"), std::string("\x1F\x8B"), std::string("never packed"),
          bytes.substr(0, 15), bytes.substr(0, bytes.size() / 2), bytes.substr(0, bytes.size() - 1),
          bytes.substr(0, bytes.size() - 8), flipped, bad_sum}) {
        std::string const damaged = files.put("damaged" + std::to_string(k++), damage);
        examples.push_back({gunzip, damaged, out, "Reading file `" + damaged});
    }
    if (std::filesystem::exists("/dev/full"))
        examples.push_back({gzip, good, "/dev/full", "Writing file `/dev/full"});

    std::vector<std::string> const before = files.names();
    for (example const& e : examples) {
        SCOPED_TRACE(e.in);
        EXPECT_EQ(outcome([&] { return e.f(e.in.c_str(), e.out.c_str()); }),
                  "1 ERROR: " + e.failure + "' failed.\n");
        EXPECT_EQ(files.bytes("out"), "older");
    }
    EXPECT_EQ(files.names(), before);
}

template <class A> class DataFiles : public testing::Test
{
};
using containers = testing::Types<matrix, table>;
TYPED_TEST_SUITE(DataFiles, containers);

TYPED_TEST(DataFiles, GoThroughPackedFilesWhenTheArgumentSaysSo)
{
    folder const files;
    use_as_temporary(files.make_folder("temporary"));
    TypeParam a(20, 3);
    a.test();
    for (int gz : {0, 1}) {
        std::string const name = files.path(gz ? "packed" : "plain.gz");
        TypeParam b;
        EXPECT_EQ(write_data(a, name.c_str(), gz, 0, 1, 1, 1, ';', ',', 1), 0);
        EXPECT_EQ(read_data(b, name.c_str(), gz, 0, 1, 1, 1, ';', 1), 0);
        EXPECT_EQ(b.rows, 20);
        EXPECT_EQ(b(20, 3), a(20, 3));
        EXPECT_EQ(b.rowname(20), "R20");
        EXPECT_EQ(b.colname(3), "C3");
    }
    EXPECT_EQ(files.names(), (std::vector<std::string>{"packed.gz", "plain.gz", "temporary"}));
    EXPECT_EQ(files.bytes("plain.gz").substr(0, 9), "\"ROWNAME\"");
    EXPECT_EQ(files.bytes("packed.gz").substr(0, 2), "\x1F\x8B");
    EXPECT_TRUE(std::filesystem::is_empty(files.path("temporary")));
}

TYPED_TEST(DataFiles, ReportWhatPackingReports)
{
    folder const files;
    use_as_temporary(files.make_folder("temporary"));
    TypeParam a(2, 2);
    a.test();
    std::string const missing = files.path("missing"), damaged = files.path("damaged"),
                      nowhere = files.path("no/folder/x");
    files.put("damaged.gz", "\x1F\x8B damaged");
    auto read = [&](std::string const& name, int fatal) {
        return read_data(a, name.c_str(), 1, 0, 0, 1, 0, ';', fatal);
    };
    EXPECT_EQ(outcome([&] { return read(missing, 0); }),
              "1 ERROR: Opening file `" + missing + ".gz' failed.\n");
    EXPECT_EQ(outcome([&] { return read(damaged, 0); }),
              "1 ERROR: Reading file `" + damaged + ".gz' failed.\n");
    EXPECT_EQ(outcome([&] { return write_data(a, nowhere.c_str(), 1); }),
              "1 ERROR: Opening file `" + nowhere + ".gz' failed.\n");
    EXPECT_EQ(a.rows, 2);
    EXPECT_EQ(a.colname(2), "C2");

    // refusals end the process: the temporary file goes all the same
    std::string const ragged = files.path("ragged");
    gzip(files.put("ragged", "a;b\n1\n").c_str(), (ragged + ".gz").c_str());
    EXPECT_EXIT(read(ragged, 1), testing::ExitedWithCode(0),
                testing::HasSubstr("zmienna liczba elementow w wierszu: 2\nplik: "));
    EXPECT_EXIT(read(damaged, 1), testing::ExitedWithCode(0),
                testing::HasSubstr("nieudane otwarcie pliku do odczytu\nplik: "));
    EXPECT_EXIT(write_data(a, ragged.c_str(), 1, 0, 0, 1, 0, ';', '?', 0),
                testing::ExitedWithCode(0), testing::HasSubstr("oczekiwany separator dziesietny"));
    EXPECT_TRUE(std::filesystem::is_empty(files.path("temporary")));
    EXPECT_EQ(files.names(),
              (std::vector<std::string>{"damaged.gz", "ragged", "ragged.gz", "temporary"}));
}

} // namespace
