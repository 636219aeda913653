#include <varnow/containers/table.h>

#include <varnow/containers/cellwise.h>
#include <varnow/containers/ordering.h>
#include <varnow/containers/slicing.h>
#include <varnow/core/parse.h>

#include <cmath>

namespace varnow {

namespace {

Text number_text(double x)
{
    bool const whole = x == std::floor(x) && x >= INT_MIN && x <= INT_MAX;
    return whole ? itot(static_cast<int>(x)) : dtot(x, 0);
}

template <class T> table row_names(data<T> const& a)
{
    table r(a.rows, 1);
    for (int i = 0; i < a.rows; ++i) r.cell[i][0] = a.rnames[i];
    return r;
}

template <class T> table column_names(data<T> const& a)
{
    table r(1, a.cols);
    for (int j = 0; j < a.cols; ++j) r.cell[0][j] = a.cnames[j];
    return r;
}

} // namespace

table::table(matrix const& m) : data<Text>(m.rows, m.cols)
{
    copynames(m, *this);
    detail::set_cells(*this, number_text, m);
}

table::operator matrix() const
{
    matrix r(rows, cols);
    copynames(*this, r);
    detail::set_cells(
        r, [](Text const& x) { return detail::parse_double(x.str, x.str + x.len, true); }, *this);
    return r;
}

table& table::operator+=(Text x)
{
    detail::change(*this, [&x](Text const& y) { return y + x; });
    return *this;
}

void table::test(Text const& prefix, Text const& cell_prefix)
{
    detail::number_names(*this, prefix);
    for (int i = 0, k = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = cell_prefix + itot(++k);
}

table table::select(table const& labels, int by_columns, int exclude) const
{
    char const* const routine = "table select(table,int,int)";
    if (labels.rows > 1) {
        errormessage("TABLE", routine, "argument ma byc wektorem wierszowym", "");
        return table();
    }
    Vector idx(labels.rows * labels.cols);
    for (int k = 0; k < idx.n; ++k) {
        Text const& label = labels.cell[0][k];
        idx.v[k] = by_columns ? find_col(label, 1) : find_row(label, 1);
        if (idx.v[k] > 0) continue;
        errormessage("TABLE", routine,
                     "etykieta '" + label + "' nie wystepuje w " +
                         (by_columns ? "kolumnach" : "wierszach"),
                     "");
        return table();
    }
    if (exclude) idx = -idx;
    return by_columns ? col(idx) : row(idx);
}

table table::select_if(int (*f)(table const&)) const
{
    Vector flags(cols);
    for (int j = 0; j < cols; ++j) flags.v[j] = f((*this)[j + 1]);
    return col(find(flags));
}

void table::sortval(int n, Direction d, int by_column)
{
    if (n < 1 || n > (by_column ? cols : rows)) {
        errormessage("TABLE", "void sortval(int,Direction,int)",
                     by_column ? "numer kolumny poza zakresem" : "numer wiersza poza zakresem", "");
        return;
    }
    matrix line(by_column ? rows : 1, by_column ? 1 : cols);
    for (int i = 0; i < line.rows; ++i)
        for (int j = 0; j < line.cols; ++j)
            line.cell[i][j] = ttod(by_column ? cell[i][n - 1] : cell[n - 1][j]);
    Vector const places = order(line, d);
    if (by_column)
        reorder_rows(places, 1, rows);
    else
        reorder_cols(places, 1, cols);
}

void table::sortval(Text const& name, Direction d, int by_column)
{
    int const n = by_column ? find_col(name, 1) : find_row(name, 1);
    if (n < 1) {
        errormessage(
            "TABLE", "sortval(Text,Direction,int)",
            by_column ? "nie znaleziono podanej kolumny" : "nie znaleziono podanego wiersza", "");
        return;
    }
    sortval(n, d, by_column);
}

table operator+(table const& a, table const& b)
{
    return operator+<data<Text>>(a, b);
}
table operator+(Text const& a, table const& b)
{
    return detail::map(b, [&a](Text const& x) { return a + x; });
}
table operator+(table const& a, Text const& b)
{
    return detail::map(a, [&b](Text const& x) { return x + b; });
}

bool any(table const& a)
{
    return detail::some_cell(a, [](Text const& x) { return x.len != 0; });
}
bool all(table const& a)
{
    return !detail::some_cell(a, [](Text const& x) { return x.len == 0; });
}
bool isempty(table const& a)
{
    return a.rows == 0 || a.cols == 0;
}
bool issqr(table const& a)
{
    return a.rows == a.cols;
}
bool issym(table const& a)
{
    return detail::symmetric(a);
}

table vect(table const& a)
{
    return detail::stacked(a);
}

table rownames(table const& a)
{
    return row_names(a);
}
table colnames(table const& a)
{
    return column_names(a);
}
table rownames(matrix const& a)
{
    return row_names(a);
}
table colnames(matrix const& a)
{
    return column_names(a);
}

table forall(table const& a, Text (*f)(Text))
{
    return detail::map(a, f);
}
table forall(table const& a, Text (*f)(Text, double), double x)
{
    return detail::map(a, [f, x](Text const& y) { return f(y, x); });
}

} // namespace varnow
