// The named two-dimensional container, on which matrix and table stand.
#pragma once

#include <varnow/containers/vector.h>
#include <varnow/core/messages.h>
#include <varnow/core/text.h>

#include <type_traits>
#include <utility>

namespace varnow {

/// Order of a sort; a routine refuses any other value.
enum Direction : int { Ascending = 0, Descending = 1 };

/// The zero of a cell type: 0.0, or the empty text.
template <class T> T __0();
template <> inline double __0<double>()
{
    return 0.0;
}
template <> inline Text __0<Text>()
{
    return Text();
}

/// The missing value of a cell type: NaN, or the empty text.
template <class T> T __NAN();
template <> inline double __NAN<double>()
{
    return static_cast<double>(__builtin_nanf(""));
}
template <> inline Text __NAN<Text>()
{
    return Text();
}

/// Filter on characters read into a cell: a number's decimal comma becomes a point.
template <class T> char commod(char c);
template <> inline char commod<double>(char c)
{
    return c == ',' ? '.' : c;
}
template <> inline char commod<Text>(char c)
{
    return c;
}

/// Text to cell: atof, or the text.
template <class T> T StoT(char const* s);
template <> VARNOW_API double StoT<double>(char const* s);
template <> inline Text StoT<Text>(char const* s)
{
    return Text(s);
}

namespace detail {
/// x truncated toward zero to 32 bits; NaN and what is out of range give the integer minimum.
inline int truncated(double x)
{
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x) : -2147483647 - 1;
}
} // namespace detail

/// One cell converted to another type. A double becomes a text by `dtot(x, 0)` and an int by
/// truncation toward zero; a text is read by `ttod`, `ttoi` or as a date.
template <class T, class U> U TtoU(T x);
template <> VARNOW_API Text TtoU<Text, Text>(Text x);
template <> VARNOW_API double TtoU<Text, double>(Text x);
template <> VARNOW_API int TtoU<Text, int>(Text x);
template <> VARNOW_API date TtoU<Text, date>(Text x);
template <> VARNOW_API Text TtoU<double, Text>(double x);
template <> VARNOW_API double TtoU<double, double>(double x);
template <> VARNOW_API int TtoU<double, int>(double x);

/// A dense grid of cells with a name on every row and column. Instantiated for double and Text.
/// The fields are open. All positions count from 1; names are empty until set, need not differ, and
/// look-ups return the first hit. Every copy is deep. The rows may stand in any order in memory,
/// and rows are exchanged by exchanging their pointers; all of an object's rows lie in one block
/// that goes as a whole, so a row pointer is never released or handed to another object. Cells of
/// type double are undefined in a new or resized object, cells of type Text empty. Negative or
/// overflowing sizes end in the run-time's allocation exception.
template <class T> class VARNOW_API data
{
public:
    using cell_type = T;

    int rows;
    int cols;
    Text* cnames;
    Text* rnames;
    T** cell;

    data() noexcept : rows(0), cols(0), cnames(nullptr), rnames(nullptr), cell(nullptr) {}
    explicit data(int n);
    data(int r, int c);
    data(data const& b);
    data(data&& b) noexcept
        : rows(b.rows), cols(b.cols), cnames(b.cnames), rnames(b.rnames), cell(b.cell)
    {
        b.forget();
    }
    ~data() { free(); }
    /// Equal sizes keep the object's arrays; the names are always those of b.
    data& operator=(data const& b);
    data& operator=(data&& b) noexcept;

    /// Back to the state of a default-constructed object.
    void free() noexcept;
    /// Drops the cells unless both sizes are right; a name array whose count stays keeps its names.
    void resize(int r, int c);
    /// Keeps names and cells of the common block; new cells are 0 or empty, new names empty.
    void resizec(int r, int c);
    /// Appends k rows. Refuses a negative k.
    void newrows(int k);
    /// Appends one column of that name.
    void newcol(Text const& name);

    /// References to names. Refuse a position out of range.
    Text& colname(int j);
    Text& rowname(int i);
    Text const& colname(int j) const;
    Text const& rowname(int i) const;
    /// Position of the first column (row) of that name, 0 if there is none; without regard to case
    /// when nocase is not 0.
    int find_col(Text const& name, int nocase = 0) const;
    int find_row(Text const& name, int nocase = 0) const;
    /// Row of the first cell equal to value in a column, from start_row on; 0 if there is none.
    /// - refuses: a column, then a row, out of range
    int find_cell(T const& value, int col, int start_row = 1) const;
    /// The same with the column by name; for cells of type Text.
    template <class U = T, std::enable_if_t<std::is_same<U, Text>::value, int> = 0>
    int find_cell(T const& value, Text const& colname, int start_row, int nocase) const
    {
        int const col = find_col(colname, nocase);
        if (col < 1)
            errormessage<T>("int find_cell(_T_,Text,int,int)", "nie znaleziono wybranej kolumny",
                            "");
        return find_cell(value, col, start_row);
    }

    /// Cells by number or by name (without regard to case). Refuse what is not there.
    T& operator()(int i, int j)
    {
        if (outside(i, rows) || outside(j, cols)) refuse_cell(i, j);
        return cell[i - 1][j - 1];
    }
    T const& operator()(int i, int j) const
    {
        if (outside(i, rows) || outside(j, cols)) refuse_cell(i, j);
        return cell[i - 1][j - 1];
    }
    /// Element k of an object of one row or one column.
    T& operator()(int k) { return element(k); }
    T const& operator()(int k) const { return element(k); }
    T& operator()(int i, Text const& c) { return element(i, c); }
    T const& operator()(int i, Text const& c) const { return element(i, c); }
    T& operator()(Text const& r, int j) { return element(r, j); }
    T const& operator()(Text const& r, int j) const { return element(r, j); }
    T& operator()(Text const& r, Text const& c) { return element(r, c); }
    T const& operator()(Text const& r, Text const& c) const { return element(r, c); }

    /// One column as a new object of one column, with its name and the row names.
    data operator[](int j) const;
    /// The same by name; the result bears the name as given.
    data operator[](Text const& name) const;
    data operator[](char const* name) const { return (*this)[Text(name)]; }
    data col(int j) const;
    data row(int i) const;
    data col(Vector const& idx) const;
    data row(Vector const& idx) const;
    data filter(Vector const& flags) const;

    // Writing back (slicing.cpp). Names stay as they are.
    /// Cell (r[i], c[j]) takes cell (br[i], bc[j]) of b, which may be this object.
    void set(Vector const& r, Vector const& c, data const& b, Vector const& br, Vector const& bc);
    void set(Vector const& r, Vector const& c, data const& b);
    /// Column (row) idx[k] takes column (row) k of b.
    void setcol(Vector const& idx, data const& b);
    void setcol(int j, data const& b);
    void setrow(Vector const& idx, data const& b);
    void setrow(int i, data const& b);
    void fill(T const& x);
    /// Sets the block of nr by nc cells at (r, c).
    void fill(T const& x, int r, int c, int nr, int nc);
    /// All cells to 0 or empty, and with names not 0 all names to empty.
    void clear(int names = 0);

    data& operator|=(data const& b);
    data& operator&=(data const& b);
    data& operator+=(data const& b);

    // Reshaping in place (reshape.cpp); names go with their rows and columns.
    void tr();
    void rot90();
    void flipud();
    void fliplr();
    void up();
    void down();
    void tril();
    void triu();
    /// New sizes over the same cells, read and written column by column; all names are lost.
    void reshape(int r, int c);
    /// Keep columns (rows) a to b, or none when b is a - 1. Refuse positions out of range.
    void leave_cols(int a, int b);
    void leave_rows(int a, int b);
    /// Keeps the first n rows in place; their memory stays with the object. Refuses n above `rows`.
    void leave_rows_to(int n);
    /// Exchange two columns (rows, by their pointers).
    void swap_cols(int a, int b);
    void swap_rows(int a, int b);
    /// Positions from..to take the columns (rows) from - 1 + order[k], names included; an entry may
    /// repeat. Rows move by their pointers.
    /// - refuse: an order of another length; positions out of range
    void reorder_cols(Vector const& order, int from, int to);
    void reorder_rows(Vector const& order, int from, int to);
    void forall(T (*f)(T));
    void forcol(int j, T (*f)(T));
    void forrow(int i, T (*f)(T));
    // For functions that take a reference, such as `to_upper`; R is T.
    template <class R> void forall(R (*f)(T const&));
    template <class R> void forcol(int j, R (*f)(T const&));
    template <class R> void forrow(int i, R (*f)(T const&));

    // Ordering and sampling (ordering.cpp, sampling.cpp).
    void sort(int n, Direction d = Ascending, int by_column = 1);
    void sort(Text const& name, Direction d = Ascending, int by_column = 1);
    // The direction as a plain number, 0 or 1.
    void sort(int n, int d, int by_column = 1) { sort(n, static_cast<Direction>(d), by_column); }
    void sort(Text const& name, int d, int by_column = 1)
    {
        sort(name, static_cast<Direction>(d), by_column);
    }
    data sample_n(int n, int replace) const;
    /// sample_n of the fraction f of the rows, truncated.
    data sample_frac(double f, int replace) const;
    void random_shuffle_rows();
    void random_shuffle_cols();

    // Delimited text files (textfile.cpp).
    int readtxt(char const* name, int show = 0, int rownames = 0, int header = 1, int quotes = 0,
                char sep = '\t', int fatal = 1);
    int writetxt(char const* name, int show = 0, int rownames = 0, int header = 1, int quotes = 0,
                 char sep = '\t', char dec = '.', int fatal = 1) const;
    void sreadtxt(char const* name, int show = 0, int rownames = 0, int header = 1, int quotes = 0,
                  char sep = '\t', int wait = 1);
    void lreadtxt(char const* name, int show = 0, int rownames = 0, int header = 1, int quotes = 0,
                  char sep = '\t', int wait = 1);
    void swritetxt(char const* name, int show = 0, int rownames = 0, int header = 1, int quotes = 0,
                   char sep = '\t', char dec = '.', int wait = 1) const;
    void ulwritetxt(char const* name, int show = 0, int rownames = 0, int header = 1,
                    int quotes = 0, char sep = '\t', char dec = '.', int wait = 1) const;

    /// Prints the title on a line of its own, unless empty, and the cells to standard output in
    /// aligned columns with the names: numbers to seven significant digits with their points below
    /// each other, right-aligned, NaN as "NaN"; texts left-aligned.
    void display(Text const& title = Text()) const;

private:
    static bool outside(int i, int n)
    {
        return static_cast<unsigned>(i) - 1u >= static_cast<unsigned>(n);
    }
    [[noreturn]] void refuse_cell(int i, int j) const;
    T& element(int k) const;
    T& element(int i, Text const& c) const;
    T& element(Text const& r, int j) const;
    T& element(Text const& r, Text const& c) const;
    void forget() noexcept
    {
        rows = cols = 0;
        cnames = rnames = nullptr;
        cell = nullptr;
    }
};

extern template class data<double>;
extern template class data<Text>;

/// Free forms of the look-ups.
template <class T> int find_col(data<T> const& a, Text const& name, int nocase = 0)
{
    return a.find_col(name, nocase);
}
template <class T> int find_row(data<T> const& a, Text const& name, int nocase = 0)
{
    return a.find_row(name, nocase);
}

/// Copy names of the first min(count) rows and columns; the directed forms copy one kind to one
/// kind. Source and target may have different cell types.
template <class T, class U> VARNOW_API void copynames(data<T> const& from, data<U>& to);
template <class T, class U> VARNOW_API void copynames_r2r(data<T> const& from, data<U>& to);
template <class T, class U> VARNOW_API void copynames_c2c(data<T> const& from, data<U>& to);
template <class T, class U> VARNOW_API void copynames_r2c(data<T> const& from, data<U>& to);
template <class T, class U> VARNOW_API void copynames_c2r(data<T> const& from, data<U>& to);

namespace detail {
/// Holds for data<T> itself and not for matrix or table, which have overloads of their own.
template <class A, class R = int>
using if_plain = std::enable_if_t<std::is_same<A, data<typename A::cell_type>>::value, R>;

/// data<T> where T is named in the call, `setunion<double>(a, b)`, and not found from an argument.
template <class T> struct named
{
};
template <> struct named<double>
{
    using container = data<double>;
};
template <> struct named<Text>
{
    using container = data<Text>;
};
template <class T> using container_of = typename named<T>::container;
} // namespace detail

} // namespace varnow
