// matrix: data<double> with numeric methods.
#pragma once

#include <varnow/containers/data.h>
#include <varnow/core/scalar.h>

#include <cstdio>

namespace varnow {

class sparse;

/// Method of a linear solver; with any other value a solver leaves its result undefined.
enum LinearMethod : int { GAUSS = 0, LU = 1, QR = 2 };

/// A named grid of numbers; NaN is the missing value.
class VARNOW_API matrix : public data<double>
{
public:
    matrix() = default;
    /// n by n, cells undefined. Explicit, so that a whole number given where a matrix is expected
    /// becomes a 1 by 1 matrix and never a size.
    explicit matrix(int n) : data<double>(n) {}
    matrix(int r, int c) : data<double>(r, c) {}
    /// 1 by 1.
    matrix(double x);
    /// The same for a whole number given where a matrix is expected, 0 included, which is no
    /// literal.
    template <class S, std::enable_if_t<std::is_same<S, int>::value, int> = 0>
    matrix(S x) : matrix(static_cast<double>(x))
    {
    }
    /// A literal such as "1 2 3; 4 5 6": blanks between numbers, ";" between rows, a decimal comma
    /// is accepted. Cells that a shorter last row leaves out are 0.
    /// - refuses: rows of different length (a last row that is longer); an element above 255
    /// characters
    matrix(char const* s);
    /// One column of the elements.
    matrix(Vector const& v);
    /// The form `matrix m(s)`, for which a sparse matrix would otherwise be a number as well.
    template <class S, std::enable_if_t<std::is_same<S, sparse>::value, int> = 0>
    explicit matrix(S const& s) : matrix(s.operator matrix())
    {
    }
    matrix(data<double> const& b) : data<double>(b) {}
    matrix(data<double>&& b) noexcept : data<double>(static_cast<data<double>&&>(b)) {}
    matrix(matrix const&) = default;
    matrix(matrix&&) noexcept = default;
    ~matrix() = default;
    matrix& operator=(matrix const&) = default;
    matrix& operator=(matrix&&) noexcept = default;
    matrix& operator=(char const* s);
    /// 1 by 1.
    template <class S, detail::if_number<S> = 0> matrix& operator=(S x)
    {
        return *this = matrix(static_cast<double>(x));
    }

    /// The cell of a 1 by 1 object; `int` truncates toward zero. Refuse other shapes.
    operator double() const;
    operator int() const;

    matrix operator[](int j) const { return data<double>::operator[](j); }
    matrix operator[](Text const& name) const { return data<double>::operator[](name); }
    matrix operator[](char const* name) const { return data<double>::operator[](Text(name)); }
    matrix col(int j) const { return data<double>::col(j); }
    matrix row(int i) const { return data<double>::row(i); }
    matrix col(Vector const& idx) const { return data<double>::col(idx); }
    matrix row(Vector const& idx) const { return data<double>::row(idx); }
    matrix filter(Vector const& flags) const { return data<double>::filter(flags); }
    // Also for what becomes a matrix: a Vector, a number, a literal.
    using data<double>::set;
    using data<double>::setcol;
    using data<double>::setrow;
    using data<double>::operator|=;
    using data<double>::operator&=;
    void set(Vector const& r, Vector const& c, matrix const& b) { data<double>::set(r, c, b); }
    void setcol(Vector const& idx, matrix const& b) { data<double>::setcol(idx, b); }
    void setcol(int j, matrix const& b) { data<double>::setcol(j, b); }
    void setrow(Vector const& idx, matrix const& b) { data<double>::setrow(idx, b); }
    void setrow(int i, matrix const& b) { data<double>::setrow(i, b); }
    matrix& operator|=(matrix const& b)
    {
        data<double>::operator|=(b);
        return *this;
    }
    matrix& operator&=(matrix const& b)
    {
        data<double>::operator&=(b);
        return *this;
    }
    matrix sample_n(int n, int replace) const { return data<double>::sample_n(n, replace); }
    matrix sample_frac(double f, int replace) const
    {
        return data<double>::sample_frac(f, replace);
    }

    // In place, cell by cell; the object keeps its names. Refuse other shapes.
    matrix& operator+=(matrix const& b);
    matrix& operator-=(matrix const& b);
    matrix& operator*=(matrix const& b);
    matrix& operator/=(matrix const& b);
    matrix& operator+=(double s);
    matrix& operator-=(double s);
    matrix& operator*=(double s);
    matrix& operator/=(double s);

    // The C library's function of each name on every cell, in place; `sqr` is x * x, `minus` -x,
    // `log` the natural logarithm.
    void abs();
    void sqr();
    void sqrt();
    void minus();
    void sin();
    void cos();
    void tan();
    void sinh();
    void cosh();
    void tanh();
    void asin();
    void acos();
    void atan();
    void exp();
    void log();
    void log10();
    void ceil();
    void floor();
    void pow(double p);
    /// Integer power by repeated squaring.
    void pow(int n);
    /// Scales to unit sum: an object of one row along the row, any other column by column. A sum
    /// equal to 0 leaves its cells alone.
    void norm();

    // Whole object, sizes kept.
    void zeros();
    void ones();
    void eye();
    void rand();
    void randn();
    /// Names rows prefix + "R" + i and columns prefix + "C" + j; cell k, counted row by row, is k +
    /// start.
    void test(double start = 0, Text const& prefix = Text());

    /// A statistic of the user's own, called on each sample as a matrix of one column: every
    /// column, or the one row of an object of one row. The result is named "SUMMARISE".
    matrix summarise(double (*f)(matrix const&)) const;
    matrix summarise(double (*f)(matrix const&, double), double p) const;

    // Engines of `lineqns` (solve.h); the object, sized n by 1, receives the solution. Refuse sizes
    // that do not fit, and cells of P that number no row.
    void lineqns_Gauss(matrix A, matrix b);
    void lineqns_LU(matrix const& LU, matrix const& P, matrix const& b);
    void lineqns_QR(matrix const& Q, matrix const& R, matrix const& b);
    /// Modified Gram-Schmidt over the columns of a square object, in place; of another shape the
    /// first min(rows, cols) rows take part.
    void orthonorm();

    // The sweep operator (regression.h) on pivots first to last of a symmetric object, names kept.
    void linreg_sweep(int first, int last);
    void linreg_sweep_c(int first, int last, matrix const& cond, int ycol);

    /// A text dump inside an open stream: sizes, column names, then row name and cells of each row
    /// with six decimals, which is the precision that survives.
    void writebin(FILE* f) const;
    void readbin(FILE* f);
};

/// Transposed, names of both kinds exchanged. Stands here, since without it `~m` would turn to an
/// integer.
VARNOW_API matrix operator~(matrix const& a);

} // namespace varnow
