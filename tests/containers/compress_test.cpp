#include <tests/support/containers.h>
#include <tests/support/folder.h>

#include <varnow/containers/compress.h>

#include <cstdlib>
#include <random>
#include <vector>

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

std::string failure(std::string const& action, std::string const& name)
{
    return "1 ERROR: " + action + " file `" + name + "' failed.\n";
}

TEST(Gzip, PacksAndUnpacksAnyBytes)
{
    folder const files;
    std::string const out = files.path("out");
    for (std::string const& bytes : {std::string(), std::string("text\r\nwith lines\n"),
                                     noise(700000, 256), std::string(3000000, 'a')}) {
        std::string const in = files.put("in", bytes), packed = files.path("packed");
        files.put("out", "older");
        EXPECT_EQ(gzip(in.c_str(), packed.c_str()), 0);
        EXPECT_EQ(files.bytes("packed").substr(0, 3), "\x1F\x8B\x08");
        EXPECT_EQ(gunzip(packed.c_str(), out.c_str()), 0);
        EXPECT_TRUE(files.bytes("out") == bytes);
    }
    std::string const once = files.bytes("packed");
    EXPECT_LT(once.size(), 10000u);
    // files packed one after the other are one file
    EXPECT_EQ(gunzip(files.put("packed", once + once).c_str(), out.c_str()), 0);
    EXPECT_TRUE(files.bytes("out") == std::string(6000000, 'a'));
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
    auto expect = [&](auto f, std::string const& in, std::string const& to, char const* action,
                      std::string const& name) {
        EXPECT_EQ(outcome([&] { return f(in.c_str(), to.c_str()); }), failure(action, name));
        EXPECT_EQ(files.bytes("out"), "older");
    };
    std::vector<std::string> before = files.names();
    for (auto f : {gzip, gunzip}) {
        expect(f, missing, out, "Opening", missing);
        for (std::string const& to : {nowhere, place})
            expect(f, f == gzip ? good : packed, to, "Opening", to);
#if !defined(_WIN32) // where a folder opens for reading
        expect(f, place, out, "Reading", place);
#endif
    }
    if (std::filesystem::exists("/dev/full"))
        expect(gzip, good, "/dev/full", "Writing", "/dev/full");
    EXPECT_EQ(files.names(), before);
    std::string const damaged = files.put("damaged", "");
    before = files.names();
    for (std::string const& damage :
         {std::string(), std::string("a"), std::string("\x1F\x8B"), std::string("never packed"),
          bytes.substr(0, 15), bytes.substr(0, bytes.size() / 2), bytes.substr(0, bytes.size() - 1),
          flipped, bad_sum}) {
        files.put("damaged", damage);
        expect(gunzip, damaged, out, "Reading", damaged);
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
    TypeParam a(20, 3), b;
    a.test();
    std::string const content = test::show(a), place = files.path("");
    auto write = [&](char const* name, int gz, char dec, int fatal) {
        return write_data(a, (place + name).c_str(), gz, 0, 1, 1, 1, ';', dec, fatal);
    };
    auto read = [&](char const* name, int gz, int fatal) {
        return read_data(b, (place + name).c_str(), gz, 0, 1, 1, 1, ';', fatal);
    };
    for (int gz : {0, 1}) {
        char const* const name = gz ? "packed" : "plain.gz";
        b = TypeParam();
        EXPECT_EQ(write(name, gz, ',', 1), 0);
        EXPECT_EQ(read(name, gz, 1), 0);
        EXPECT_EQ(test::show(b), content);
    }
    EXPECT_EQ(files.bytes("plain.gz").substr(0, 9), "\"ROWNAME\"");
    EXPECT_EQ(files.bytes("packed.gz").substr(0, 2), "\x1F\x8B");
    EXPECT_EQ(files.names(), (std::vector<std::string>{"packed.gz", "plain.gz", "temporary"}));

    // what packing reports is reported
    files.put("damaged.gz", "\x1F\x8B damaged");
    gzip(files.put("ragged", "a;b\n1\n").c_str(), files.path("ragged.gz").c_str());
    std::vector<std::string> const before = files.names();
    EXPECT_EQ(outcome([&] { return read("missing", 1, 0); }),
              failure("Opening", place + "missing.gz"));
    EXPECT_EQ(outcome([&] { return read("damaged", 1, 0); }),
              failure("Reading", place + "damaged.gz"));
    EXPECT_EQ(outcome([&] { return write("no/x", 1, '.', 1); }),
              failure("Opening", place + "no/x.gz"));
    EXPECT_EQ(test::show(b), content);

    // refusals end the process: the temporary file goes all the same
    auto expect_end = [](auto call, char const* message) {
        EXPECT_EXIT(call(), testing::ExitedWithCode(0), testing::HasSubstr(message));
    };
    expect_end([&] { read("ragged", 1, 1); }, "zmienna liczba elementow w wierszu: 2\nplik: ");
    expect_end([&] { read("damaged", 1, 1); }, "nieudane otwarcie pliku do odczytu\nplik: ");
    expect_end([&] { write("ragged", 1, '?', 0); }, "oczekiwany separator dziesietny");
    EXPECT_TRUE(std::filesystem::is_empty(files.path("temporary")));
    EXPECT_EQ(files.names(), before);
}

} // namespace
