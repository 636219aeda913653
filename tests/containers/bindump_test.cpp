#include <tests/support/containers.h>
#include <tests/support/folder.h>

#include <varnow/containers/matrix.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>

namespace {

using namespace varnow;

struct closer
{
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using stream = std::unique_ptr<std::FILE, closer>;

stream open(folder const& files, char const* mode)
{
    return stream(std::fopen(files.path("dump").c_str(), mode));
}

std::string content(std::FILE* f)
{
    std::string bytes;
    std::rewind(f);
    for (int c; (c = std::getc(f)) != EOF;) bytes += static_cast<char>(c);
    return bytes;
}

TEST(BinDump, HasTheStatedFormAndComesBackFromAmongOtherData)
{
    matrix m("1,5 -0,0000001 0; 1000000 4 1,0000004"), r(2, 3), empty;
    m.cell[0][2] = std::nan("");
    m.cell[1][1] = -INFINITY;
    m.colname(1) = "a b";
    m.rowname(2) = "3";
    r.rowname(1) = "previous";
    double* const cells = r.cell[0];
    folder const files;
    stream const f = open(files, "w+b");
    std::fputs("before ", f.get());
    m.writebin(f.get());
    matrix(0, 2).writebin(f.get());
    std::fputs("after", f.get());
    EXPECT_EQ(content(f.get()), "before 2 3 3 a b0 0 0 1.500000 -0.000000 nan "
                                "1 31000000.000000 -inf 1.000000 0 2 0 0 after");
    char word[10];
    std::rewind(f.get());
    ASSERT_EQ(std::fscanf(f.get(), "%9s", word), 1);
    r.readbin(f.get());
    empty.readbin(f.get());
    ASSERT_EQ(std::fscanf(f.get(), "%9s", word), 1);
    EXPECT_STREQ(word, "after");
    EXPECT_EQ(r.cell[0], cells);
    EXPECT_EQ(test::show(r), "2x3 a b . . | .: 1.5 . NaN | 3: 1e+06 -inf 1");
    EXPECT_EQ(r(2, 3), 1); // six decimals survive
    EXPECT_EQ(test::show(empty), "0x2 . .");
}

TEST(BinDumpDeathTest, RefusesDamage)
{
    std::istringstream damaged(
        "|x|2 |-1 2 0 0 |1 -2 0 |99999999999999999999 1 0 |1 1 3 ab|1 1 -5 0 1.0 |"
        "2147483647 2147483647 0 0 0 1 |2147483647 0 0 0 |0 2147483647 0 0 0|"
        "1 1 0 2147483647 1.0 |1 2 0 0 0 1.0 |1 2 0 0 0 1.0 abc |2 1 0 0 1.0 0 ");
    folder const files;
    for (std::string bytes; std::getline(damaged, bytes, '|');) {
        SCOPED_TRACE(bytes);
        matrix m;
        files.put("dump", bytes);
        stream const f = open(files, "rb");
        EXPECT_REFUSAL(m.readbin(f.get()), "MATRIX", "void readbin(FILE*)",
                       "nieprawidlowa zawartosc pliku");
    }
}

} // namespace
