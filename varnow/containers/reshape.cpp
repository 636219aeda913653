#include <varnow/containers/slicing.h>

#include <varnow/containers/storage.h>
#include <varnow/containers/transpose.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace varnow {

namespace {

template <class T> std::unique_ptr<T[]> array_of(std::int64_t n)
{
    return std::unique_ptr<T[]>(new T[static_cast<std::size_t>(n)]);
}

using detail::by_tiles;
using detail::transpose;

// The starts of n rows that lie end to end.
template <class T> std::vector<T*> row_starts(T* first, int n, int cols)
{
    std::vector<T*> starts(static_cast<std::size_t>(n));
    for (T*& start : starts) {
        start = first;
        first += cols;
    }
    return starts;
}

// Refuses what is not square.
template <class T> bool square(data<T> const& a, char const* routine)
{
    if (a.rows == a.cols) return true;
    errormessage<T>(routine, "obiekt powinien byc kwadratowy", "");
    return false;
}

template <class T> void abcd2bcda(T& a, T& b, T& c, T& d)
{
    std::swap(a, b);
    std::swap(b, c);
    std::swap(c, d);
}

bool outside(int i, int n)
{
    return i < 1 || i > n;
}

bool any_set(Text const* names, int n)
{
    return std::any_of(names, names + n, [](Text const& name) { return name.len > 0; });
}

} // namespace

template <class T> void data<T>::tr()
{
    if (!square(*this, "tr()")) return;
    by_tiles(rows, cols, [this](int top, int left, int down, int across) {
        for (int i = top; i < top + down; ++i)
            for (int j = std::max(left, i + 1); j < left + across; ++j)
                std::swap(cell[i][j], cell[j][i]);
    });
    std::swap(rnames, cnames);
}

template <class T> data<T> operator~(data<T> const& a)
{
    data<T> r(a.cols, a.rows);
    copynames_r2c(a, r);
    copynames_c2r(a, r);
    transpose<T const>(a.cell, a.rows, a.cols, r.cell);
    return r;
}

template <class T> void data<T>::rot90()
{
    if (!square(*this, "rot90()")) return;
    int const last = rows - 1;
    by_tiles(rows / 2, rows - rows / 2, [this, last](int top, int left, int down, int across) {
        for (int i = top; i < top + down; ++i)
            for (int j = left; j < left + across; ++j)
                abcd2bcda(cell[i][j], cell[j][last - i], cell[last - i][last - j],
                          cell[last - j][i]);
    });
    std::swap(rnames, cnames);
    std::reverse(rnames, rnames + rows);
}

template <class T> data<T> rot90(data<T> const& a)
{
    data<T> r(a.cols, a.rows);
    copynames_r2c(a, r);
    std::reverse_copy(a.cnames, a.cnames + a.cols, r.rnames);
    std::vector<T*> upward(r.cell, r.cell + r.rows);
    std::reverse(upward.begin(), upward.end());
    transpose<T const>(a.cell, a.rows, a.cols, upward.data());
    return r;
}

template <class T> void data<T>::flipud()
{
    std::reverse(cell, cell + rows);
    std::reverse(rnames, rnames + rows);
}

template <class T> data<T> flipud(data<T> const& a)
{
    data<T> r(a.rows, a.cols);
    copynames_c2c(a, r);
    std::reverse_copy(a.rnames, a.rnames + a.rows, r.rnames);
    for (int i = 0; i < a.rows; ++i) std::copy_n(a.cell[i], a.cols, r.cell[a.rows - 1 - i]);
    return r;
}

template <class T> void data<T>::fliplr()
{
    for (int i = 0; i < rows; ++i) std::reverse(cell[i], cell[i] + cols);
    std::reverse(cnames, cnames + cols);
}

template <class T> data<T> fliplr(data<T> const& a)
{
    data<T> r(a.rows, a.cols);
    copynames_r2r(a, r);
    std::reverse_copy(a.cnames, a.cnames + a.cols, r.cnames);
    for (int i = 0; i < a.rows; ++i) std::reverse_copy(a.cell[i], a.cell[i] + a.cols, r.cell[i]);
    return r;
}

// A row takes cells from rows that the loop has not reached, so nothing is kept aside.
template <class T> void data<T>::up()
{
    for (int i = 0; i < rows; ++i) {
        int const moved = std::min(cols, rows - i);
        for (int j = 1; j < moved; ++j) cell[i][j] = static_cast<T&&>(cell[i + j][j]);
        for (int j = moved; j < cols; ++j) cell[i][j] = __0<T>();
    }
}

template <class T> void data<T>::down()
{
    for (int i = rows - 1; i >= 0; --i) {
        int const moved = std::min(cols, i + 1);
        for (int j = 1; j < moved; ++j) cell[i][j] = static_cast<T&&>(cell[i - j][j]);
        for (int j = moved; j < cols; ++j) cell[i][j] = __0<T>();
    }
}

template <class T> data<T> up(data<T> const& a)
{
    data<T> r(a);
    r.up();
    return r;
}

template <class T> data<T> down(data<T> const& a)
{
    data<T> r(a);
    r.down();
    return r;
}

template <class T> void data<T>::tril()
{
    if (!square(*this, "tril()")) return;
    for (int i = 0; i < rows; ++i) std::fill(cell[i] + i + 1, cell[i] + cols, __0<T>());
}

template <class T> void data<T>::triu()
{
    if (!square(*this, "triu()")) return;
    for (int i = 0; i < rows; ++i) std::fill(cell[i], cell[i] + i, __0<T>());
}

template <class T> data<T> tril(data<T> const& a)
{
    if (!square(a, "_data_ tril(_data_)")) return data<T>();
    data<T> r(a);
    r.tril();
    return r;
}

template <class T> data<T> triu(data<T> const& a)
{
    if (!square(a, "_data_ triu(_data_)")) return data<T>();
    data<T> r(a);
    r.triu();
    return r;
}

template <class T> void data<T>::reshape(int r, int c)
{
    std::int64_t const count = std::int64_t(rows) * cols;
    if (r < 0 || c < 0 || std::int64_t(r) * c != count)
        return errormessage<T>("reshape(int,int)", "podano zle wymiary", "");
    data fresh(r, c);
    auto const line = array_of<T>(count);
    transpose(cell, rows, cols, row_starts(line.get(), cols, rows).data());
    transpose(row_starts(line.get(), c, r).data(), c, r, fresh.cell);
    *this = static_cast<data&&>(fresh);
}

template <class T> void data<T>::leave_cols(int a, int b)
{
    if (a < 1 || b > cols || b < a - 1)
        return errormessage<T>("leave_cols(int,int)", "indeks poza zakresem", "");
    if (a == 1 && b == cols) return;
    data kept(rows, b - a + 1);
    std::swap(rnames, kept.rnames);
    std::move(cnames + (a - 1), cnames + b, kept.cnames);
    for (int i = 0; i < rows; ++i) std::move(cell[i] + (a - 1), cell[i] + b, kept.cell[i]);
    *this = static_cast<data&&>(kept);
}

template <class T> void data<T>::leave_rows(int a, int b)
{
    if (a < 1 || b > rows || b < a - 1)
        return errormessage<T>("leave_rows(int,int)", "indeks poza zakresem", "");
    if (a == 1 && b == rows) return;
    data kept(b - a + 1, cols);
    std::swap(cnames, kept.cnames);
    std::move(rnames + (a - 1), rnames + b, kept.rnames);
    for (int i = 0; i < kept.rows; ++i)
        std::move(cell[a - 1 + i], cell[a - 1 + i] + cols, kept.cell[i]);
    *this = static_cast<data&&>(kept);
}

template <class T> void data<T>::leave_rows_to(int n)
{
    if (n < 0 || n > rows) return errormessage<T>("leave_rows_to(int)", "indeks poza zakresem", "");
    if (n == rows) return;
    Text* const kept = detail::new_names(n);
    std::move(rnames, rnames + n, kept);
    detail::free_names(rnames);
    rnames = kept;
    // The memory of the dropped rows goes with the block; what their texts hold goes now.
    if constexpr (std::is_same<T, Text>::value)
        for (int i = n; i < rows; ++i) std::fill_n(cell[i], cols, Text());
    rows = n;
}

template <class T> void data<T>::swap_cols(int a, int b)
{
    if (outside(a, cols) || outside(b, cols))
        return errormessage<T>("swap_cols(int,int)", "numer kolumny poza zakresem", "");
    if (a == b) return;
    std::swap(cnames[a - 1], cnames[b - 1]);
    for (int i = 0; i < rows; ++i) std::swap(cell[i][a - 1], cell[i][b - 1]);
}

template <class T> void data<T>::swap_rows(int a, int b)
{
    if (outside(a, rows) || outside(b, rows))
        return errormessage<T>("swap_rows(int,int)", "numer wiersza poza zakresem", "");
    if (a == b) return;
    std::swap(rnames[a - 1], rnames[b - 1]);
    std::swap(cell[a - 1], cell[b - 1]);
}

namespace {

// An order of lines, counted from 0, as moves of whole lines: place k takes line source[k], and no
// line is taken twice. An entry that repeats an earlier one takes a line that nobody wants and then
// a copy of the earlier place.
struct arrangement
{
    std::vector<int> source;
    std::vector<std::pair<int, int>> copies; // to, from
};

template <class T>
bool arrange(Vector const& order, int from, int to, int size, char const* routine,
             arrangement& plan)
{
    auto refuse = [routine](char const* why) {
        errormessage<T>(routine, why, "");
        return false;
    };
    if (order.n != std::int64_t(to) - from + 1)
        return refuse("wektor kolejnosci ma nieprawidlowa dlugosc");
    if (from < 1 || to > size) return refuse("indeks poza zakresem");
    int const n = order.n;
    std::vector<int> place(static_cast<std::size_t>(n), -1);
    plan.source.assign(static_cast<std::size_t>(n), -1);
    for (int k = 0; k < n; ++k) {
        if (outside(order.v[k], n)) return refuse("indeks poza zakresem");
        int const wanted = order.v[k] - 1;
        int& first = place[static_cast<std::size_t>(wanted)];
        if (first >= 0) {
            plan.copies.emplace_back(k, first);
            continue;
        }
        first = k;
        plan.source[static_cast<std::size_t>(k)] = wanted;
    }
    std::size_t unwanted = 0;
    for (auto const& copy : plan.copies) {
        while (place[unwanted] >= 0) ++unwanted;
        plan.source[static_cast<std::size_t>(copy.first)] = static_cast<int>(unwanted++);
    }
    return true;
}

// Moves items as planned, by way of `aside`.
template <class T> void move_items(T* items, arrangement const& plan, T* aside)
{
    std::size_t const n = plan.source.size();
    for (std::size_t k = 0; k < n; ++k) aside[k] = static_cast<T&&>(items[plan.source[k]]);
    std::move(aside, aside + n, items);
}

void reorder_names(Text* names, arrangement const& plan)
{
    int const n = static_cast<int>(plan.source.size());
    if (!any_set(names, n)) return;
    move_items(names, plan, array_of<Text>(n).get());
    for (auto const& copy : plan.copies) names[copy.first] = names[copy.second];
}

} // namespace

template <class T> void data<T>::reorder_cols(Vector const& order, int from, int to)
{
    arrangement plan;
    if (!arrange<T>(order, from, to, cols, "reorder_cols(Vector,int,int)", plan)) return;
    if (order.n == 0) return;
    auto const aside = array_of<T>(order.n);
    for (int i = 0; i < rows; ++i) {
        T* const items = cell[i] + (from - 1);
        move_items(items, plan, aside.get());
        for (auto const& copy : plan.copies) items[copy.first] = items[copy.second];
    }
    reorder_names(cnames + (from - 1), plan);
}

template <class T> void data<T>::reorder_rows(Vector const& order, int from, int to)
{
    arrangement plan;
    if (!arrange<T>(order, from, to, rows, "reorder_rows(Vector,int,int)", plan)) return;
    if (order.n == 0) return;
    T** const items = cell + (from - 1);
    move_items(items, plan, array_of<T*>(order.n).get());
    for (auto const& copy : plan.copies) std::copy_n(items[copy.second], cols, items[copy.first]);
    reorder_names(rnames + (from - 1), plan);
}

#define INSTANCES(T)                                                                               \
    template data<T> operator~(data<T> const&);                                                    \
    template data<T> up(data<T> const&);                                                           \
    template data<T> down(data<T> const&);                                                         \
    template data<T> tril(data<T> const&);                                                         \
    template data<T> triu(data<T> const&);                                                         \
    template data<T> rot90(data<T> const&);                                                        \
    template data<T> flipud(data<T> const&);                                                       \
    template data<T> fliplr(data<T> const&);
// clang-format off
INSTANCES(double)
INSTANCES(Text)
#undef INSTANCES
// clang-format on

matrix operator~(matrix const& a)
{
    return operator~<double>(a);
}
table operator~(table const& a)
{
    return operator~<Text>(a);
}

template class data<double>;
template class data<Text>;

} // namespace varnow
