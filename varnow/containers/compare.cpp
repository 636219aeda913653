#include <varnow/containers/compare.h>

namespace varnow {

namespace {

// The flags of one column. T and U are the types of cell and scalar that a refusal speaks of.
template <class T, class U, class F>
Vector flags(data<T> const& a, char const* routine, F const& holds)
{
    if (a.cols > 1) {
        errormessage<T, U>(routine, "oczekiwana jedna kolumna danych", "");
        return Vector();
    }
    Vector r(a.cols == 0 ? 0 : a.rows);
    for (int i = 0; i < r.n; ++i) r.v[i] = holds(a.cell[i][0]);
    return r;
}

template <class F> Vector flags(table const& a, table const& b, char const* routine, F const& holds)
{
    auto refuse = [&](char const* why) {
        errormessage<Text>(routine, why, "");
        return Vector();
    };
    if (a.cols > 1) return refuse("pierwszy argument nie jest wektorem");
    if (b.cols > 1) return refuse("drugi argument nie jest wektorem");
    if (a.rows != b.rows) return refuse("niezgodne dlugosci wektorow");
    Vector r(a.cols == 0 || b.cols == 0 ? 0 : a.rows);
    for (int i = 0; i < r.n; ++i) r.v[i] = holds(a.cell[i][0], b.cell[i][0]);
    return r;
}

} // namespace

// clang-format off
// A container M of cells T against a scalar U, passed as S; `cell` makes of a cell x what is compared.
#define WITH_SCALAR(op, M, T, U, S, cell)                                                              \
    Vector operator op(M const& a, S b)                                                                \
    { return flags<T, U>(a, "Vector operator " #op "(_data_,_U_)",                                     \
                         [&](T const& x) { return cell op b; }); }                                     \
    Vector operator op(S a, M const& b)                                                                \
    { return flags<T, U>(b, "Vector operator " #op "(_U_,_data_)",                                     \
                         [&](T const& x) { return a op cell; }); }
#define COMPARISONS(op)                                                                                \
    Vector operator op(table const& a, table const& b)                                                 \
    { return flags(a, b, "Vector operator " #op "(_data_,_data_)",                                     \
                   [](Text const& x, Text const& y) { return x op y; }); }                             \
    WITH_SCALAR(op, table, Text, Text, Text const&, x)                                                 \
    WITH_SCALAR(op, table, Text, double, double, ttod(x))                                              \
    WITH_SCALAR(op, table, Text, date, date const&, date(x))                                           \
    WITH_SCALAR(op, matrix, double, double, double, x)
COMPARISONS(==) COMPARISONS(!=) COMPARISONS(<) COMPARISONS(<=) COMPARISONS(>) COMPARISONS(>=)
#undef COMPARISONS
#undef WITH_SCALAR
// clang-format on

} // namespace varnow
