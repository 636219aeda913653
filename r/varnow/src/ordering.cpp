#include "carry.h"

// One body for numbers, which come as a column, and for texts, which come as a list of one column.
namespace {

template <class F> SEXP with_column(SEXP x, F f)
{
    return TYPEOF(x) == REALSXP ? f(matrix_arg(Rcpp::NumericMatrix(x)))
                                : f(table_arg(Rcpp::List(x)));
}

template <class F> SEXP with_columns(SEXP x, SEXP y, F f)
{
    return TYPEOF(x) == REALSXP
               ? f(matrix_arg(Rcpp::NumericMatrix(x)), matrix_arg(Rcpp::NumericMatrix(y)))
               : f(table_arg(Rcpp::List(x)), table_arg(Rcpp::List(y)));
}

SEXP vector_of(varnow::matrix const& x)
{
    return varnow::rvector(x);
}
SEXP vector_of(varnow::table const& x)
{
    // A single cell counts as a row, so a union may be one.
    Rcpp::CharacterVector r(x.rows * x.cols);
    R_xlen_t k = 0;
    for (int i = 0; i < x.rows; ++i)
        for (int j = 0; j < x.cols; ++j) {
            varnow::Text const& cell = x.cell[i][j];
            r[k++] = cell.len == 0 ? Rcpp::String(NA_STRING) : varnow::rtext(cell);
        }
    return r;
}

} // namespace

// [[Rcpp::export]]
SEXP ordering_order(SEXP x, bool decreasing)
{
    return with_column(x, [decreasing](auto const& column) -> SEXP {
        return vector_result(varnow::order(column, static_cast<int>(decreasing)));
    });
}

// [[Rcpp::export]]
SEXP ordering_unique(SEXP x, bool from_last)
{
    return with_column(
        x, [from_last](auto const& column) { return vector_of(unique(column, from_last)); });
}

// [[Rcpp::export]]
SEXP ordering_match(SEXP x, SEXP y, bool from_last, int no_match)
{
    return with_columns(x, y, [=](auto const& a, auto const& b) -> SEXP {
        return vector_result(match(a, b, from_last, no_match));
    });
}

// [[Rcpp::export]]
SEXP ordering_sets(SEXP x, SEXP y, int which)
{
    return with_columns(x, y, [which](auto const& a, auto const& b) -> SEXP {
        switch (which) {
        case 1:
            return vector_of(setunion(a, b));
        case 2:
            return vector_of(setdiff(a, b));
        case 3:
            return vector_of(setintersect(a, b));
        case 4:
            return Rcpp::LogicalVector(1, setequal(a, b) != 0);
        default:
            return Rcpp::LogicalVector(vector_result(iselement(a, b)));
        }
    });
}
