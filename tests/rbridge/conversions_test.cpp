#include <RInside.h>

#include <varnow/varnow.h> // behind R's headers

#include "tests/support/containers.h"

namespace varnow {
namespace {

RInside* r;

template <class R> R eval(char const* code)
{
    SEXP const value = r->parseEval(code);
    return Rcpp::as<R>(value);
}

// Hands x to R and asks it there whether it is what the code says.
template <class X> bool is_in_r(X const& x, std::string const& code)
{
    (*r)["back"] = x;
    return eval<bool>(("identical(back, " + code + ")").c_str());
}

TEST(Conversions, TextsCrossByteByByte)
{
    std::pair<char const*, char const*> const cases[] = {
        {"''", ""},
        {"'plain'", "plain"},
        {"'\\u017c'", "\xc5\xbc"},
        {"{ x <- '\\xbf'; Encoding(x) <- 'latin1'; x }", "\xbf"},
        {"NA_character_", "NA"},
    };
    for (auto const& [code, bytes] : cases) {
        SCOPED_TRACE(code);
        Rcpp::CharacterVector const v = r->parseEval(code);
        EXPECT_EQ(ctext(Rcpp::String(v[0])), bytes);
        Rcpp::String back = rtext(bytes);
        EXPECT_STREQ(back.get_cstring(), bytes);
        EXPECT_EQ(Rf_getCharCE(back.get_sexp()), CE_NATIVE);
    }
    EXPECT_EQ(ctext(Rcpp::String(std::string("from a buffer"))), "from a buffer");
}

TEST(Conversions, DatesCrossByYearMonthAndDay)
{
    std::tuple<long, long, long, int> const cases[] = {
        // days by R's as.Date
        {1970, 1, 1, 0},         {2024, 2, 29, 19782},   {1999, 12, 31, 10956},
        {1900, 3, 1, -25508},    {1899, 12, 31, -25568}, {1600, 2, 29, -135081},
        {1582, 10, 15, -141427}, {2100, 1, 31, 47512}};
    for (auto const& [y, m, d, days] : cases) {
        SCOPED_TRACE(days);
        date const x(y, m, d);
        EXPECT_EQ(rdate(x).getDate(), days);
        EXPECT_EQ(cdate(Rcpp::Date(days)), x);
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
            "matrix(seq_len(prod(c(" + std::string(shape) + "))) + 0.5, " + shape + ")";
        Rcpp::NumericMatrix const x = r->parseEval(code);
        matrix const m = cmatrix(x);
        ASSERT_EQ(m.rows, x.nrow());
        ASSERT_EQ(m.cols, x.ncol());
        for (int i = 0; i < m.rows; ++i)
            for (int j = 0; j < m.cols; ++j) ASSERT_EQ(m.cell[i][j], x(i, j));
        EXPECT_TRUE(is_in_r(rmatrix(m), code));
    }
    matrix const named = cmatrix(eval<Rcpp::NumericMatrix>(
        "matrix(c(1, NA, NaN, Inf), 2, dimnames = list(c('a', 'b'), c('c', 'd')))"));
    EXPECT_EQ(named.rnames[0] + named.cnames[0], "");
    EXPECT_TRUE(is_in_r(rmatrix(named), "matrix(c(1, NA, NaN, Inf), 2)"));
}

TEST(Conversions, VectorsAreRows)
{
    matrix const v = cvector(eval<Rcpp::NumericVector>("c(a = 1, b = NA, c = 3)"));
    EXPECT_EQ(v.rows, 1);
    EXPECT_EQ(v.cols, 3);
    EXPECT_EQ(v.cnames[0], "");
    EXPECT_TRUE(is_in_r(rvector(v), "c(1, NA, 3)"));
    EXPECT_TRUE(is_in_r(rvector("1 2 3; 4 5 6"), "c(1, 2, 3, 4, 5, 6)"));
    EXPECT_EQ(cvector(Rcpp::NumericVector(0)).cols, 0);
}

TEST(Conversions, FramesBecomeTables)
{
    std::pair<char const*, char const*> const cases[] = {
        {"data.frame(f = factor(c('u', 'v', NA)), n = c(1.5, 2, NA), l = c(TRUE, NA, FALSE))",
         "3x3 f n l | .: u 1.5 TRUE | .: v 2 NA | .: NA NA FALSE"},
        {"data.frame(n = 1:2, row.names = c('a', 'b'))", "2x1 n | .: 1 | .: 2"},
        {"data.frame(d = as.Date('2024-02-29'))", "1x1 d | .: 2024-02-29"},
        {"data.frame(a = 1, b = 2)[0, ]", "0x2 a b"},
        {"structure(list(a = 1:2), class = 'data.frame')", "0x1 a"},
        {"structure(list(1:2), row.names = 1:2, class = 'data.frame')", "2x1 . | .: 1 | .: 2"},
    };
    for (auto const& [code, shown] : cases)
        EXPECT_EQ(test::show(ctable(eval<Rcpp::DataFrame>(code))), shown) << code;
}

TEST(Conversions, TablesBecomeFrames)
{
    table t = c("1", "x");
    t.cnames[0] = "number";
    t.cnames[1] = "a b";
    t.rnames[0] = "lost";
    EXPECT_TRUE(is_in_r(rtable(t), "data.frame(number = '1', a.b = 'x')"));
    (*r)["back"] = rtable(table(0, 2));
    EXPECT_TRUE(eval<bool>("is.data.frame(back) && all(dim(back) == c(0, 2))"));
}

// The call throws the exception of the class with this text.
#define EXPECT_THROWN(call, name, text)                                                            \
    EXPECT_THAT([&] { call; }, testing::ThrowsMessage<Rcpp::name>(text))

TEST(Conversions, FailuresAreRcppsExceptions)
{
    table cell(1, 1), column(0, 1);
    for (Text* x : {&cell.cell[0][0], &column.cnames[0]}) {
        *x = "ab";
        x->str[1] = 0;
    }
    Rcpp::NumericMatrix flat(2, 2);
    Rf_setAttrib(flat, R_DimSymbol, R_NilValue);
    auto frame = [](char const* code) { ctable(eval<Rcpp::DataFrame>(code)); };
    char const* const zero = "Embedded NUL in string.";
    EXPECT_THROWN(rtext(cell.cell[0][0]), embedded_nul_in_string, zero);
    EXPECT_THROWN(ctext(Rcpp::String(std::string("a\0b", 3))), embedded_nul_in_string, zero);
    EXPECT_THROWN(rtable(cell), embedded_nul_in_string, zero);
    EXPECT_THROWN(rtable(column), embedded_nul_in_string, zero);
    EXPECT_THROWN(cmatrix(flat), not_a_matrix, "Not a matrix.");
    EXPECT_THROWN(frame("data.frame(a = I(list(1)))"), not_compatible,
                  "Not compatible with STRSXP: [type=list].");
    EXPECT_THROWN(frame("structure(list(a = 1:2), row.names = 1:3, class = 'data.frame')"),
                  index_out_of_bounds, "Index out of bounds: [index=2; extent=2].");
    r->parseEvalQ("as.data.frame <- function(...) stop('masked')");
    EXPECT_THROWN(rtable(table(1, 1)), eval_error,
                  "Could not convert using R function: as.data.frame.");
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
