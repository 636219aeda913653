// Internal: the minimisers over any objective. An objective f gives its value at a column of
// parameters by f(x), and by f.slope(x, i) its derivative by parameter i, counted from 1.
#pragma once

#include <varnow/containers/matrix_products.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/containers/ordering.h>
#include <varnow/numerics/minimise.h>

#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace varnow::detail {

/// True, with the refusal of the routine that the column is first given to, for what is not one
/// column.
bool not_a_column(matrix const& x, char const* routine, char const* why);

inline std::int64_t search_limit(matrix const& x)
{
    return std::int64_t(500) * x.rows;
}

/// True when max(abs(s)) <= tol: a NaN counts where it stands first only.
bool all_within(matrix const& s, double tol);
/// H for the next turn, from the step s and the change y of the gradient.
void update_inverse(matrix& H, matrix const& s, matrix const& y, EsMethod method);

template <class Objective>
bool quasi_newton(Objective const& f, matrix& x, double tol, EsMethod method)
{
    int const n = x.rows;
    if (n == 0 || not_a_column(x, "matrix operator -(matrix,matrix)", "niezgodne wymiary macierzy"))
        return false;
    constexpr int trials = 100;
    matrix g(n, 1), y(n, 1), s(n, 1), next = x, H = eye(n);
    for (int i = 0; i < n; ++i) g.cell[i][0] = f.slope(x, i + 1);
    for (std::int64_t turn = 0, limit = search_limit(x); turn < limit; ++turn) {
        matrix const p = mul(H, g);
        double const f0 = f(x);
        double f1, t = 1.0;
        int k = 1;
        do {
            for (int i = 0; i < n; ++i) next.cell[i][0] = x.cell[i][0] - t * p.cell[i][0];
            f1 = f(next);
            ++k;
            t /= 2;
        } while (!(f1 <= f0) && k < trials);
        for (int i = 0; i < n; ++i) s.cell[i][0] = next.cell[i][0] - x.cell[i][0];
        // A success in the very last trial counts as none.
        if (k == trials) return false;
        if (all_within(s, tol) && std::fabs(f1 - f0) <= tol) return true;
        for (int i = 0; i < n; ++i) {
            double const slope = f.slope(next, i + 1);
            y.cell[i][0] = slope - g.cell[i][0];
            g.cell[i][0] = slope;
        }
        update_inverse(H, s, y, method);
        for (int i = 0; i < n; ++i) x.cell[i][0] = next.cell[i][0];
    }
    return false;
}

/// n + 1 points and their values, the best one first.
class simplex
{
public:
    /// All points are copies of x.
    explicit simplex(matrix const& x);

    int const n;
    std::vector<matrix> point;
    std::vector<double> value;
    /// The mean of all points but the last.
    std::vector<double> centre;

    matrix& worst() { return point.back(); }
    /// Takes another last point.
    void replace(matrix& by, double its_value)
    {
        std::swap(worst(), by);
        value.back() = its_value;
    }
    void rank();
    /// True when all points and values are that close to the best.
    bool within(double tol) const;
    void find_centre();

private:
    std::vector<int> order_;
    std::vector<double> old_value_;
    std::vector<matrix> old_point_;
};

template <class Objective> bool simplex_search(Objective const& f, matrix& x, double tol)
{
    if (not_a_column(x, "setcol(Vector,matrix)",
                     "liczba kolumn danych do wstawienia niezgodna z dlugoscia indeksu"))
        return false;
    int const n = x.rows;
    simplex S(x);
    S.value[0] = f(x);
    for (int j = 0; j < n; ++j) {
        double& moved = S.point[j + 1].cell[j][0];
        moved = moved == 0 ? 0.00025 : 1.05 * moved;
        S.value[j + 1] = f(S.point[j + 1]);
    }
    S.rank();
    std::int64_t const limit = search_limit(x);
    std::int64_t count = n + 1;
    matrix reflected = x, other = x;
    while (count < limit && !S.within(tol)) {
        S.find_centre();
        for (int i = 0; i < n; ++i) reflected.cell[i][0] = 2 * S.centre[i] - S.worst().cell[i][0];
        double const fr = f(reflected);
        if (fr < S.value[n - 1]) {
            ++count;
            bool expanded = false;
            if (fr < S.value[0]) {
                ++count;
                for (int i = 0; i < n; ++i)
                    other.cell[i][0] = 2 * reflected.cell[i][0] - S.centre[i];
                double const fe = f(other);
                expanded = fe < S.value[0];
                if (expanded) S.replace(other, fe);
            }
            if (!expanded) S.replace(reflected, fr);
        } else {
            count += 2;
            matrix const& toward = fr < S.value[n] ? reflected : S.worst();
            for (int i = 0; i < n; ++i)
                other.cell[i][0] = 0.5 * S.centre[i] + 0.5 * toward.cell[i][0];
            double const fc = f(other);
            if (fc < S.value[n - 1])
                S.replace(other, fc);
            else {
                count += n;
                for (int j = 1; j <= n; ++j) {
                    for (int i = 0; i < n; ++i) {
                        double& moved = S.point[j].cell[i][0];
                        moved = (moved + S.point[0].cell[i][0]) / 2;
                    }
                    S.value[j] = f(S.point[j]);
                }
            }
        }
        S.rank();
    }
    for (int i = 0; i < n; ++i) x.cell[i][0] = S.point[0].cell[i][0];
    return count < limit;
}

template <class Objective>
void two_starts(Objective const& f, matrix& x, double tol, EsSpeed speed, EsMethod method)
{
    if (speed >= SpeedFastest) {
        simplex_search(f, x, tol);
        return;
    }
    auto search = [&](matrix& from) {
        simplex_search(f, from, tol);
        if (speed == SpeedSlow) quasi_newton(f, from, tol, method);
        return f(from);
    };
    matrix mine = x, zero = x;
    double const f1 = search(mine);
    zero.zeros();
    if (!compare(zero, x) && search(zero) < f1)
        x = std::move(zero);
    else
        x = std::move(mine);
    if (speed == SpeedMedium) quasi_newton(f, x, tol, method);
}

/// The gradient is needed.
inline bool descends(EsSpeed speed)
{
    return speed == SpeedSlow || speed == SpeedMedium;
}

} // namespace varnow::detail
