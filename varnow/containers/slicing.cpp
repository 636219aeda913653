#include <varnow/containers/slicing.h>

#include <varnow/containers/storage.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace varnow {

namespace {

// Lists of positions.

bool within(Vector const& idx, int n)
{
    return std::all_of(idx.v, idx.v + idx.n, [n](int x) { return x >= 1 && x <= n; });
}

bool outside(int i, int n)
{
    return i < 1 || i > n;
}

// Whether a block of n lines from i on leaves 1 to size.
bool leaves(int i, int n, int size)
{
    return std::int64_t(i) - 1 + n > size;
}

// The positions that a list of one sign takes out of 1 to n; none behind a refusal.
template <class T> Vector chosen(Vector const& idx, int n, char const* routine)
{
    auto refuse = [routine](char const* why) {
        errormessage<T>(routine, why, "");
        return Vector();
    };
    for (int k = 0; k < idx.n; ++k) {
        int const x = idx.v[k];
        if (x < -n || x > n) return refuse("indeks poza zakresem");
        if (x == 0) return refuse("indeks wynosi 0");
        if ((x < 0) != (idx.v[0] < 0)) return refuse("indeksy sa roznych znakow");
    }
    return idx.n > 0 && idx.v[0] < 0 ? nindex(idx, n) : idx;
}

template <class T> void pick(T const* from, Vector const& positions, T* to)
{
    for (int k = 0; k < positions.n; ++k) to[k] = from[positions.v[k] - 1];
}

template <class T> void put(T const* from, Vector const& positions, T* to)
{
    for (int k = 0; k < positions.n; ++k) to[positions.v[k] - 1] = from[k];
}

template <class T> data<T> pick_cols(data<T> const& a, Vector const& positions)
{
    if (positions.n == 0) return data<T>();
    data<T> r(a.rows, positions.n);
    pick(a.cnames, positions, r.cnames);
    detail::copy_texts_to_new(a.rnames, r.rnames, a.rows);
    for (int i = 0; i < a.rows; ++i) pick(a.cell[i], positions, r.cell[i]);
    return r;
}

template <class T> data<T> pick_rows(data<T> const& a, Vector const& positions)
{
    if (positions.n == 0) return data<T>();
    data<T> r(positions.n, a.cols);
    pick(a.rnames, positions, r.rnames);
    detail::copy_texts_to_new(a.cnames, r.cnames, a.cols);
    for (int k = 0; k < positions.n; ++k)
        detail::copy_cells(a.cell[positions.v[k] - 1], a.cols, r.cell[k]);
    return r;
}

} // namespace

template <class T> data<T> col(data<T> const& a, Vector const& idx)
{
    return pick_cols(a, chosen<T>(idx, a.cols, "_data_ col(_data_,Vector)"));
}

template <class T> data<T> row(data<T> const& a, Vector const& idx)
{
    return pick_rows(a, chosen<T>(idx, a.rows, "_data_ row(_data_,Vector)"));
}

template <class T> data<T> get(data<T> const& a, Vector const& r, Vector const& c)
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ get(_data_,Vector,Vector)", why, "");
        return data<T>();
    };
    if (!within(r, a.rows)) return refuse("indeks wierszy poza zakresem");
    if (!within(c, a.cols)) return refuse("indeks kolumn poza zakresem");
    if (r.n == 0 || c.n == 0) return data<T>();
    data<T> out(r.n, c.n);
    pick(a.rnames, r, out.rnames);
    pick(a.cnames, c, out.cnames);
    for (int i = 0; i < r.n; ++i) pick(a.cell[r.v[i] - 1], c, out.cell[i]);
    return out;
}

template <class T> data<T> filter(data<T> const& a, Vector const& flags)
{
    if (flags.n != a.rows) {
        errormessage<T>("_data_ filter(_data_,Vector)", "wektor warunkowy ma nieprawidlowa dlugosc",
                        "");
        return data<T>();
    }
    return pick_rows(a, find(flags));
}

template <class T> data<T> data<T>::col(int j) const
{
    return col(vi(1, j));
}
template <class T> data<T> data<T>::row(int i) const
{
    return row(vi(1, i));
}
template <class T> data<T> data<T>::col(Vector const& idx) const
{
    return varnow::col(*this, idx);
}
template <class T> data<T> data<T>::row(Vector const& idx) const
{
    return varnow::row(*this, idx);
}
template <class T> data<T> data<T>::filter(Vector const& flags) const
{
    return varnow::filter(*this, flags);
}

// Writing back.

template <class T>
void copy(data<T> const& src, int r, int c, int nr, int nc, data<T>& dst, int r2, int c2)
{
    auto refuse = [] {
        errormessage<T>("copy(_data_,int,int,int,int,_data_ &,int,int)", "indeks poza zakresem",
                        "");
    };
    if (r < 1 || c < 1 || nr < 0 || nc < 0 || r2 < 1 || c2 < 1) return refuse();
    if (nr == 0 || nc == 0) return;
    if (leaves(r, nr, src.rows) || leaves(c, nc, src.cols)) return refuse();
    if (leaves(r2, nr, dst.rows) || leaves(c2, nc, dst.cols)) return refuse();
    // Within one object the blocks may overlap: no cell is written before it was read.
    bool const upward = &src == &dst && r2 > r, leftward = &src == &dst && r2 == r && c2 > c;
    for (int k = 0; k < nr; ++k) {
        int const i = upward ? nr - 1 - k : k;
        T const* const from = src.cell[r - 1 + i] + (c - 1);
        T* const to = dst.cell[r2 - 1 + i] + (c2 - 1);
        if (leftward)
            std::copy_backward(from, from + nc, to + nc);
        else
            std::copy(from, from + nc, to);
    }
}

template <class T>
void data<T>::set(Vector const& r, Vector const& c, data const& b, Vector const& br,
                  Vector const& bc)
{
    auto refuse = [](char const* why) {
        errormessage<T>("set(Vector,Vector,_data_,Vector,Vector)", why, "");
    };
    if (!within(br, b.rows)) return refuse("indeks zrodlowy wierszy poza zakresem");
    if (!within(bc, b.cols)) return refuse("indeks zrodlowy kolumn poza zakresem");
    if (!within(r, rows)) return refuse("indeks docelowy wierszy poza zakresem");
    if (!within(c, cols)) return refuse("indeks docelowy kolumn poza zakresem");
    if (r.n != br.n) return refuse("niezgodna dlugosc indeksow wierszowych");
    if (c.n != bc.n) return refuse("niezgodna dlugosc indeksow kolumnowych");
    if (r.n == 0 || c.n == 0) return;
    if (&b == this) return set(r, c, get(b, br, bc), $(br.n), $(bc.n));
    for (int i = 0; i < r.n; ++i) {
        T* const to = cell[r.v[i] - 1];
        T const* const from = b.cell[br.v[i] - 1];
        for (int j = 0; j < c.n; ++j) to[c.v[j] - 1] = from[bc.v[j] - 1];
    }
}

template <class T> void data<T>::set(Vector const& r, Vector const& c, data const& b)
{
    set(r, c, b, $(b.rows), $(b.cols));
}

template <class T> void data<T>::setcol(Vector const& idx, data const& b)
{
    auto refuse = [](char const* why) { errormessage<T>("setcol(Vector,_data_)", why, ""); };
    if (!within(idx, cols)) return refuse("indeks poza zakresem");
    if (b.rows != rows) return refuse("niezgodna liczba wierszy");
    if (b.cols != idx.n)
        return refuse("liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu");
    if (&b == this) return setcol(idx, data(b));
    for (int i = 0; i < rows; ++i) put(b.cell[i], idx, cell[i]);
}

template <class T> void data<T>::setcol(int j, data const& b)
{
    setcol(vi(1, j), b);
}

template <class T> void data<T>::setrow(Vector const& idx, data const& b)
{
    auto refuse = [](char const* why) { errormessage<T>("setrow(Vector,_data_)", why, ""); };
    if (!within(idx, rows)) return refuse("indeks poza zakresem");
    if (b.cols != cols) return refuse("niezgodna liczba kolumn");
    if (b.rows != idx.n)
        return refuse("liczba wierszy danych do wstawienia niezgodna z dlugoscia indeksu");
    if (&b == this) return setrow(idx, data(b));
    for (int k = 0; k < idx.n; ++k) detail::copy_cells(b.cell[k], cols, cell[idx.v[k] - 1]);
}

template <class T> void data<T>::setrow(int i, data const& b)
{
    setrow(vi(1, i), b);
}

template <class T> void data<T>::fill(T const& x)
{
    for (int i = 0; i < rows; ++i) std::fill_n(cell[i], cols, x);
}

template <class T> void data<T>::fill(T const& x, int r, int c, int nr, int nc)
{
    auto refuse = [] { errormessage<T>("fill(_T_,int,int,int,int)", "indeks poza zakresem", ""); };
    if (r < 1 || c < 1 || nr < 0 || nc < 0) return refuse();
    if (nr == 0 || nc == 0) return;
    if (leaves(r, nr, rows) || leaves(c, nc, cols)) return refuse();
    for (int i = r - 1; i < r - 1 + nr; ++i) std::fill_n(cell[i] + (c - 1), nc, x);
}

template <class T> void data<T>::clear(int names)
{
    fill(__0<T>());
    if (!names) return;
    std::fill_n(rnames, rows, Text());
    std::fill_n(cnames, cols, Text());
}

// Binding.

template <class A, detail::if_plain<A>> A operator|(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (a.rows != b.rows) {
        errormessage<T>("_data_ operator |(_data_,_data_)", "niezgodna liczba wierszy", "");
        return A();
    }
    A r(a.rows, detail::checked_size(std::int64_t(a.cols) + b.cols));
    detail::copy_texts_to_new(a.rnames, r.rnames, a.rows);
    detail::copy_texts_to_new(a.cnames, r.cnames, a.cols);
    detail::copy_texts_to_new(b.cnames, r.cnames + a.cols, b.cols);
    for (int i = 0; i < r.rows; ++i)
        detail::copy_cells(b.cell[i], b.cols, detail::copy_cells(a.cell[i], a.cols, r.cell[i]));
    return r;
}

template <class A, detail::if_plain<A>> A operator&(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (a.cols != b.cols) {
        errormessage<T>("_data_ operator &(_data_,_data_)", "niezgodna liczba kolumn", "");
        return A();
    }
    A r(detail::checked_size(std::int64_t(a.rows) + b.rows), a.cols);
    detail::copy_texts_to_new(a.cnames, r.cnames, a.cols);
    detail::copy_texts_to_new(a.rnames, r.rnames, a.rows);
    detail::copy_texts_to_new(b.rnames, r.rnames + a.rows, b.rows);
    detail::copy_rows(a.cell, r.cell, a.rows, a.cols);
    detail::copy_rows(b.cell, r.cell + a.rows, b.rows, b.cols);
    return r;
}

template <class T> data<T>& data<T>::operator|=(data const& b)
{
    if (rows != b.rows) {
        errormessage<T>("operator |=(_data_)", "niezgodna liczba wierszy", "");
        return *this;
    }
    if (&b == this) return *this = b | b;
    int const old = cols;
    resizec(rows, detail::checked_size(std::int64_t(cols) + b.cols));
    detail::copy_texts_to_new(b.cnames, cnames + old, b.cols);
    for (int i = 0; i < rows; ++i) detail::copy_cells(b.cell[i], b.cols, cell[i] + old);
    return *this;
}

template <class T> data<T>& data<T>::operator&=(data const& b)
{
    if (cols != b.cols) {
        errormessage<T>("operator &=(_data_)", "niezgodna liczba kolumn", "");
        return *this;
    }
    if (&b == this) return *this = b & b;
    int const old = rows;
    resizec(detail::checked_size(std::int64_t(rows) + b.rows), cols);
    detail::copy_texts_to_new(b.rnames, rnames + old, b.rows);
    detail::copy_rows(b.cell, cell + old, b.rows, b.cols);
    return *this;
}

template <class A, detail::if_plain<A>> A operator+(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (a.rows != b.rows || a.cols != b.cols) {
        errormessage<T>("_data_ operator +(_data_,_data_)", "niezgodne wymiary obiektow", "");
        return A();
    }
    A r(a.rows, a.cols);
    copynames(a, r);
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) r.cell[i][j] = a.cell[i][j] + b.cell[i][j];
    return r;
}

template <class T> data<T>& data<T>::operator+=(data const& b)
{
    if (rows != b.rows || cols != b.cols) {
        errormessage<T>("operator +=(_data_)", "niezgodne wymiary obiektow", "");
        return *this;
    }
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] += b.cell[i][j];
    return *this;
}

// Replication.

namespace {

template <class T> bool is_vector(data<T> const& a)
{
    return a.rows <= 1 || a.cols <= 1;
}

// The number of elements of a vector; no product of sizes with one of them below 2 overflows.
template <class T> int length(data<T> const& a)
{
    return a.rows * a.cols;
}

template <class T> T& element(data<T> const& a, int k)
{
    return a.rows == 1 ? a.cell[0][k] : a.cell[k][0];
}

// n elements in the orientation of a vector.
template <class T> data<T> alike(data<T> const& a, std::int64_t n)
{
    if (a.rows == 1) return data<T>(1, detail::checked_size(n));
    if (a.cols == 1) return data<T>(detail::checked_size(n), 1);
    return data<T>();
}

// Each element of a vector k times over, that many times the whole, to n elements in all.
template <class T> data<T> replicated(data<T> const& a, int each, std::int64_t n)
{
    data<T> r = alike(a, n);
    int const count = length(r);
    for (int out = 0, k = 0, turn = 0; out < count; ++out) {
        element(r, out) = element(a, k);
        if (++turn < each) continue;
        turn = 0;
        if (++k == length(a)) k = 0;
    }
    return r;
}

} // namespace

template <class T> data<T> rep(data<T> const& a, int k)
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ rep(_data_,int)", why, "");
        return data<T>();
    };
    if (!is_vector(a)) return refuse("oczekiwany wektor");
    if (k < 1) return refuse("zbyt mala wielokrotnosc");
    return replicated(a, 1, std::int64_t(length(a)) * k);
}

template <class T> data<T> rep(data<T> const& a, Vector const& k)
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ rep(_data_,Vector)", why, "");
        return data<T>();
    };
    if (!is_vector(a)) return refuse("oczekiwany wektor do replikacji");
    if (k.n != length(a)) return refuse("nieprawidlowa dlugosc wektora wielokrotnosci");
    std::int64_t n = 0;
    for (int i = 0; i < k.n; ++i) {
        if (k.v[i] < 0) return refuse("zbyt mala wielokrotnosc");
        n += k.v[i];
    }
    data<T> r = alike(a, n);
    for (int i = 0, out = 0; i < k.n; ++i)
        for (int times = k.v[i]; times > 0; --times) element(r, out++) = element(a, i);
    return r;
}

template <class T> data<T> replen(data<T> const& a, int n)
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ replen(_data_,int)", why, "");
        return data<T>();
    };
    if (!is_vector(a) || length(a) == 0) return refuse("oczekiwany wektor");
    if (n < 1) return refuse("zbyt mala dlugosc");
    return replicated(a, 1, n);
}

template <class T> data<T> repeach(data<T> const& a, int k)
{
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ repeach(_data_,int)", why, "");
        return data<T>();
    };
    if (!is_vector(a)) return refuse("oczekiwany wektor");
    if (k < 1) return refuse("zbyt mala wielokrotnosc");
    return replicated(a, k, std::int64_t(length(a)) * k);
}

template <class A, detail::if_plain<A>> A outer(A const& a, A const& b, detail::of_two_cells<A> f)
{
    using T = typename A::cell_type;
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ outer(_data_,_data_,_T_ f(_T_,_T_))", why, "");
        return A();
    };
    if (!is_vector(a)) return refuse("pierwszy argument ma byc wektorem");
    if (!is_vector(b)) return refuse("drugi argument ma byc wektorem");
    A r(length(a), length(b));
    for (int i = 0; i < r.rows; ++i)
        for (int j = 0; j < r.cols; ++j) r.cell[i][j] = f(element(a, i), element(b, j));
    return r;
}

// Interleaving.

namespace {

// Into `to`: `group` items of a, then one of b, `groups` times over.
template <class T> void interleave(T const* a, int group, T const* b, int groups, T* to)
{
    for (int g = 0; g < groups; ++g, a += group) {
        to = detail::copy_cells(a, group, to);
        *to++ = b[g];
    }
}

} // namespace

template <class A, detail::if_plain<A>> A shufflecol(A const& a, A const& b)
{
    auto refuse = [](char const* why) {
        errormessage<typename A::cell_type>("_data_ shufflecol(_data_,_data_)", why, "");
        return A();
    };
    if (a.rows != b.rows) return refuse("niezgodna liczba wierszy");
    if (b.cols == 0 || a.cols % b.cols != 0) return refuse("niewlasciwa liczba kolumn");
    int const group = a.cols / b.cols;
    A r(a.rows, detail::checked_size(std::int64_t(a.cols) + b.cols));
    detail::copy_texts_to_new(a.rnames, r.rnames, a.rows);
    interleave(a.cnames, group, b.cnames, b.cols, r.cnames);
    for (int i = 0; i < r.rows; ++i) interleave(a.cell[i], group, b.cell[i], b.cols, r.cell[i]);
    return r;
}

template <class A, detail::if_plain<A>> A shufflerow(A const& a, A const& b)
{
    using T = typename A::cell_type;
    auto refuse = [](char const* why) {
        errormessage<T>("_data_ shufflerow(_data_,_data_)", why, "");
        return A();
    };
    if (a.cols != b.cols) return refuse("niezgodna liczba kolumn");
    if (b.rows == 0 || a.rows % b.rows != 0) return refuse("niewlasciwa liczba wierszy");
    int const group = a.rows / b.rows;
    A r(detail::checked_size(std::int64_t(a.rows) + b.rows), a.cols);
    detail::copy_texts_to_new(a.cnames, r.cnames, a.cols);
    interleave(a.rnames, group, b.rnames, b.rows, r.rnames);
    std::vector<T*> source(static_cast<std::size_t>(r.rows));
    interleave(a.cell, group, b.cell, b.rows, source.data());
    detail::copy_rows(source.data(), r.cell, r.rows, r.cols);
    return r;
}

// A function on cells.

namespace {

template <class T, class F> void on_all(data<T>& a, F f)
{
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) a.cell[i][j] = f(a.cell[i][j]);
}

template <class T, class F> void on_column(data<T>& a, int j, char const* routine, F f)
{
    if (outside(j, a.cols)) return errormessage<T>(routine, "numer kolumny poza zakresem", "");
    for (int i = 0; i < a.rows; ++i) a.cell[i][j - 1] = f(a.cell[i][j - 1]);
}

template <class T, class F> void on_row(data<T>& a, int i, char const* routine, F f)
{
    if (outside(i, a.rows)) return errormessage<T>(routine, "numer wiersza poza zakresem", "");
    for (int j = 0; j < a.cols; ++j) a.cell[i - 1][j] = f(a.cell[i - 1][j]);
}

} // namespace

template <class T> void data<T>::forall(T (*f)(T))
{
    on_all(*this, f);
}
template <class T> template <class R> void data<T>::forall(R (*f)(T const&))
{
    on_all(*this, f);
}

// clang-format off
#define FOR_LINE_MEMBER(name, apply)                                                               \
    { apply(*this, k, #name "(int,_T_ f(_T_))", f); }
#define FOR_LINE_FREE(name, apply)                                                                 \
    {                                                                                              \
        data<T> r(a);                                                                              \
        apply(r, k, "_data_ " #name "(_data_,int,_T_ f(_T_))", f);                                 \
        return r;                                                                                  \
    }
#define FOR_LINE(name, apply)                                                                      \
    template <class T> void data<T>::name(int k, T (*f)(T)) FOR_LINE_MEMBER(name, apply)           \
    template <class T> template <class R> void data<T>::name(int k, R (*f)(T const&))              \
    FOR_LINE_MEMBER(name, apply)                                                                   \
    template <class T> data<T> name(data<T> const& a, int k, T (*f)(T)) FOR_LINE_FREE(name, apply) \
    template <class T> data<T> name(data<T> const& a, int k, T (*f)(T const&))                     \
    FOR_LINE_FREE(name, apply)                                                                     \
    template <class T> data<T> name(data<T> const& a, int k, T (*f)(T, double), double x)          \
    {                                                                                              \
        data<T> r(a);                                                                              \
        apply(r, k, "_data_ " #name "(_data_,int,_T_ f(_T_,double),double)",                       \
              [f, x](T const& cell) { return f(cell, x); });                                       \
        return r;                                                                                  \
    }
FOR_LINE(forcol, on_column)
FOR_LINE(forrow, on_row)
#undef FOR_LINE
#undef FOR_LINE_MEMBER
#undef FOR_LINE_FREE

#define INSTANCES(T)                                                                               \
    template data<T> col(data<T> const&, Vector const&);                                           \
    template data<T> row(data<T> const&, Vector const&);                                           \
    template data<T> get(data<T> const&, Vector const&, Vector const&);                            \
    template data<T> filter(data<T> const&, Vector const&);                                        \
    template void copy(data<T> const&, int, int, int, int, data<T>&, int, int);                    \
    template data<T> operator|(data<T> const&, data<T> const&);                                    \
    template data<T> operator&(data<T> const&, data<T> const&);                                    \
    template data<T> operator+(data<T> const&, data<T> const&);                                    \
    template data<T> rep(data<T> const&, int);                                                     \
    template data<T> rep(data<T> const&, Vector const&);                                           \
    template data<T> replen(data<T> const&, int);                                                  \
    template data<T> repeach(data<T> const&, int);                                                 \
    template data<T> outer(data<T> const&, data<T> const&, T (*)(T, T));                           \
    template data<T> shufflecol(data<T> const&, data<T> const&);                                   \
    template data<T> shufflerow(data<T> const&, data<T> const&);                                   \
    template void data<T>::forall(T (*)(T const&));                                                \
    template void data<T>::forcol(int, T (*)(T const&));                                           \
    template void data<T>::forrow(int, T (*)(T const&));                                           \
    template data<T> forcol(data<T> const&, int, T (*)(T));                                        \
    template data<T> forcol(data<T> const&, int, T (*)(T const&));                                 \
    template data<T> forcol(data<T> const&, int, T (*)(T, double), double);                        \
    template data<T> forrow(data<T> const&, int, T (*)(T));                                        \
    template data<T> forrow(data<T> const&, int, T (*)(T const&));                                 \
    template data<T> forrow(data<T> const&, int, T (*)(T, double), double);
INSTANCES(double)
INSTANCES(Text)
#undef INSTANCES
// clang-format on

template class data<double>;
template class data<Text>;

} // namespace varnow
