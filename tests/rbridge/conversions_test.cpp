#include <RInside.h>

#include <varnow/varnow.h> // behind R's headers

#include "tests/support/refusal.h"

namespace varnow {
namespace {

RInside* r;

template <class R> R eval(char const* code)
{
    SEXP const value = r->parseEval(code);
    return Rcpp::as<R>(value);
}

// What a call throws: "class: text" for the classes that the conversions throw.
template <class F> std::string thrown(F f)
{
    // clang-format off
#define CASE(name) catch (Rcpp::name const& e) { return std::string(#name ": ") + e.what(); }
    try {
        f();
    }
    CASE(not_a_matrix)
    CASE(not_compatible)
    CASE(index_out_of_bounds)
    CASE(embedded_nul_in_string)
    CASE(eval_error)
#undef CASE
    // clang-format on
    return "";
}

TEST(Conversions, TextsCrossByteByByte)
{
    struct
    {
        char const *code, *bytes;
    } const cases[] = {
        {"''", ""},
        {"'plain'", "plain"},
        {"'\\u017c'", "\xc5\xbc"},
        {"{ x <- '\\xbf'; Encoding(x) <- 'latin1'; x }", "\xbf"},
        {"NA_character_", "NA"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.code);
        Rcpp::CharacterVector const v = r->parseEval(c.code);
        EXPECT_EQ(ctext(Rcpp::String(v[0])), c.bytes);
        Rcpp::String back = rtext(c.bytes);
        EXPECT_STREQ(back.get_cstring(), c.bytes);
        EXPECT_EQ(Rf_getCharCE(back.get_sexp()), CE_NATIVE);
    }
    EXPECT_EQ(ctext(Rcpp::String(std::string("from a buffer"))), "from a buffer");
}

TEST(Conversions, DatesCrossByYearMonthAndDay)
{
    struct
    {
        long y, m, d;
        int days;
    } const cases[] = {// days by R's as.Date
                       {1970, 1, 1, 0},         {2024, 2, 29, 19782},   {1999, 12, 31, 10956},
                       {1900, 3, 1, -25508},    {1899, 12, 31, -25568}, {1600, 2, 29, -135081},
                       {1582, 10, 15, -141427}, {2100, 1, 31, 47512}};
    for (auto const& c : cases) {
        SCOPED_TRACE(c.days);
        date const x(c.y, c.m, c.d);
        EXPECT_EQ(rdate(x).getDate(), c.days);
        EXPECT_EQ(cdate(Rcpp::Date(c.days)), x);
    }
}

TEST(ConversionsDeathTest, AMissingDateIsNoDate)
{
    EXPECT_EXIT(cdate(Rcpp::Date(NA_REAL)), testing::ExitedWithCode(0), testing::HasSubstr("DATE"));
}

TEST(Conversions, MatricesComeBackWithoutTheirNames)
{
    for (char const* shape : {"0, 0", "0, 3", "3, 0", "1, 1", "1, 9", "9, 1", "8, 8", "17, 23"}) {
        SCOPED_TRACE(shape);
        std::string const code =
            "x <- matrix(seq_len(prod(c(" + std::string(shape) + "))) + 0.5, " + shape + ")";
        Rcpp::NumericMatrix const x = r->parseEval(code);
        matrix const m = cmatrix(x);
        ASSERT_EQ(m.rows, x.nrow());
        ASSERT_EQ(m.cols, x.ncol());
        for (int i = 0; i < m.rows; ++i)
            for (int j = 0; j < m.cols; ++j) ASSERT_EQ(m.cell[i][j], x(i, j));
        (*r)["back"] = rmatrix(m);
        EXPECT_TRUE(eval<bool>("identical(back, x)"));
    }
    matrix const named = cmatrix(eval<Rcpp::NumericMatrix>(
        "matrix(c(1, NA, NaN, Inf), 2, dimnames = list(c('a', 'b'), c('c', 'd')))"));
    EXPECT_EQ(named.rnames[0] + named.cnames[0], "");
    (*r)["back"] = rmatrix(named);
    EXPECT_TRUE(eval<bool>("identical(back, matrix(c(1, NA, NaN, Inf), 2))"));
}

TEST(Conversions, VectorsAreRows)
{
    matrix const v = cvector(eval<Rcpp::NumericVector>("c(a = 1, b = NA, c = 3)"));
    EXPECT_EQ(v.rows, 1);
    EXPECT_EQ(v.cols, 3);
    EXPECT_EQ(v.cnames[0], "");
    (*r)["back"] = rvector(v);
    EXPECT_TRUE(eval<bool>("identical(back, c(1, NA, 3))"));
    (*r)["back"] = rvector("1 2 3; 4 5 6");
    EXPECT_TRUE(eval<bool>("identical(back, c(1, 2, 3, 4, 5, 6))"));
    EXPECT_EQ(cvector(Rcpp::NumericVector(0)).cols, 0);
}

TEST(Conversions, FramesBecomeTables)
{
    struct
    {
        char const* code;
        int rows;
        table names, cells; // cells row after row
    } const cases[] = {
        {"data.frame(f = factor(c('u', 'v', NA)), n = c(1.5, 2, NA), l = c(TRUE, NA, FALSE))", 3,
         c("f", "n", "l"), c("u", "1.5", "TRUE", "v", "2", "NA", "NA", "NA", "FALSE")},
        {"data.frame(n = 1:2, row.names = c('a', 'b'))", 2, c("n"), c("1", "2")},
        {"data.frame(d = as.Date('2024-02-29'))", 1, c("d"), c("2024-02-29")},
        {"data.frame(a = 1, b = 2)[0, ]", 0, c("a", "b"), table(1, 0)},
        {"structure(list(a = 1:2), class = 'data.frame')", 0, c("a"), table(1, 0)},
        {"structure(list(1:2), row.names = 1:2, class = 'data.frame')", 2, c(""), c("1", "2")},
    };
    for (auto const& expected : cases) {
        SCOPED_TRACE(expected.code);
        table const t = ctable(eval<Rcpp::DataFrame>(expected.code));
        ASSERT_EQ(t.rows, expected.rows);
        ASSERT_EQ(t.cols, expected.names.cols);
        for (int j = 0; j < t.cols; ++j) EXPECT_EQ(t.cnames[j], expected.names.cell[0][j]);
        for (int k = 0; k < expected.cells.cols; ++k)
            EXPECT_EQ(t.cell[k / t.cols][k % t.cols], expected.cells.cell[0][k]);
    }
}

TEST(Conversions, TablesBecomeFrames)
{
    table t = c("1", "x");
    t.cnames[0] = "number";
    t.cnames[1] = "a b";
    t.rnames[0] = "lost";
    (*r)["back"] = rtable(t);
    EXPECT_TRUE(eval<bool>("identical(back, data.frame(number = '1', a.b = 'x'))"));
    (*r)["back"] = rtable(table(0, 2));
    EXPECT_TRUE(eval<bool>("is.data.frame(back) && all(dim(back) == c(0, 2))"));
}

TEST(Conversions, FailuresAreRcppsExceptions)
{
    Text zero("ab");
    zero.str[1] = 0;
    Rcpp::NumericMatrix flat(2, 2);
    Rf_setAttrib(flat, R_DimSymbol, R_NilValue);
    auto frame = [](char const* code) { ctable(eval<Rcpp::DataFrame>(code)); };
    auto zeros = [&zero](table t) {
        t.cnames[0] = t.rows ? "" : "x";
        std::swap(t.rows ? t.cell[0][0] : t.cnames[0], zero);
        std::string const text = thrown([&] { rtable(t); });
        std::swap(t.rows ? t.cell[0][0] : t.cnames[0], zero);
        return text;
    };
    EXPECT_EQ(thrown([&] { rtext(zero); }), "embedded_nul_in_string: Embedded NUL in string.");
    EXPECT_EQ(thrown([] { ctext(Rcpp::String(std::string("a\0b", 3))); }),
              "embedded_nul_in_string: Embedded NUL in string.");
    EXPECT_EQ(zeros(table(1, 1)), "embedded_nul_in_string: Embedded NUL in string.");
    EXPECT_EQ(zeros(table(0, 1)), "embedded_nul_in_string: Embedded NUL in string.");
    EXPECT_EQ(thrown([&] { cmatrix(flat); }), "not_a_matrix: Not a matrix.");
    EXPECT_EQ(thrown([&] { frame("data.frame(a = I(list(1)))"); }),
              "not_compatible: Not compatible with STRSXP: [type=list].");
    EXPECT_EQ(
        thrown([&] { frame("structure(list(a = 1:2), row.names = 1:3, class = 'data.frame')"); }),
        "index_out_of_bounds: Index out of bounds: [index=2; extent=2].");
    r->parseEvalQ("as.data.frame <- function(...) stop('masked')");
    EXPECT_EQ(thrown([] { rtable(table(1, 1)); }),
              "eval_error: Could not convert using R function: as.data.frame.");
    r->parseEvalQ("rm(as.data.frame)");
}

} // namespace
} // namespace varnow

int main(int argc, char** argv)
{
    RInside session;
    varnow::r = &session;
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
