#include "carry.h"

namespace {

void take_names(SEXP names, varnow::Text* to)
{
    if (Rf_isNull(names)) return;
    for (R_xlen_t k = 0; k < Rf_xlength(names); ++k)
        if (STRING_ELT(names, k) != NA_STRING) to[k] = CHAR(STRING_ELT(names, k));
}

SEXP given_names(varnow::Text const* names, int n)
{
    bool some = false;
    for (int k = 0; k < n; ++k) some = some || names[k].len > 0;
    if (!some) return R_NilValue;
    Rcpp::CharacterVector r(n);
    for (int k = 0; k < n; ++k) r[k] = varnow::rtext(names[k]);
    return r;
}

} // namespace

varnow::matrix matrix_arg(Rcpp::NumericMatrix const& x)
{
    varnow::matrix r = varnow::cmatrix(x);
    SEXP const names = Rf_getAttrib(x, R_DimNamesSymbol);
    if (!Rf_isNull(names)) {
        take_names(VECTOR_ELT(names, 0), r.rnames);
        take_names(VECTOR_ELT(names, 1), r.cnames);
    }
    return r;
}

Rcpp::NumericMatrix matrix_result(varnow::matrix const& x)
{
    Rcpp::NumericMatrix r = varnow::rmatrix(x);
    Rcpp::Shield<SEXP> const rows(given_names(x.rnames, x.rows));
    Rcpp::Shield<SEXP> const cols(given_names(x.cnames, x.cols));
    if (!Rf_isNull(rows) || !Rf_isNull(cols)) {
        Rcpp::List names(2);
        names[0] = static_cast<SEXP>(rows);
        names[1] = static_cast<SEXP>(cols);
        r.attr("dimnames") = names;
    }
    return r;
}

varnow::table table_arg(Rcpp::List const& columns)
{
    int const cols = static_cast<int>(columns.size());
    varnow::table r(cols == 0 ? 0 : Rf_length(columns[0]), cols);
    for (int j = 0; j < cols; ++j) {
        SEXP const column = VECTOR_ELT(columns, j);
        for (int i = 0; i < r.rows; ++i)
            if (STRING_ELT(column, i) != NA_STRING) r.cell[i][j] = CHAR(STRING_ELT(column, i));
    }
    take_names(Rf_getAttrib(columns, R_NamesSymbol), r.cnames);
    return r;
}

Rcpp::List table_result(varnow::table const& x)
{
    Rcpp::List r(x.cols);
    Rcpp::CharacterVector names(x.cols);
    for (int j = 0; j < x.cols; ++j) {
        Rcpp::CharacterVector column(x.rows);
        for (int i = 0; i < x.rows; ++i) {
            varnow::Text const& cell = x.cell[i][j];
            SET_STRING_ELT(column, i,
                           cell.len == 0 ? NA_STRING
                                         : Rf_mkCharLenCE(cell.str, cell.len, CE_NATIVE));
        }
        r[j] = column;
        names[j] = varnow::rtext(x.cnames[j]);
    }
    r.attr("names") = names;
    return r;
}

Rcpp::IntegerVector vector_result(varnow::Vector const& x)
{
    return Rcpp::IntegerVector(x.v, x.v + x.n);
}
