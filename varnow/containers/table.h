// table: data<Text> with text methods.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// A named grid of texts; the empty text is the missing value. A comma or a point is the decimal
/// sign of a cell that is read as a number.
class VARNOW_API table : public data<Text>
{
public:
    table() = default;
    table(int r, int c) : data<Text>(r, c) {}
    table(data<Text> const& b) : data<Text>(b) {}
    table(data<Text>&& b) noexcept : data<Text>(static_cast<data<Text>&&>(b)) {}
    /// Whole numbers in the range of a 32-bit integer as integers, all else by `dtot(x, 0)`; names
    /// kept.
    table(matrix const& m);
    table(table const&) = default;
    table(table&&) noexcept = default;
    ~table() = default;
    table& operator=(table const&) = default;
    table& operator=(table&&) noexcept = default;

    void delete_table() noexcept { free(); }
    void copy_table(table const& b) { *this = b; }
    void copy_matrix(matrix const& m) { *this = table(m); }
    /// Cells by com2dot and atof: 0 for an empty cell and for what is not a number. Names kept.
    operator matrix() const;

    table operator[](int j) const { return data<Text>::operator[](j); }
    table operator[](Text const& name) const { return data<Text>::operator[](name); }
    table operator[](char const* name) const { return data<Text>::operator[](Text(name)); }
    table col(int j) const { return data<Text>::col(j); }
    table row(int i) const { return data<Text>::row(i); }
    table col(Vector const& idx) const { return data<Text>::col(idx); }
    table row(Vector const& idx) const { return data<Text>::row(idx); }
    table filter(Vector const& flags) const { return data<Text>::filter(flags); }
    // Also for what becomes a table: a matrix.
    using data<Text>::set;
    using data<Text>::setcol;
    using data<Text>::setrow;
    using data<Text>::operator|=;
    using data<Text>::operator&=;
    void set(Vector const& r, Vector const& c, table const& b) { data<Text>::set(r, c, b); }
    void setcol(Vector const& idx, table const& b) { data<Text>::setcol(idx, b); }
    void setcol(int j, table const& b) { data<Text>::setcol(j, b); }
    void setrow(Vector const& idx, table const& b) { data<Text>::setrow(idx, b); }
    void setrow(int i, table const& b) { data<Text>::setrow(i, b); }
    table& operator|=(table const& b)
    {
        data<Text>::operator|=(b);
        return *this;
    }
    table& operator&=(table const& b)
    {
        data<Text>::operator&=(b);
        return *this;
    }
    table sample_n(int n, int replace) const { return data<Text>::sample_n(n, replace); }
    table sample_frac(double f, int replace) const { return data<Text>::sample_frac(f, replace); }

    using data<Text>::operator+=;
    /// Appends the text to every cell.
    table& operator+=(Text x);
    /// Names rows prefix + "R" + i and columns prefix + "C" + j; cell k, counted row by row, is
    /// `cell` followed by k.
    void test(Text const& prefix = Text(), Text const& cell = Text());

    /// The columns, or rows when by_columns is 0, named in a row of labels (without regard to
    /// case), in that order; all but these when exclude is not 0.
    /// - refuses: labels that are not a row; a label that is not there
    table select(table const& labels, int by_columns = 1, int exclude = 0) const;
    /// The columns for which the predicate, called on each as a table of one column, is not 0.
    table select_if(int (*f)(table const&)) const;
    /// Reorders rows (columns when by_column is 0) by the numbers of line n, which `sort` orders as
    /// texts.
    void sortval(int n, Direction d = Ascending, int by_column = 1);
    void sortval(Text const& name, Direction d = Ascending, int by_column = 1);
    // The direction as a plain number, 0 or 1.
    void sortval(int n, int d, int by_column = 1)
    {
        sortval(n, static_cast<Direction>(d), by_column);
    }
    void sortval(Text const& name, int d, int by_column = 1)
    {
        sortval(name, static_cast<Direction>(d), by_column);
    }

    // Groups of rows by the texts of key columns (analytics/grouping.h, which shows how to go over
    // the groups). Columns are found without regard to case.
    using statistic = matrix (*)(matrix const&);

    /// The rows of each group, in the order of the levels of the key: keys.rows tables, each with
    /// the names of this table, in an array of the caller's, who releases it by `delete[]`.
    /// - keys: receives a row for each group; its column bears the key column's name
    /// - refuses: a column that is not there; in `levels`, a table without rows
    table* group_by(Text const& col, table& keys) const;
    /// The same by the columns named in a row of labels, as `c("sex", "year")`. Groups stand in the
    /// order of the levels, those of the first key varying fastest; combinations that occur in no
    /// row have no group. Without names all rows, if any, are one group.
    /// - refuses: names that are not a row; and, key by key, as above
    table* group_by(table const& names, table& keys) const;
    /// The key table of that, with a column for each formula NAME=LABEL(COLUMN), where LABEL is for
    /// the reader only: column NAME holds, as `dtot(value, 0)` writes it, what the function gives
    /// for the numbers of COLUMN in each group, a matrix of one column. An empty cell is 0 there
    /// and counts. Pairs with an empty formula are skipped.
    /// - refuses: names that are not a row; as `group_by`; and for each formula in turn: one whose
    ///   first "=", first "(" and first ")" do not stand in this order; a null function; a column
    ///   that is not there; in the conversion of a matrix, a result that is not 1 by 1
    table summarise(table const& names, Text const& f1 = Text(), statistic g1 = nullptr,
                    Text const& f2 = Text(), statistic g2 = nullptr, Text const& f3 = Text(),
                    statistic g3 = nullptr, Text const& f4 = Text(), statistic g4 = nullptr,
                    Text const& f5 = Text(), statistic g5 = nullptr, Text const& f6 = Text(),
                    statistic g6 = nullptr, Text const& f7 = Text(), statistic g7 = nullptr,
                    Text const& f8 = Text(), statistic g8 = nullptr, Text const& f9 = Text(),
                    statistic g9 = nullptr, Text const& f10 = Text(),
                    statistic g10 = nullptr) const;
    /// One step of `summarise`: adds the column of a formula to a key table of result.rows groups.
    static void summarise_stp(table& result, table const* groups, Text const& formula, statistic g);
};

namespace detail {
template <class A>
constexpr bool is_text = std::is_same<A, Text>::value || std::is_convertible<A, char const*>::value;
template <class... A> using if_texts = std::enable_if_t<(is_text<std::decay_t<A>> || ...), int>;
} // namespace detail

/// One row of texts. Numbers among them are written as the constructor of Text does.
template <int = 0, class... A, detail::if_texts<A...> = 0> table c(A const&... values)
{
    table r(1, static_cast<int>(sizeof...(A)));
    int j = 0;
    ((r.cell[0][j++] = Text(values)), ...);
    return r;
}

/// The same with the cell type named, `c<Text>("a", "b")`.
template <class T, class... A,
          std::enable_if_t<std::is_same<T, Text>::value && (sizeof...(A) > 0), int> = 0>
data<T> c(A const&... values)
{
    return c(Text(values)...);
}

/// Transposed, names of both kinds exchanged.
VARNOW_API table operator~(table const& a);

/// Element-wise joining; names of the first table.
VARNOW_API table operator+(table const& a, table const& b);
VARNOW_API table operator+(Text const& a, table const& b);
VARNOW_API table operator+(table const& a, Text const& b);

/// True when a cell is not empty; false when one is empty.
VARNOW_API bool any(table const& a);
VARNOW_API bool all(table const& a);
VARNOW_API bool isempty(table const& a);
VARNOW_API bool issqr(table const& a);
VARNOW_API bool issym(table const& a);

/// All cells in one column, column after column, without names.
VARNOW_API table vect(table const& a);
/// The row names as a column, the column names as a row.
VARNOW_API table rownames(table const& a);
VARNOW_API table colnames(table const& a);
VARNOW_API table rownames(matrix const& a);
VARNOW_API table colnames(matrix const& a);

VARNOW_API table forall(table const& a, Text (*f)(Text));
template <class R> table forall(table const& a, R (*f)(Text const&))
{
    table r(a);
    r.forall(f);
    return r;
}
VARNOW_API table forall(table const& a, Text (*f)(Text, double), double x);

} // namespace varnow
