#include <varnow/containers/data.h>

#include <varnow/containers/storage.h>
#include <varnow/core/parse.h>

#include <algorithm>
#include <cstdint>

namespace varnow {

template <> double StoT<double>(char const* s)
{
    return detail::parse_by_c_library(s);
}

template <> Text TtoU<Text, Text>(Text x)
{
    return x;
}
template <> double TtoU<Text, double>(Text x)
{
    return ttod(x);
}
template <> int TtoU<Text, int>(Text x)
{
    return ttoi(x);
}
template <> Text TtoU<double, Text>(double x)
{
    return dtot(x, 0);
}
template <> double TtoU<double, double>(double x)
{
    return x;
}
template <> int TtoU<double, int>(double x)
{
    return detail::truncated(x);
}

namespace {

char upper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// As to_upper of both would compare.
bool same_letters(Text const& a, Text const& b)
{
    if (a.len != b.len) return false;
    for (int i = 0; i < a.len; ++i)
        if (upper(a.str[i]) != upper(b.str[i])) return false;
    return true;
}

int find_name(Text const* names, int n, Text const& name, int nocase)
{
    for (int i = 0; i < n; ++i)
        if (nocase ? same_letters(names[i], name) : names[i] == name) return i + 1;
    return 0;
}

// The name at a position, which is refused outside 1 to n.
template <class T> Text& name_at(Text* names, int n, int i, char const* routine)
{
    if (i < 1 || i > n)
        errormessage<T>(routine, "indeks poza zakresem", itot(n) + " : ( " + itot(i) + " )");
    return names[i - 1];
}

} // namespace

template <class T> data<T>::data(int n) : data(n, n) {}

template <class T> data<T>::data(int r, int c) : data()
{
    try {
        cell = detail::new_cells<T>(r, c);
        rnames = detail::new_names(r);
        cnames = detail::new_names(c);
    } catch (...) {
        free();
        throw;
    }
    rows = r;
    cols = c;
}

template <class T> data<T>::data(data const& b) : data()
{
    *this = b;
}

template <class T> void data<T>::free() noexcept
{
    detail::free_cells(cell);
    detail::free_names(cnames);
    detail::free_names(rnames);
    forget();
}

template <class T> data<T>& data<T>::operator=(data&& b) noexcept
{
    std::swap(rows, b.rows);
    std::swap(cols, b.cols);
    std::swap(cnames, b.cnames);
    std::swap(rnames, b.rnames);
    std::swap(cell, b.cell);
    return *this;
}

template <class T> data<T>& data<T>::operator=(data const& b)
{
    if (this == &b) return *this;
    if (!b.cell) {
        free();
        return *this;
    }
    resize(b.rows, b.cols);
    detail::copy_texts(b.cnames, cnames, cols);
    detail::copy_texts(b.rnames, rnames, rows);
    detail::copy_rows(b.cell, cell, rows, cols);
    return *this;
}

template <class T> void data<T>::resize(int r, int c)
{
    if (cell && rows == r && cols == c) return;
    if (!cell && r == 0 && c == 0) return;
    // A name array whose count did not change stays with its names.
    bool const same_rows = rnames && rows == r, same_cols = cnames && cols == c;
    data fresh;
    fresh.cell = detail::new_cells<T>(r, c);
    if (!same_rows) fresh.rnames = detail::new_names(r);
    if (!same_cols) fresh.cnames = detail::new_names(c);
    if (same_rows) std::swap(rnames, fresh.rnames);
    if (same_cols) std::swap(cnames, fresh.cnames);
    fresh.rows = r;
    fresh.cols = c;
    *this = static_cast<data&&>(fresh);
}

template <class T> void data<T>::resizec(int r, int c)
{
    if (rows == r && cols == c) return;
    data wider(r, c);
    int const common_rows = std::min(r, rows), common_cols = std::min(c, cols);
    for (int j = 0; j < common_cols; ++j) wider.cnames[j] = static_cast<Text&&>(cnames[j]);
    for (int i = 0; i < common_rows; ++i) {
        wider.rnames[i] = static_cast<Text&&>(rnames[i]);
        for (int j = 0; j < common_cols; ++j) wider.cell[i][j] = static_cast<T&&>(cell[i][j]);
    }
    if constexpr (std::is_same<T, double>::value)
        for (int i = 0; i < r; ++i)
            std::fill(wider.cell[i] + (i < common_rows ? common_cols : 0), wider.cell[i] + c, 0.0);
    *this = static_cast<data&&>(wider);
}

template <class T> void data<T>::newrows(int k)
{
    if (k < 0) {
        errormessage<T>("void newrows(int)", "ujemny parametr", "");
        return;
    }
    resizec(detail::checked_size(std::int64_t(rows) + k), cols);
}

template <class T> void data<T>::newcol(Text const& name)
{
    Text const kept = name;
    resizec(rows, detail::checked_size(std::int64_t(cols) + 1));
    cnames[cols - 1] = kept;
}

template <class T> Text& data<T>::colname(int j)
{
    return name_at<T>(cnames, cols, j, "Text & colname(int)");
}
template <class T> Text const& data<T>::colname(int j) const
{
    return name_at<T>(cnames, cols, j, "Text & colname(int)");
}
template <class T> Text& data<T>::rowname(int i)
{
    return name_at<T>(rnames, rows, i, "Text & rowname(int)");
}
template <class T> Text const& data<T>::rowname(int i) const
{
    return name_at<T>(rnames, rows, i, "Text & rowname(int)");
}

template <class T> int data<T>::find_col(Text const& name, int nocase) const
{
    return find_name(cnames, cols, name, nocase);
}
template <class T> int data<T>::find_row(Text const& name, int nocase) const
{
    return find_name(rnames, rows, name, nocase);
}

template <class T> int data<T>::find_cell(T const& value, int col, int start_row) const
{
    auto refuse = [](char const* why) {
        errormessage<T>("int find_cell(_T_,int,int)", why, "");
        return 0;
    };
    if (col < 1 || col > cols) return refuse("wybrana kolumna jest poza zakresem");
    if (start_row < 1 || start_row > rows) return refuse("wiersz startowy jest poza zakresem");
    for (int i = start_row; i <= rows; ++i)
        if (cell[i - 1][col - 1] == value) return i;
    return 0;
}

template <class T> void data<T>::refuse_cell(int i, int j) const
{
    errormessage<T>("_T_ & operator ()(int,int)", "indeks poza zakresem",
                    detail::index_detail(rows, cols, itot(i), itot(j)));
    std::abort();
}

template <class T> T& data<T>::element(int k) const
{
    char const* const routine = "_T_ & operator ()(int)";
    bool const along_row = rows <= cols;
    if (along_row ? rows != 1 : cols != 1)
        errormessage<T>(routine, "oczekiwany wektor kolumnowy lub wierszowy", "");
    if (k < 1 || k > (along_row ? cols : rows))
        errormessage<T>(routine, "indeks poza zakresem", detail::index_detail(rows, cols, itot(k)));
    return along_row ? cell[0][k - 1] : cell[k - 1][0];
}

template <class T> T& data<T>::element(int i, Text const& c) const
{
    auto refuse = [&](char const* why) {
        errormessage<T>("_T_ & operator ()(int,Text)", why,
                        detail::index_detail(rows, cols, itot(i), c));
    };
    if (outside(i, rows)) refuse("numer wiersza poza zakresem");
    int const j = find_col(c, 1);
    if (j < 1) refuse("nie znaleziono kolumny");
    return cell[i - 1][j - 1];
}

template <class T> T& data<T>::element(Text const& r, int j) const
{
    auto refuse = [&](char const* why) {
        errormessage<T>("_T_ & operator ()(Text,int)", why,
                        detail::index_detail(rows, cols, r, itot(j)));
    };
    if (outside(j, cols)) refuse("numer kolumny poza zakresem");
    int const i = find_row(r, 1);
    if (i < 1) refuse("nie znaleziono wiersza");
    return cell[i - 1][j - 1];
}

template <class T> T& data<T>::element(Text const& r, Text const& c) const
{
    auto refuse = [&](char const* why) {
        errormessage<T>("_T_ & operator ()(Text,Text)", why,
                        detail::index_detail(rows, cols, r, c));
    };
    int const i = find_row(r, 1);
    if (i < 1) refuse("nie znaleziono wiersza");
    int const j = find_col(c, 1);
    if (j < 1) refuse("nie znaleziono kolumny");
    return cell[i - 1][j - 1];
}

namespace {

template <class T> data<T> pick_column(data<T> const& a, int j, Text const& name)
{
    data<T> r(a.rows, 1);
    r.cnames[0] = name;
    detail::copy_texts(a.rnames, r.rnames, a.rows);
    for (int i = 0; i < a.rows; ++i) r.cell[i][0] = a.cell[i][j - 1];
    return r;
}

} // namespace

template <class T> data<T> data<T>::operator[](int j) const
{
    if (j < 1 || j > cols) {
        errormessage<T>("_data_ operator [](int)", "kolumna poza zakresem", "");
        return data();
    }
    return pick_column(*this, j, cnames[j - 1]);
}

template <class T> data<T> data<T>::operator[](Text const& name) const
{
    int const j = find_col(name, 1);
    if (j < 1) {
        errormessage<T>("_data_ operator [](Text)", "nie znaleziono kolumny", "");
        return data();
    }
    return pick_column(*this, j, name);
}

template <class T, class U> void copynames_r2r(data<T> const& from, data<U>& to)
{
    detail::copy_texts(from.rnames, to.rnames, std::min(from.rows, to.rows));
}
template <class T, class U> void copynames_c2c(data<T> const& from, data<U>& to)
{
    detail::copy_texts(from.cnames, to.cnames, std::min(from.cols, to.cols));
}
template <class T, class U> void copynames_r2c(data<T> const& from, data<U>& to)
{
    detail::copy_texts(from.rnames, to.cnames, std::min(from.rows, to.cols));
}
template <class T, class U> void copynames_c2r(data<T> const& from, data<U>& to)
{
    detail::copy_texts(from.cnames, to.rnames, std::min(from.cols, to.rows));
}
template <class T, class U> void copynames(data<T> const& from, data<U>& to)
{
    copynames_r2r(from, to);
    copynames_c2c(from, to);
}

// clang-format off
#define INSTANCES(name)                                                                            \
    template void name(data<double> const&, data<double>&);                                        \
    template void name(data<double> const&, data<Text>&);                                          \
    template void name(data<Text> const&, data<double>&);                                          \
    template void name(data<Text> const&, data<Text>&);
INSTANCES(copynames)
INSTANCES(copynames_r2r)
INSTANCES(copynames_c2c) INSTANCES(copynames_r2c) INSTANCES(copynames_c2r)
#undef INSTANCES
    // clang-format on

    template class data<double>;
template class data<Text>;

} // namespace varnow
