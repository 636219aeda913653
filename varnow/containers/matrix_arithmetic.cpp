#include <varnow/containers/matrix_arithmetic.h>

#include <varnow/containers/cellwise.h>
#include <varnow/containers/exponential.h>
#include <varnow/containers/slicing.h>

#include <new>
#include <vector>

namespace varnow {

using detail::change;
using detail::map;
using detail::zip;

// The sum is the container's: it joins texts too, and its refusals speak of objects.

template <class T> data<T>& data<T>::operator+=(data const& b)
{
    if (!detail::same_shape(*this, b))
        errormessage<T>("operator +=(_data_)", "niezgodne wymiary obiektow", "");
    else
        detail::set_cells(
            *this, [](T const& x, T const& y) { return x + y; }, *this, b);
    return *this;
}

template <class A, detail::if_plain<A>> A operator+(A const& a, A const& b)
{
    using T = typename A::cell_type;
    if (!detail::same_shape(a, b)) {
        errormessage<T>("_data_ operator +(_data_,_data_)", "niezgodne wymiary obiektow", "");
        return A();
    }
    A r = detail::like(a);
    detail::set_cells(
        r, [](T const& x, T const& y) { return x + y; }, a, b);
    return r;
}

template data<double>& data<double>::operator+=(data<double> const&);
template data<Text>& data<Text>::operator+=(data<Text> const&);
template data<double> operator+(data<double> const&, data<double> const&);
template data<Text> operator+(data<Text> const&, data<Text> const&);

matrix operator+(matrix const& a, matrix const& b)
{
    return operator+<data<double>>(a, b);
}
matrix& matrix::operator+=(matrix const& b)
{
    data<double>::operator+=(b);
    return *this;
}

// clang-format off
#define WITH_MATRIX(op)                                                                                \
    matrix operator op(matrix const& a, matrix const& b)                                               \
    { return zip(a, b, "matrix operator " #op "(matrix,matrix)",                                       \
                 [](double x, double y) { return x op y; }); }                                         \
    matrix& matrix::operator op##=(matrix const& b)                                                    \
    { return change(*this, b, "operator " #op "=(matrix)",                                             \
                    [](double x, double y) { return x op y; }); }
WITH_MATRIX(-) WITH_MATRIX(*) WITH_MATRIX(/)
#undef WITH_MATRIX

#define WITH_NUMBER(op)                                                                                \
    matrix operator op(matrix const& a, double b) { return map(a, [b](double x) { return x op b; }); } \
    matrix operator op(double a, matrix const& b) { return map(b, [a](double x) { return a op x; }); } \
    matrix& matrix::operator op##=(double s)                                                           \
    { change(*this, [s](double x) { return x op s; }); return *this; }
WITH_NUMBER(+) WITH_NUMBER(-) WITH_NUMBER(*) WITH_NUMBER(/)
#undef WITH_NUMBER

// One comparison decides, so that a NaN on either side gives the second operand to max and the
// first to min.
#define EXTREME(name, value)                                                                           \
    matrix name(matrix const& a, matrix const& b)                                                      \
    { return zip(a, b, "matrix " #name "(matrix,matrix)",                                              \
                 [](double x, double y) { return value; }); }                                          \
    matrix name(matrix const& a, double y) { return map(a, [y](double x) { return value; }); }         \
    matrix name(double x, matrix const& b) { return map(b, [x](double y) { return value; }); }
EXTREME(max, x >= y ? x : y) EXTREME(min, x >= y ? y : x)
#undef EXTREME

#define COMPARE(op)                                                                                    \
    matrix operator op(matrix const& a, matrix const& b)                                               \
    { return zip(a, b, "matrix operator " #op "(matrix,matrix)",                                       \
                 [](double x, double y) { return x op y ? 1.0 : 0.0; }); }
COMPARE(==) COMPARE(!=) COMPARE(<) COMPARE(<=) COMPARE(>) COMPARE(>=)
#undef COMPARE

namespace {

// Not 0 after truncation to an integer; NaN counts as one.
bool truth(double x) { return !(x > -1 && x < 1); }

} // namespace

#define LOGIC(op)                                                                                      \
    matrix operator op(matrix const& a, matrix const& b)                                               \
    { return zip(a, b, "matrix operator " #op "(matrix,matrix)",                                       \
                 [](double x, double y) { return truth(x) op truth(y) ? 1.0 : 0.0; }); }
LOGIC(&&) LOGIC(||)
#undef LOGIC
matrix operator!(matrix const& a) { return map(a, [](double x) { return truth(x) ? 0.0 : 1.0; }); }

// The member changes the object, the free function a copy.
#define FUNCTION(name, value)                                                                          \
    void matrix::name() { change(*this, [](double x) { return value; }); }                             \
    matrix name(matrix const& a) { return map(a, [](double x) { return value; }); }
FUNCTION(abs, std::fabs(x)) FUNCTION(sqr, x * x)          FUNCTION(sqrt, std::sqrt(x))
FUNCTION(sin, std::sin(x))  FUNCTION(cos, std::cos(x))    FUNCTION(tan, std::tan(x))
FUNCTION(sinh, std::sinh(x)) FUNCTION(cosh, std::cosh(x)) FUNCTION(tanh, std::tanh(x))
FUNCTION(asin, std::asin(x)) FUNCTION(acos, std::acos(x)) FUNCTION(atan, std::atan(x))
FUNCTION(log, std::log(x))    FUNCTION(log10, std::log10(x))
FUNCTION(ceil, std::ceil(x)) FUNCTION(floor, std::floor(x))
#undef FUNCTION
void matrix::exp() { change(*this, detail::exponential()); }
matrix exp(matrix const& a) { return map(a, detail::exponential()); }

#define POWER(P, value)                                                                                \
    void matrix::pow(P p) { change(*this, [p](double x) { return value; }); }                          \
    matrix pow(matrix const& a, P p) { return map(a, [p](double x) { return value; }); }
POWER(double, std::pow(x, p)) POWER(int, powi(x, p))
#undef POWER
    // clang-format on

    void matrix::minus()
{
    change(*this, [](double x) { return -x; });
}
matrix operator-(matrix const& a)
{
    return map(a, [](double x) { return -x; });
}

matrix forall(matrix const& a, double (*f)(double))
{
    return map(a, f);
}
matrix forall(matrix const& a, double (*f)(double, double), double x)
{
    return map(a, [f, x](double y) { return f(y, x); });
}

void matrix::norm()
{
    // sums[j] is what column j is divided by; in an object of one row all share one sum.
    std::vector<double> sums(static_cast<std::size_t>(cols), 0.0);
    if (rows == 1) {
        double sum = 0;
        for (int j = 0; j < cols; ++j) sum += cell[0][j];
        std::fill(sums.begin(), sums.end(), sum);
    } else {
        for (int i = 0; i < rows; ++i)
            for (int j = 0; j < cols; ++j) sums[static_cast<std::size_t>(j)] += cell[i][j];
    }
    // Division by 1 changes no value.
    std::replace(sums.begin(), sums.end(), 0.0, 1.0);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] /= sums[static_cast<std::size_t>(j)];
}

matrix norm(matrix const& a)
{
    matrix r = a;
    r.norm();
    return r;
}

bool any(matrix const& a)
{
    return detail::some_cell(a, [](double x) { return x != 0; });
}

bool all(matrix const& a)
{
    return !detail::some_cell(a, [](double x) { return x == 0; });
}

bool isempty(matrix const& a)
{
    return a.rows == 0 || a.cols == 0;
}

bool issqr(matrix const& a)
{
    return a.rows == a.cols;
}

bool issym(matrix const& a)
{
    return detail::symmetric(a);
}

namespace {

// What f makes of the cells of a vector, in their order.
template <class F> Vector integers(matrix const& a, char const* routine, F const& f)
{
    if (a.rows > 1 && a.cols > 1) {
        errormessage("MATRIX", routine, "oczekiwany wektor wierszowy lub kolumnowy", "");
        return Vector();
    }
    Vector r(a.rows * a.cols);
    for (int k = 0; k < r.n; ++k) r.v[k] = f(a.rows == 1 ? a.cell[0][k] : a.cell[k][0]);
    return r;
}

} // namespace

Vector as_Vector(matrix const& a)
{
    return integers(a, "Vector as_Vector(matrix)", detail::truncated);
}

Vector find(matrix const& a)
{
    return find(integers(a, "Vector find(matrix)", [](double x) { return x != 0; }));
}

matrix vect(matrix const& a)
{
    return detail::stacked(a);
}

} // namespace varnow
