// sparse: a numeric matrix as a list of its stored entries, with room for every position.
#pragma once

// Those too that have functions of the same names for matrix: without them in sight, a call for a
// matrix would turn it into a sparse one.
#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/containers/matrix_products.h>
#include <varnow/containers/ordering.h>
#include <varnow/numerics/statistics.h>

#include <type_traits>
#include <utility>

namespace varnow {

/// Stored entries in ascending order of row and then column, all numbered from 1. The arrays have
/// room for rows * cols entries from the start, so that storing one more never allocates; memory
/// that no entry has used costs no pages.
/// A stored entry may be 0: being stored and being non-zero are different things. Where small
/// values are dropped, that is a magnitude of at most 1e-15; NaN stays.
/// Sizes that are negative, or whose product no int holds, are refused. One thread may write, or
/// several read through `get`, `iselem` and `iszero`.
class VARNOW_API sparse
{
public:
    int rows;
    int cols;
    int nnz;        ///< number of stored entries; -1 while the pattern is undefined
    int* rowidx;    ///< row of entry k, k from 0
    int* colidx;    ///< column of entry k
    double* values; ///< value of entry k
    int indexed;    ///< 1 while there is a row index
    int* row_begin; ///< for row i (element 0 is not used) the position of its first entry, or -1
    int* row_end;   ///< for row i one past the position of its last entry, or -1
    int sorted;     ///< 0 while the list may be out of order, as a file may leave it

    /// 0 by 0, `nnz` 0.
    sparse() noexcept;
    /// r by c, `nnz` -1; `spempty` gives one without entries.
    sparse(int r, int c);
    /// The elements whose magnitude is above 1e-15, and NaN. Names are dropped.
    sparse(matrix const& m);
    sparse(sparse const& b);
    sparse(sparse&& b) noexcept;
    ~sparse();
    sparse& operator=(sparse const& b);
    sparse& operator=(sparse&& b) noexcept;

    /// Releases everything: 0 by 0, `nnz` -1.
    void free() noexcept;

    // An entry; positions outside the matrix are refused. The time is logarithmic in the entries of
    // the row with an index, in all entries without one, and constant where nothing is missing. A
    // list that a file has left unsorted is walked, and the walk ends at the first entry that is
    // not before (i, j).

    int iselem(int i, int j) const;
    /// 1 unless the entry is stored, whatever its value.
    int iszero(int i, int j) const;
    /// 0.0 where nothing is stored.
    double get(int i, int j) const;
    /// Refuses an entry that is not stored.
    void set(int i, int j, double v);
    /// Stores 0.0 where nothing is stored, moving up the entries behind; keeps the index up to
    /// date. At the end of the list nothing moves. An undefined pattern counts as empty.
    /// - refuses, besides: one more entry where repeated positions fill the arrays
    double& operator()(int i, int j);
    /// Value of the k-th stored entry, k from 1.
    double& operator[](int k);
    double operator[](int k) const;

    /// Another shape makes the pattern undefined and drops the index; with the same rows * cols the
    /// arrays stay. The same shape changes nothing.
    void resize(int r, int c);
    /// Keeps the entries that lie inside the new shape, the arrays with the same rows * cols, and
    /// rebuilds the index if there was one.
    void resizec(int r, int c);

    // Changes of the pattern; they drop the index.

    /// Removes the entries whose magnitude is at most 1e-15. An undefined pattern stays so.
    void pack();
    /// Stores 0.0 at every position where nothing is stored, also for an undefined pattern.
    void unpack();
    /// Takes over the pattern of ref, with 0.0 at positions that were not stored here; an undefined
    /// one gives no entries. Refuses another shape.
    void synch(sparse const& ref);
    /// Transposes in place.
    void T();
    /// `pack`, and then k added to every row (column) number. Refuse numbers outside the matrix.
    void shiftrows(int k);
    void shiftcols(int k);

    /// Builds the row index unless there is one.
    void mkindex();
    void delindex() noexcept;
    /// Copies the index of a matrix of the same pattern, unless there is one here. Refuses another
    /// shape; the pattern is the caller's care.
    void cpyindex(sparse const& ref);

    /// Refuses 0 rows or columns.
    operator matrix() const;
    /// The entry of a 1 by 1 matrix, 0.0 if nothing is stored. Refuses other shapes.
    operator double() const;

    // The text file: a line of rows, columns and `nnz`, and a line of row, column and value for
    // each entry, values with six significant digits. The order of a list is taken as it comes.
    // - return: 0, or 1 when the file can't be opened, which is refused if `fatal` is not 0
    // - refuses: a file whose sizes or count do not fit each other, with an entry outside the
    //   matrix, cut short, or with something else than numbers; the matrix is unchanged then

    int readtxt(char const* name, int fatal = 1);
    int writetxt(char const* name, int fatal = 1) const;

    /// Prints the whole matrix, whole numbers without decimals, others with three.
    void display(char const* name) const;
    /// Prints a line for each entry, in the same way.
    void list(char const* name) const;
    /// Prints the row index.
    void index(char const* name) const;

    // Values of the stored entries; the pattern and the index stay.

    void zeros();
    void ones();
    void fill(double v);
    /// In place of exact zeros only.
    void fill0(double v);
    /// Uniform draws in (0, 1) times s, in list order, from the sequence of `sprand`; rfill0 draws
    /// for exact zeros only.
    void rfill(double s);
    void rfill0(double s);
    void forall(double (*f)(double));
    void forall(double (*f)(double, double), double p);
    // For a whole number only: among several functions of one name the other form takes the rest.
    template <class I, detail::if_integers<I> = 0> void forall(double (*f)(double, int), I p)
    {
        for (int k = 0; k < nnz; ++k) values[k] = f(values[k], static_cast<int>(p));
    }
    void spabs();
    void spsqr();
    sparse& operator+=(double s);
    sparse& operator-=(double s);
    sparse& operator*=(double s);
    sparse& operator/=(double s);

    // Two matrices of one pattern: entry k meets entry k. Refuse other sizes, then another number
    // of entries.

    void addassign(sparse const& b);           ///< a += b
    void addassign(double s, sparse const& b); ///< a = s * a + b
    void addassign(sparse const& b, double s); ///< a += s * b
    void subassign(sparse const& b);           ///< a -= b
    void subassign(double s, sparse const& b); ///< a = s * a - b
    void subassign(sparse const& b, double s); ///< a -= s * b

    // The smallest (largest) row or column that holds a magnitude above 1e-15 or a NaN; without
    // one, `rows` or `cols` (1).
    int minrow() const;
    int mincol() const;
    int maxrow() const;
    int maxcol() const;
};

/// No entries.
VARNOW_API sparse spempty(int r, int c);
/// Every position stored.
VARNOW_API sparse spzeros(int r, int c);
VARNOW_API sparse spones(int r, int c);
/// Every position stored, uniform draws in (0, 1) row after row, from a sequence of their own that
/// `rfill` and the weights of networks go on with.
VARNOW_API sparse sprand(int r, int c);
VARNOW_API sparse speye(int r, int c);
/// Positions numbered from 1 row after row; all but every third are stored with their number.
VARNOW_API sparse sptest(int r, int c);

// Two matrices of one pattern, entry k with entry k; the result has the entries of the first and no
// index. Refuse other sizes, then another number of entries.
VARNOW_API sparse spplus(sparse const& a, sparse const& b);
VARNOW_API sparse spminus(sparse const& a, sparse const& b);
/// a - t * b
VARNOW_API sparse spminus(sparse const& a, sparse const& b, double t);
VARNOW_API sparse spmul(sparse const& a, sparse const& b);
VARNOW_API sparse spdiv(sparse const& a, sparse const& b);

// Any two patterns of one shape, position by position; what is not stored counts as 0, magnitudes
// of at most 1e-15 are dropped from the result, NaN stays. The time is linear in the entries.
VARNOW_API sparse operator+(sparse const& a, sparse const& b);
VARNOW_API sparse operator-(sparse const& a, sparse const& b);
/// Positions stored in both.
VARNOW_API sparse operator*(sparse const& a, sparse const& b);
/// a times 1 / b. Refuses an entry of a where b has none.
VARNOW_API sparse operator/(sparse const& a, sparse const& b);
/// The matrix product, magnitudes of at most 1e-15 dropped. Every sum runs in the list order of a.
/// Refuses a.cols != b.rows. An index of b saves a pass over b.
VARNOW_API sparse mul(sparse const& a, sparse const& b);

VARNOW_API sparse operator-(sparse a);
/// Transposed.
VARNOW_API sparse operator~(sparse const& a);
/// Row n as a 1 by cols matrix, stored zeros included. Refuses a number outside 1 to rows.
VARNOW_API sparse row(sparse const& a, int n);

// A number and each stored entry; what is not stored stays so.
VARNOW_API sparse operator*(sparse a, double s);
VARNOW_API sparse operator*(double s, sparse a);
VARNOW_API sparse operator/(sparse a, double s);
VARNOW_API sparse operator/(double s, sparse a);

VARNOW_API sparse abs(sparse a);
VARNOW_API sparse sqr(sparse a);
VARNOW_API sparse forall(sparse const& a, double (*f)(double));
VARNOW_API sparse forall(sparse const& a, double (*f)(double, double), double p);
template <class I, detail::if_integers<I> = 0>
sparse forall(sparse const& a, double (*f)(double, int), I p)
{
    sparse r = a;
    r.forall(f, p);
    return r;
}

VARNOW_API double sum(sparse const& a);
VARNOW_API double sumsqr(sparse const& a);
/// 1 for equal sizes, numbers of entries, and entries in list order, else 0; a NaN equals nothing.
VARNOW_API int compare(sparse const& a, sparse const& b);
VARNOW_API int minrow(sparse const& a);
VARNOW_API int mincol(sparse const& a);
VARNOW_API int maxrow(sparse const& a);
VARNOW_API int maxcol(sparse const& a);

// clang-format off
// Without these a whole number would suit the operators of matrix as well.
#define VARNOW_SCALAR(op)                                                                              \
    template <class S, detail::if_number<S> = 0> sparse operator op(sparse a, S s)                     \
    { return std::move(a) op static_cast<double>(s); }                                                 \
    template <class S, detail::if_number<S> = 0> sparse operator op(S s, sparse a)                     \
    { return static_cast<double>(s) op std::move(a); }
VARNOW_SCALAR(*) VARNOW_SCALAR(/)
#undef VARNOW_SCALAR

// Beside a matrix a sparse one stands for the whole matrix, with 0 where nothing is stored, and so
// does the result.
#define VARNOW_BESIDE_MATRIX(R, f)                                                                     \
    template <class M, std::enable_if_t<std::is_same<M, matrix>::value, int> = 0>                      \
    R f(sparse const& a, M const& b) { return f(a.operator matrix(), b); }                             \
    template <class M, std::enable_if_t<std::is_same<M, matrix>::value, int> = 0>                      \
    R f(M const& a, sparse const& b) { return f(a, b.operator matrix()); }
VARNOW_BESIDE_MATRIX(matrix, operator+) VARNOW_BESIDE_MATRIX(matrix, operator-)
VARNOW_BESIDE_MATRIX(matrix, operator*) VARNOW_BESIDE_MATRIX(matrix, operator/)
VARNOW_BESIDE_MATRIX(matrix, mul) VARNOW_BESIDE_MATRIX(int, compare)
#undef VARNOW_BESIDE_MATRIX
// clang-format on

} // namespace varnow
