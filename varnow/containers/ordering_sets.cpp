#include <varnow/containers/ordering.h>

#include <varnow/containers/line.h>
#include <varnow/containers/position_table.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace varnow {

namespace {

using detail::line;
using detail::position_table;

template <class T> bool refused(char const* routine, data<T> const& a)
{
    bool const bad = detail::beyond_vector(a);
    if (bad) errormessage<T>(routine, "oczekiwany wektor", "");
    return bad;
}
template <class T> bool refused(char const* routine, data<T> const& a, data<T> const& b)
{
    return refused(routine, a) || refused(routine, b);
}

// A NaN equals nothing, itself included, and stays out of the tables.
template <class T> bool equals_nothing(T const& x)
{
    return !(x == x);
}
template <> bool equals_nothing(Text const&)
{
    return false;
}

// Positions of the first occurrences among n cells (the last, from_end), rising.
template <class At> std::vector<int> distinct(At at, int n, int from_end = 0)
{
    std::vector<int> kept;
    position_table seen;
    for (int k = 0; k < n; ++k) {
        int const i = from_end ? n - 1 - k : k;
        auto const& x = at(i);
        if (equals_nothing(x) ||
            seen.find_or_add(detail::hash_of(x), i, [&](int j) { return at(j) == x; }) < 0)
            kept.push_back(i);
    }
    if (from_end) std::reverse(kept.begin(), kept.end());
    return kept;
}

// Calls f with each position in a and the first (last, from_end) position in b of an equal cell, or
// -1.
template <class T, class F>
void each_match(line<T const> const& a, line<T const> const& b, int from_end, F f)
{
    constexpr int few = 4;
    if (a.n <= few) {
        for (int i = 0; i < a.n; ++i) {
            int j = from_end ? b.n - 1 : 0;
            while (j >= 0 && j < b.n && !(b[j] == a[i])) j += from_end ? -1 : 1;
            f(i, j < b.n ? j : -1);
        }
        return;
    }
    position_table places;
    for (int k = 0; k < b.n; ++k) {
        int const j = from_end ? b.n - 1 - k : k;
        T const& x = b[j];
        if (!equals_nothing(x))
            places.find_or_add(detail::hash_of(x), j, [&](int i) { return b[i] == x; });
    }
    for (int i = 0; i < a.n; ++i) {
        T const& x = a[i];
        f(i, equals_nothing(x) ? -1
                               : places.find(detail::hash_of(x), [&](int j) { return b[j] == x; }));
    }
}

// The cells at the positions as a row or a column.
template <class T, class At> data<T> picked(At at, std::vector<int> const& positions, bool row)
{
    int const n = static_cast<int>(positions.size());
    data<T> r(row ? 1 : n, row ? n : 1);
    line<T> const cells = row ? detail::row_of<T>(r, 0) : detail::column_of<T>(r, 0);
    for (int k = 0; k < n; ++k) cells[k] = at(positions[static_cast<std::size_t>(k)]);
    return r;
}

// The cells of a that stand in b, or do not.
template <class T> data<T> chosen(data<T> const& a, data<T> const& b, bool standing)
{
    line<T const> const x = detail::cells(a);
    std::vector<int> positions;
    each_match(x, detail::cells(b), 0, [&](int i, int j) {
        if ((j >= 0) == standing) positions.push_back(i);
    });
    if (positions.empty()) return data<T>();
    return picked<T>([&](int i) -> T const& { return x[i]; }, positions, a.rows == 1);
}

} // namespace

template <class T> data<T> unique(data<T> const& x, int from_end)
{
    if (refused("_data_ unique(_data_,int)", x)) return data<T>();
    if (x.rows < 1 || x.cols < 1) return data<T>(x.rows, x.cols);
    line<T const> const cells = detail::cells(x);
    auto at = [&](int i) -> T const& { return cells[i]; };
    return picked<T>(at, distinct(at, cells.n, from_end), x.rows == 1);
}

template <class A, detail::if_plain<A>> A setunion(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (refused("_data_ setunion(_data_,_data_)", a, b)) return A();
    line<T const> const x = detail::cells(a), y = detail::cells(b);
    auto at = [&](int i) -> T const& { return i < x.n ? x[i] : y[i - x.n]; };
    bool const nothing = a.rows == 0 && a.cols == 0;
    if (nothing && b.rows == 0 && b.cols == 0) return A();
    return picked<T>(at, distinct(at, x.n + y.n), (nothing ? b : a).rows == 1);
}

template <class A, detail::if_plain<A>> A setdiff(A const& a, A const& b)
{
    if (refused("_data_ setdiff(_data_,_data_)", a, b)) return A();
    return chosen(a, b, false);
}

template <class A, detail::if_plain<A>> A setintersect(A const& a, A const& b)
{
    if (refused("_data_ setintersect(_data_,_data_)", a, b)) return A();
    return chosen(a, b, true);
}

// What `compare` says of both sets sorted: a NaN makes it 0, since it equals no cell.
template <class A, detail::if_plain<A>> int setequal(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (refused("int setequal(_data_,_data_)", a, b)) return 0;
    auto set_of = [](line<T const> const& x) {
        return distinct([&](int i) -> T const& { return x[i]; }, x.n).size();
    };
    line<T const> const x = detail::cells(a), y = detail::cells(b);
    if (set_of(x) != set_of(y)) return 0;
    bool all = true;
    each_match(x, y, 0, [&](int, int j) { all = all && j >= 0; });
    return all;
}

template <class A, detail::if_plain<A>> Vector iselement(A const& a, A const& b)
{
    if (refused("Vector iselement(_data_,_data_)", a, b)) return Vector();
    auto const x = detail::cells(a);
    Vector r(x.n);
    each_match(x, detail::cells(b), 0, [&](int i, int j) { r.v[i] = j >= 0; });
    return r;
}

template <class T> int iselement(typename data<T>::cell_type const& v, data<T> const& x)
{
    if (refused("int iselement(_T_,_data_)", x)) return 0;
    int found = 0;
    each_match(line<T const>(&v, 1), detail::cells(x), 0, [&](int, int j) { found = j >= 0; });
    return found;
}

template <class A, detail::if_plain<A>>
Vector match(A const& a, A const& b, int from_end, int nomatch)
{
    if (refused("Vector match(_data_,_data_,int,int)", a, b)) return Vector();
    auto const x = detail::cells(a);
    Vector r(x.n);
    each_match(x, detail::cells(b), from_end,
               [&](int i, int j) { r.v[i] = j >= 0 ? j + 1 : nomatch; });
    return r;
}

template <class A, detail::if_plain<A>> int compare(A const& a, A const& b)
{
    if (a.rows != b.rows || a.cols != b.cols) return 0;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            if (!(a.cell[i][j] == b.cell[i][j])) return 0;
    return 1;
}

#define INSTANCES(A, T)                                                                            \
    template A unique(A const&, int);                                                              \
    template A setunion(A const&, A const&);                                                       \
    template A setdiff(A const&, A const&);                                                        \
    template A setintersect(A const&, A const&);                                                   \
    template int setequal(A const&, A const&);                                                     \
    template Vector iselement(A const&, A const&);                                                 \
    template int iselement<T>(T const&, A const&);                                                 \
    template Vector match(A const&, A const&, int, int);                                           \
    template int compare(A const&, A const&);
INSTANCES(data<double>, double) INSTANCES(data<Text>, Text)
#undef INSTANCES

} // namespace varnow
