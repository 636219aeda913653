#include <varnow/numerics/fitting.h>

#include <varnow/containers/storage.h>
#include <varnow/core/textutils.h>
#include <varnow/numerics/minimise_engine.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <omp.h>

namespace varnow {

namespace {

// The values of the first row when there are fewer rows than columns, else of the first column.
// They are read where they stand: to find out whether they lie end to end costs as much.
class values
{
public:
    explicit values(matrix const& x)
        : n(x.rows == 0 || x.cols == 0 ? 0
            : x.rows < x.cols          ? x.cols
                                       : x.rows),
          row_(x.cell),
          along_(x.rows < x.cols)
    {
    }
    double operator[](int i) const { return along_ ? row_[0][i] : row_[i][0]; }

    int const n;

private:
    double const* const* const row_;
    bool const along_;
};

// The forms of a model: its type and that of its derivative, both also as a message names them, and
// the observations as it takes them, obs[i].
struct row_form
{
    using model = double (*)(matrix&, matrix&);
    using derivative = double (*)(matrix&, matrix&, int);
    static constexpr char const* model_text = "double (*)(matrix,matrix)";
    static constexpr char const* derivative_text = "double (*)(matrix,matrix,int)";

    static bool readable(matrix const&) { return true; }

    class observations
    {
    public:
        explicit observations(matrix const& X) : X_(X) {}
        // One row serves them all.
        matrix& operator[](int i)
        {
            if (row_.rows != 1 || row_.cols != X_.cols) {
                row_ = matrix(1, X_.cols);
                copynames_c2c(X_, row_);
            }
            detail::copy_texts(X_.rnames + i, row_.rnames, 1);
            detail::copy_cells(X_.cell[i], X_.cols, row_.cell[0]);
            return row_;
        }

    private:
        matrix const& X_;
        matrix row_;
    };
};

struct scalar_form
{
    using model = double (*)(double, matrix&);
    using derivative = double (*)(double, matrix&, int);
    static constexpr char const* model_text = "double (*)(double,matrix)";
    static constexpr char const* derivative_text = "double (*)(double,matrix,int)";

    static bool readable(matrix const& X) { return values(X).n >= X.rows; }

    using observations = values;
};

// Refuses for `why`, if there is one; _f_ and _df_ in the routine's text stand for the pointers.
template <class Form> bool refused(char const* why, char const* routine)
{
    if (why)
        errormessage(
            "MATRIX",
            replace(replace(routine, "_df_", Form::derivative_text), "_f_", Form::model_text), why,
            "");
    return why;
}
char const* absent(bool callable)
{
    return callable ? nullptr : "brak funkcji";
}
char const* unequal(bool fits_together)
{
    return fits_together ? nullptr : "niezgodne wymiary macierzy";
}

// Adds up K numbers per observation: add(i, x, sums) for each x = obs[i]. A thread takes one block
// of consecutive observations, the first threads one more if need be. What the model throws comes
// out of the call.
template <std::size_t K, class Form, class Add>
std::array<double, K> sums_over(matrix const& X, Add const& add)
{
    std::array<double, K> total{};
    std::exception_ptr thrown;
#pragma omp parallel num_threads(4)
    {
        try {
            int const threads = omp_get_num_threads(), t = omp_get_thread_num();
            int const q = X.rows / threads, more = X.rows % threads;
            int const first = t * q + std::min(t, more), behind = first + q + (t < more);
            std::array<double, K> own{};
            typename Form::observations obs(X);
            for (int i = first; i < behind; ++i) add(i, obs[i], own);
            if constexpr (K == 1) {
#pragma omp atomic
                total[0] += own[0];
            } else {
#pragma omp critical
                for (std::size_t k = 0; k < K; ++k) total[k] += own[k];
            }
        } catch (...) {
#pragma omp critical
            thrown = std::current_exception();
        }
    }
    if (thrown) std::rethrow_exception(thrown);
    return total;
}

double log_likelihood(double p, double y)
{
    constexpr double penalty = -100.0;
    if (p > 0 && p < 1) return y * std::log(p) + (1 - y) * std::log(1 - p);
    if (p <= 0) return p == 0 && y == 0 ? 0.0 : penalty;
    if (p >= 1) return p == 1 && y == 1 ? 0.0 : penalty;
    return 0.0;
}

// Observations and a model, whose error is the objective of the minimisers.
template <class Form> struct fit
{
    matrix const& X;
    matrix const& y;
    typename Form::model f;
    typename Form::derivative df;
    EsType type;

    bool lacks_model(char const* routine) const { return refused<Form>(absent(f), routine); }
    bool lacks_derivative(char const* routine) const
    {
        return refused<Form>(absent(f && df), routine);
    }

    double operator()(matrix& par) const
    {
        if (!measured() || mismatched("double err_fit(matrix,matrix,_f_,matrix,EsType)")) return 0;
        values const target(y);
        if (type == EsQuadratic) {
            auto const sum = sums_over<1, Form>(X, [&](int i, auto&& x, auto& own) {
                double const d = target[i] - f(x, par);
                own[0] += d * d;
            });
            return std::sqrt(sum[0] / X.rows);
        }
        auto const sum = sums_over<1, Form>(
            X, [&](int i, auto&& x, auto& own) { own[0] += log_likelihood(f(x, par), target[i]); });
        return -sum[0];
    }

    double slope(matrix& par, int j) const
    {
        if (!measured() || mismatched("double derr_fit(matrix,matrix,_f_,_df_,matrix,int,EsType)"))
            return 0;
        values const target(y);
        if (type == EsQuadratic) {
            auto const sum = sums_over<2, Form>(X, [&](int i, auto&& x, auto& own) {
                double const d = f(x, par) - target[i];
                own[0] += d * df(x, par, j);
                own[1] += d * d;
            });
            return sum[0] / std::sqrt(X.rows * sum[1]);
        }
        auto const sum = sums_over<1, Form>(X, [&](int i, auto&& x, auto& own) {
            double const p = f(x, par);
            if (p > 0 && p < 1) own[0] += (target[i] - p) * df(x, par, j) / ((1 - p) * p);
        });
        return -sum[0];
    }

private:
    bool measured() const { return type == EsQuadratic || type == EsLikelihood; }
    bool mismatched(char const* routine) const
    {
        return refused<Form>(unequal(Form::readable(X) && values(y).n >= X.rows), routine);
    }
};

template <class Form> matrix model_values(matrix const& X, typename Form::model f, matrix& par)
{
    char const* const routine = "matrix fun_fit(matrix,_f_,matrix)";
    if (refused<Form>(absent(f), routine) || refused<Form>(unequal(Form::readable(X)), routine))
        return matrix();
    matrix r(X.rows, 1);
    typename Form::observations obs(X);
    for (int i = 0; i < X.rows; ++i) r.cell[i][0] = f(obs[i], par);
    return r;
}

template <class Form> double error(fit<Form> const& it, matrix& par)
{
    if (it.lacks_model("double err_fit(matrix,matrix,_f_,matrix,EsType)")) return 0;
    return it(par);
}

template <class Form> double error_slope(fit<Form> const& it, matrix& par, int j)
{
    if (it.lacks_derivative("double derr_fit(matrix,matrix,_f_,_df_,matrix,int,EsType)")) return 0;
    return it.slope(par, j);
}

template <class Form> bool descend(fit<Form> const& it, matrix& par, double tol, EsMethod method)
{
    if (it.lacks_derivative("bool fitu(matrix,matrix,_f_,_df_,matrix,double,EsType,EsMethod)"))
        return false;
    return detail::quasi_newton(it, par, tol, method);
}

template <class Form> bool search(fit<Form> const& it, matrix& par, double tol)
{
    if (it.lacks_model("bool fits(matrix,matrix,_f_,matrix,double,EsType)")) return false;
    return detail::simplex_search(it, par, tol);
}

template <class Form>
void search_and_descend(fit<Form> const& it, matrix& par, double tol, EsSpeed speed,
                        EsMethod method)
{
    char const* const routine =
        "fitx(matrix,matrix,_f_,_df_,matrix,double,EsSpeed,EsType,EsMethod)";
    if (detail::descends(speed) ? it.lacks_derivative(routine) : it.lacks_model(routine)) return;
    detail::two_starts(it, par, tol, speed, method);
}

} // namespace

// clang-format off
#define FIT(Form, Obs)                                                                                 \
    matrix fun_fit(matrix const& X, double (*f)(Obs, matrix&), matrix& par)                            \
    { return model_values<Form>(X, f, par); }                                                          \
    double err_fit(matrix const& X, matrix const& y, double (*f)(Obs, matrix&), matrix& par,           \
                   EsType type)                                                                        \
    { return error(fit<Form>{X, y, f, nullptr, type}, par); }                                          \
    double derr_fit(matrix const& X, matrix const& y, double (*f)(Obs, matrix&),                       \
                    double (*df)(Obs, matrix&, int), matrix& par, int j, EsType type)                  \
    { return error_slope(fit<Form>{X, y, f, df, type}, par, j); }                                      \
    bool fitu(matrix const& X, matrix const& y, double (*f)(Obs, matrix&),                             \
              double (*df)(Obs, matrix&, int), matrix& par, double tol, EsType type, EsMethod method)  \
    { return descend(fit<Form>{X, y, f, df, type}, par, tol, method); }                                \
    bool fits(matrix const& X, matrix const& y, double (*f)(Obs, matrix&), matrix& par, double tol,    \
              EsType type)                                                                             \
    { return search(fit<Form>{X, y, f, nullptr, type}, par, tol); }                                    \
    void fitx(matrix const& X, matrix const& y, double (*f)(Obs, matrix&),                             \
              double (*df)(Obs, matrix&, int), matrix& par, double tol, EsSpeed speed, EsType type,    \
              EsMethod method)                                                                         \
    { search_and_descend(fit<Form>{X, y, f, df, type}, par, tol, speed, method); }
FIT(row_form, matrix&)
FIT(scalar_form, double)
#undef FIT
// clang-format on

} // namespace varnow
