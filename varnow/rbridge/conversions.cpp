#include <varnow/rbridge/weak_symbols.h> // before what declares them

#include <varnow/rbridge/conversions.h>

#include <varnow/containers/transpose.h>
#include <varnow/core/messages.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace varnow {

namespace {

// Without R in the process its symbols are null, and nothing of Rcpp can even be made to return.
void need_r(char const* routine)
{
    if (&R_NilValue) return;
    errormessage("RBRIDGE", routine, "program nie jest uruchomiony w srodowisku R", "");
    std::abort();
}

// R's own constructor of strings would leave a zero byte to R's error, a jump over our frames.
SEXP r_characters(Text const& x)
{
    if (x.len > 0 && std::memchr(x.str, 0, static_cast<std::size_t>(x.len)))
        throw Rcpp::embedded_nul_in_string();
    return Rf_mkCharLenCE(x.str, x.len, CE_NATIVE);
}

// The attribute as it stands: asking R for it would write the compact form out.
int count_rows(SEXP frame)
{
    for (SEXP a = ATTRIB(frame); a != R_NilValue; a = CDR(a)) {
        if (TAG(a) != R_RowNamesSymbol) continue;
        SEXP const names = CAR(a);
        if (TYPEOF(names) == INTSXP && LENGTH(names) == 2 && INTEGER(names)[0] == R_NaInt)
            return std::abs(INTEGER(names)[1]);
        return LENGTH(names);
    }
    return 0;
}

// The starts of the columns of an R matrix.
template <class D> std::vector<D*> column_starts(D* first, int rows, int cols)
{
    std::vector<D*> starts(static_cast<std::size_t>(cols));
    for (D*& start : starts) {
        start = first;
        first += rows;
    }
    return starts;
}

// Rcpp's classes of the same name put words of their own before the message.
struct conversion_error : Rcpp::eval_error
{
    explicit conversion_error(std::string const& text) : Rcpp::eval_error(text), text_(text) {}
    char const* what() const throw() override { return text_.c_str(); }

private:
    std::string text_;
};

} // namespace

Text ctext(Rcpp::String const& x)
{
    need_r("Text ctext(Rcpp::String)");
    // A string's own buffer may hold a zero byte, which this refuses.
    return Text(CHAR(x.get_sexp()));
}

Rcpp::String rtext(Text const& x)
{
    need_r("Rcpp::String rtext(Text)");
    return Rcpp::String(r_characters(x));
}

date cdate(Rcpp::Date const& x)
{
    need_r("date cdate(Rcpp::Date)");
    return date(x.getYear(), x.getMonth(), x.getDay());
}

Rcpp::Date rdate(date const& x)
{
    need_r("Rcpp::Date rdate(date)");
    long y = 0, m = 0, d = 0;
    x.ymd(y, m, d);
    // In the order year, month, day a year before 1900 would be taken for a month.
    return Rcpp::Date(static_cast<unsigned>(m), static_cast<unsigned>(d), static_cast<unsigned>(y));
}

matrix cmatrix(Rcpp::Matrix<14> const& x)
{
    need_r("matrix cmatrix(Rcpp::Matrix<14>)");
    if (!Rf_isMatrix(x)) throw Rcpp::not_a_matrix();
    SEXP const dim = Rf_getAttrib(x, R_DimSymbol);
    int const rows = INTEGER(dim)[0], cols = INTEGER(dim)[1];
    matrix r(rows, cols);
    detail::transpose(column_starts(x.begin(), rows, cols).data(), cols, rows, r.cell);
    return r;
}

Rcpp::Matrix<14> rmatrix(matrix const& x)
{
    need_r("Rcpp::Matrix<14> rmatrix(matrix)");
    Rcpp::NumericVector cells = Rcpp::no_init(static_cast<R_xlen_t>(x.rows) * x.cols);
    detail::transpose<double const>(x.cell, x.rows, x.cols,
                                    column_starts(cells.begin(), x.rows, x.cols).data());
    cells.attr("dim") = Rcpp::Dimension(x.rows, x.cols);
    return Rcpp::NumericMatrix(cells);
}

matrix cvector(Rcpp::Vector<14> const& x)
{
    need_r("matrix cvector(Rcpp::Vector<14>)");
    if (x.size() > INT_MAX)
        throw Rcpp::index_out_of_bounds("Index out of bounds: [index=%i; extent=%i].", x.size(),
                                        INT_MAX);
    matrix r(1, static_cast<int>(x.size()));
    std::copy(x.begin(), x.end(), r.cell[0]);
    return r;
}

Rcpp::Vector<14> rvector(matrix const& x)
{
    need_r("Rcpp::Vector<14> rvector(matrix)");
    Rcpp::NumericVector r = Rcpp::no_init(static_cast<R_xlen_t>(x.rows) * x.cols);
    double* to = r.begin();
    for (int i = 0; i < x.rows; ++i) to = std::copy_n(x.cell[i], x.cols, to);
    return r;
}

table ctable(Rcpp::DataFrame const& x)
{
    need_r("table ctable(Rcpp::DataFrame)");
    table r(count_rows(x), static_cast<int>(x.size()));
    SEXP const names = Rf_getAttrib(x, R_NamesSymbol);
    if (!Rf_isNull(names)) {
        Rcpp::CharacterVector const labels(names);
        for (int j = 0; j < r.cols; ++j) r.cnames[j] = CHAR(STRING_ELT(labels, labels.offset(j)));
    }
    for (int j = 0; j < r.cols; ++j) {
        Rcpp::CharacterVector const column(Rcpp::r_cast<STRSXP>(VECTOR_ELT(x, j)));
        if (r.rows > 0) column.offset(r.rows - 1);
        for (int i = 0; i < r.rows; ++i) r.cell[i][j] = CHAR(STRING_ELT(column, i));
    }
    return r;
}

Rcpp::DataFrame rtable(table const& x)
{
    need_r("Rcpp::DataFrame rtable(table)");
    Rcpp::List columns(x.cols);
    Rcpp::CharacterVector names(x.cols);
    for (int j = 0; j < x.cols; ++j) {
        Rcpp::CharacterVector column(x.rows);
        for (int i = 0; i < x.rows; ++i) SET_STRING_ELT(column, i, r_characters(x.cell[i][j]));
        columns[j] = column;
        SET_STRING_ELT(names, j, r_characters(x.cnames[j]));
    }
    columns.attr("names") = names;
    try {
        return Rcpp::DataFrame(static_cast<SEXP>(columns));
    } catch (Rcpp::not_compatible const& e) {
        throw conversion_error(e.what());
    }
}

} // namespace varnow
