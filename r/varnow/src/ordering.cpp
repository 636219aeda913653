#include "carry.h"

// One body for numbers and texts, which come as vectors of R and go as objects of one row.
namespace {

varnow::table text_row(SEXP x)
{
    varnow::table r(1, Rf_length(x));
    for (int j = 0; j < r.cols; ++j)
        if (STRING_ELT(x, j) != NA_STRING) r.cell[0][j] = CHAR(STRING_ELT(x, j));
    return r;
}

varnow::matrix number_row(SEXP x)
{
    return varnow::cvector(Rcpp::NumericVector(x));
}

template <class F> SEXP with_vector(SEXP x, F f)
{
    return TYPEOF(x) == REALSXP ? f(number_row(x)) : f(text_row(x));
}

template <class F> SEXP with_vectors(SEXP x, SEXP y, F f)
{
    return TYPEOF(x) == REALSXP ? f(number_row(x), number_row(y)) : f(text_row(x), text_row(y));
}

SEXP vector_of(varnow::matrix const& x)
{
    return varnow::rvector(x);
}
SEXP vector_of(varnow::table const& x)
{
    Rcpp::CharacterVector r(x.rows * x.cols);
    for (int k = 0; k < r.size(); ++k) {
        varnow::Text const& cell = x.cell[0][k];
        r[k] = cell.len == 0 ? Rcpp::String(NA_STRING) : varnow::rtext(cell);
    }
    return r;
}

} // namespace

// [[Rcpp::export]]
SEXP ordering_order(SEXP x, bool decreasing)
{
    return with_vector(x, [decreasing](auto const& row) -> SEXP {
        return vector_result(varnow::order(row, static_cast<int>(decreasing)));
    });
}

// [[Rcpp::export]]
SEXP ordering_unique(SEXP x, bool from_last)
{
    return with_vector(x,
                       [from_last](auto const& row) { return vector_of(unique(row, from_last)); });
}

// [[Rcpp::export]]
SEXP ordering_match(SEXP x, SEXP y, bool from_last, int no_match)
{
    return with_vectors(x, y, [=](auto const& a, auto const& b) -> SEXP {
        return vector_result(match(a, b, from_last, no_match));
    });
}

// [[Rcpp::export]]
SEXP ordering_sets(SEXP x, SEXP y, int which)
{
    return with_vectors(x, y, [which](auto const& a, auto const& b) -> SEXP {
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
