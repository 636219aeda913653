#include <varnow/numerics/univariate.h>

#include <varnow/core/messages.h>
#include <varnow/numerics/brent.h>
#include <varnow/numerics/root_engine.h>

#include <cmath>
#include <limits>
#include <utility>

namespace varnow {

namespace {

using function = double (*)(double);

template <class P> bool missing(P const* pointer, char const* routine)
{
    if (pointer) return false;
    errormessage("FUNCTION", routine, "brak wskaznika", "");
    return true;
}
bool missing(function f, char const* routine)
{
    if (f) return false;
    errormessage("FUNCTION", routine, "brak funkcji", "");
    return true;
}

double const no_result = std::numeric_limits<double>::quiet_NaN();

// The closed rule of nine points h apart, given twice h; 4 / 14175 of 989, 5888, -928, ... to the
// digits with which the results are defined.
double nine_points(double h2, double const* F)
{
    constexpr double w0 = 0.2790828924162, w1 = 1.66151675485, w2 = -0.2618694885362,
                     w3 = 2.961834215168, w4 = -1.281128747795;
    return h2 / 2 *
           (w0 * (F[0] + F[8]) + w1 * (F[1] + F[7]) + w2 * (F[2] + F[6]) + w3 * (F[3] + F[5]) +
            w4 * F[4]);
}

double refine(function f, double a, double b, double tol, int level, double const* F, double Qprev)
{
    constexpr int deepest = 11;
    double const h = (b - a) * 0.125;
    double L[9], R[9];
    for (int k = 0; k <= 4; ++k) {
        L[2 * k] = F[k];
        R[2 * k] = F[4 + k];
    }
    double x = a + h / 2;
    for (double* half : {L, R})
        for (int k = 1; k < 9; k += 2, x += h) half[k] = f(x);
    double const Q1 = nine_points(h, L), Q2 = nine_points(h, R), Q = Q1 + Q2;
    if (!(std::fabs(Q - Qprev) > std::fabs(Q) * tol && level < deepest)) return Q;
    double const m = (a + b) * 0.5;
    double const left = refine(f, a, m, tol / 2, level + 1, L, Q1);
    return left + refine(f, m, b, tol / 2, level + 1, R, Q2);
}

} // namespace

double integral(double (*f)(double), double a, double b, double tol)
{
    if (missing(f, "double integral(double (*)(double),double,double,double)")) return no_result;
    double const h = (b - a) * 0.125;
    double F[9];
    double x = a;
    for (int k = 0; k < 9; ++k, x += h) F[k] = f(x);
    return refine(f, a, b, tol, 1, F, 1e30);
}

double quad8stp(double (*f)(double), double a, double b, double tol, int level, double* F,
                double Qprev)
{
    char const* const routine =
        "double quad8stp(double (*)(double),double,double,double,int,double *,double)";
    if (missing(f, routine) || missing(F, routine)) return no_result;
    return refine(f, a, b, tol, level, F, Qprev);
}

double derivative(double (*f)(double), double x, double tol)
{
    if (missing(f, "double derivative(double (*)(double),double,double)")) return no_result;
    int flag = 1;
    return rombergdiff(f, x, tol, 0.001, 10, flag);
}

namespace {

double central_difference(function f, double x, double s)
{
    double const above = f(x + s);
    return (above - f(x - s)) / (s + s);
}

// One table of extrapolations from the step s on, v being the last of them. True when it ended the
// search: the last column moved by less than tol, or the flag was 0 from the outset.
bool romberg_pass(function f, double x, double tol, double s, int& flag, double& v)
{
    constexpr int rows = 6;
    double T[rows + 1];
    T[0] = central_difference(f, x, s);
    for (int j = 0; j < rows; ++j) {
        s *= 0.5;
        T[j + 1] = central_difference(f, x, s);
        double m = 1.0;
        for (int k = j; k >= 0; --k) {
            m *= 4.0;
            v = T[k + 1] + (T[k + 1] - T[k]) / (m - 1.0);
            if (k == 0 && std::fabs(v - T[0]) < tol) flag = 0;
            T[k] = v;
            if (flag == 0) return true;
        }
    }
    return false;
}

} // namespace

double rombergdiff(double (*f)(double), double x, double tol, double h, int maxit, int& flag)
{
    if (missing(f, "double rombergdiff(double (*)(double),double,double,double,int,int)"))
        return no_result;
    double v = 0.0;
    long long pass = 1;
    for (double step = h; !romberg_pass(f, x, tol, step, flag, v) && ++pass <= maxit;) step *= 0.5;
    // Also after a value that settled in the last pass.
    if (pass >= maxit) flag = 1;
    return v;
}

double fmin(double (*f)(double), double a, double b, double tol)
{
    if (missing(f, "double fmin(double (*)(double),double,double,double)")) return no_result;
    int flag;
    return fminops(f, a, b, tol, 500, flag);
}

double fminops(double (*f)(double), double a, double b, double tol, int maxit, int& flag)
{
    flag = 1;
    if (missing(f, "double fminops(double (*)(double),double,double,double,int,int)"))
        return no_result;
    double least;
    return detail::brent_minimum(f, a, b, tol, maxit, flag, least);
}

double fzero(double (*f)(double), double x, double tol)
{
    if (missing(f, "double fzero(double (*)(double),double,double)")) return no_result;
    double dx = x != 0 ? x / 20 : 0.05;
    double a = x - dx, fa = f(a);
    double b = x + dx, fb = f(b);
    while ((fa > 0) == (fb > 0)) {
        dx = 2 * dx;
        a = x - dx, fa = f(a);
        if ((fa > 0) != (fb > 0)) break;
        b = x + dx, fb = f(b);
    }
    return detail::close_in(f, a, fa, b, fb, tol);
}

} // namespace varnow
