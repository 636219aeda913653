#include <varnow/containers/ordering.h>

#include <varnow/containers/line.h>
#include <varnow/containers/sort_engine.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace varnow {

namespace {

using detail::line;

template <class Key> Vector sorted(Key const* key, int n, Direction d)
{
    Vector order(n);
    detail::sorted_positions(key, n, d, order.v);
    for (int k = 0; k < n; ++k) ++order.v[k];
    return order;
}

Vector sorted(line<double const> const& x, Direction d)
{
    if (x.array()) return sorted(x.array(), x.n, d);
    std::vector<double> key(static_cast<std::size_t>(x.n));
    for (int i = 0; i < x.n; ++i) key[static_cast<std::size_t>(i)] = x[i];
    return sorted(key.data(), x.n, d);
}

Vector sorted(line<Text const> const& x, Direction d)
{
    std::vector<Text const*> key(static_cast<std::size_t>(x.n));
    for (int i = 0; i < x.n; ++i) key[static_cast<std::size_t>(i)] = &x[i];
    return sorted(key.data(), x.n, d);
}

// Puts at each place what stood at the place that `order` gives, counted from 1.
template <class C> void rearrange(line<C> const& x, Vector const& order)
{
    std::vector<C> kept;
    kept.reserve(static_cast<std::size_t>(x.n));
    for (int k = 0; k < x.n; ++k) kept.push_back(std::move(x[order.v[k] - 1]));
    for (int k = 0; k < x.n; ++k) x[k] = std::move(kept[static_cast<std::size_t>(k)]);
}

template <class T> void rearrange_names(data<T>& x, Vector const& order)
{
    line<Text> const names(x.rows == 1 ? x.cnames : x.rnames, order.n);
    for (int i = 0; i < names.n; ++i)
        if (names[i].len > 0) return rearrange(names, order);
}

template <class T> bool refused(data<T> const& x, Direction d)
{
    char const* why = nullptr;
    if (detail::beyond_vector(x))
        why = "pierwszy argument nie jest wektorem";
    else if (d != Ascending && d != Descending)
        why = "nieprawidlowy kierunek sortowania";
    if (why) errormessage<T>("Vector sort(_data_,Direction,int)", why, "");
    return why != nullptr;
}

} // namespace

template <class T> Vector sort(data<T>& x, Direction d, int flag)
{
    if (refused(x, d)) return Vector();
    Vector order = sorted(detail::cells(x), d);
    rearrange(detail::cells(x), order);
    if (flag) rearrange_names(x, order);
    return order;
}

template <class T> Vector order(data<T> const& x, Direction d)
{
    if (detail::beyond_vector(x)) {
        errormessage<T>("Vector order(_data_,Direction)", "oczekiwany wektor", "");
        return Vector();
    }
    if (refused(x, d)) return Vector();
    return sorted(detail::cells(x), d);
}

template <class T> void sort(data<T>& x, data<T>& y, Direction d, int flag)
{
    if (x.rows != y.rows || x.cols != y.cols) {
        errormessage<T>("sort(_data_,_data_,Direction,int)", "wektory maja niezgodne wymiary", "");
        return;
    }
    if (refused(x, d)) return;
    Vector const order = sorted(detail::cells(x), d);
    for (data<T>* each : {&x, &y}) {
        rearrange(detail::cells(*each), order);
        if (flag) rearrange_names(*each, order);
        if (&x == &y) break;
    }
}

template <class T> void data<T>::sort(int n, Direction d, int by_column)
{
    if (n < 1 || n > (by_column ? cols : rows)) {
        errormessage<T>("sort(int,Direction,int)",
                        by_column ? "numer kolumny poza zakresem" : "numer wiersza poza zakresem",
                        "");
        return;
    }
    if (refused(data(), d)) return;
    data const& self = *this;
    Vector const order = sorted(by_column ? detail::column_of<T const>(self, n - 1)
                                          : detail::row_of<T const>(self, n - 1),
                                d);
    if (by_column)
        reorder_rows(order, 1, rows);
    else
        reorder_cols(order, 1, cols);
}

template <class T> void data<T>::sort(Text const& name, Direction d, int by_column)
{
    int const n = by_column ? find_col(name, 1) : find_row(name, 1);
    if (n < 1) {
        errormessage<T>(
            "sort(Text,Direction,int)",
            by_column ? "nie znaleziono podanej kolumny" : "nie znaleziono podanego wiersza", "");
        return;
    }
    sort(n, d, by_column);
}

namespace {

// The part from left to right of the first column or row.
template <class T> line<T> stretch(data<T>& x, bool by_column, int left, int right)
{
    int const n = right - left + 1;
    return by_column ? line<T>(x.cell + left, x.cols, 0, n) : line<T>(x.cell[0] + left, n);
}

template <class T>
bool outside(data<T> const& x, Vector const& p, bool by_column, int left, int right,
             char const* routine)
{
    int const n = by_column ? (x.cols > 0 ? x.rows : 0) : (x.rows > 0 ? x.cols : 0);
    bool const bad = left < 0 || right >= n || right >= p.n;
    if (bad) errormessage<T>(routine, "indeks poza zakresem", "");
    return bad;
}

template <class T>
void qsort_part(data<T>& x, Vector& p, int left, int right, bool by_column, Direction d,
                char const* routine)
{
    if (left >= right || outside(x, p, by_column, left, right, routine)) return;
    line<T> const part = stretch(x, by_column, left, right);
    Vector const order = sorted(part, d);
    rearrange(part, order);
    rearrange(line<int>(p.v + left, part.n), order);
}

template <class T>
void swap_two(data<T>& x, Vector& p, int i, int j, bool by_column, char const* routine)
{
    int const low = std::min(i, j), high = std::max(i, j);
    if (outside(x, p, by_column, low, high, routine)) return;
    line<T> const part = stretch(x, by_column, low, high);
    std::swap(part[0], part[part.n - 1]);
    std::swap(p.v[i], p.v[j]);
}

} // namespace

// clang-format off
#define QSORT(name, by_column, d)                                                                  \
    template <class T> void name(data<T>& x, Vector& p, int left, int right)                       \
    { qsort_part(x, p, left, right, by_column, d, #name "(_data_,Vector,int,int)"); }              \
    template void name(data<double>&, Vector&, int, int);                                          \
    template void name(data<Text>&, Vector&, int, int);
QSORT(qsort_asc_2c, true, Ascending) QSORT(qsort_desc_2c, true, Descending)
QSORT(qsort_asc_2r, false, Ascending) QSORT(qsort_desc_2r, false, Descending)
#undef QSORT
#define SWAP(name, by_column)                                                                      \
    template <class T> void name(data<T>& x, Vector& p, int i, int j)                              \
    { swap_two(x, p, i, j, by_column, #name "(_data_,Vector,int,int)"); }                          \
    template void name(data<double>&, Vector&, int, int);                                          \
    template void name(data<Text>&, Vector&, int, int);
SWAP(swap_2c, true) SWAP(swap_2r, false)
#undef SWAP
    // clang-format on

    int sort_asc(void const* a, void const* b)
{
    double const x = static_cast<sort_record const*>(a)->key;
    double const y = static_cast<sort_record const*>(b)->key;
    return (x > y) - (x < y);
}

int sort_desc(void const* a, void const* b)
{
    return sort_asc(b, a);
}

#define INSTANCES(T)                                                                               \
    template Vector sort(data<T>&, Direction, int);                                                \
    template Vector order(data<T> const&, Direction);                                              \
    template void sort(data<T>&, data<T>&, Direction, int);
INSTANCES(double)
INSTANCES(Text)
#undef INSTANCES

template class data<double>;
template class data<Text>;

} // namespace varnow
