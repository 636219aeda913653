#include <varnow/containers/matrix_special.h>

#include <varnow/containers/cellwise.h>

#include <algorithm>
#include <climits>

namespace varnow {

namespace detail {

std::uint32_t random_state = 12345;

matrix listed(int count, std::initializer_list<double> values)
{
    int const n = std::clamp(count, 0, static_cast<int>(values.size()));
    matrix r(1, n);
    std::copy_n(values.begin(), n, r.cell[0]);
    return r;
}

} // namespace detail

namespace {

// One row of n cells: a, then each cell the last plus the step.
matrix progression(double a, double step, int n)
{
    matrix r(1, n);
    for (int j = 0; j < n; ++j, a += step) r.cell[0][j] = a;
    return r;
}

// The sine and the cosine value of one normal pair.
struct normal_pair
{
    double sine;
    double cosine;
};

normal_pair draw_normal()
{
    double const r = std::sqrt(-2 * std::log((detail::random_step() + 1.0) / 2147483649.0));
    double const angle = (detail::random_step() / 2147483647.0) * 6.283185307;
    return {r * std::sin(angle), r * std::cos(angle)};
}

} // namespace

void matrix::zeros()
{
    detail::set_cells(*this, [] { return 0.0; });
}

void matrix::ones()
{
    detail::set_cells(*this, [] { return 1.0; });
}

void matrix::eye()
{
    zeros();
    for (int i = 0; i < rows && i < cols; ++i) cell[i][i] = 1;
}

void matrix::rand()
{
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = detail::random_step() / 2147483647.0;
}

// The order in which the pairs are placed decides which cell gets which number.
void matrix::randn()
{
    int const h = rows / 2;
    for (int c = 0; c < cols; ++c)
        for (int i = 0; i < h; ++i) {
            normal_pair const p = draw_normal();
            cell[i][c] = p.sine;
            cell[rows - 1 - i][c] = p.cosine;
        }
    if (rows % 2 == 0) return;
    for (int j = 0; j < cols / 2; ++j) {
        normal_pair const p = draw_normal();
        cell[h][j] = p.sine;
        cell[h][cols - 1 - j] = p.cosine;
    }
    if (cols % 2 != 0) cell[h][cols / 2] = draw_normal().sine;
}

void matrix::test(double start, Text const& prefix)
{
    detail::number_names(*this, prefix);
    double k = 0;
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = ++k + start;
}

// clang-format off
#define SPECIAL(name)                                                                                  \
    matrix name(int r, int c) { matrix m(r, c); m.name(); return m; }                                  \
    matrix name(int n) { return name(n, n); }
SPECIAL(zeros) SPECIAL(ones) SPECIAL(eye) SPECIAL(rand) SPECIAL(randn)
#undef SPECIAL
    // clang-format on

    matrix linspace(double a, double b, int n)
{
    return progression(a, (b - a) / (n - 1.0), std::max(n, 0));
}

namespace {

// `span` is the distance in steps; a NaN or a count beyond an int is refused.
matrix stepped(double a, double step, double span, char const* routine)
{
    double const n = std::floor(span) + 1;
    if (!(n >= 1 && n <= INT_MAX)) {
        errormessage("MATRIX", routine, "niewlasciwe argumenty", "");
        return matrix();
    }
    return progression(a, step, static_cast<int>(n));
}

} // namespace

matrix seq(double a, double b)
{
    return stepped(a, b >= a ? 1 : -1, std::fabs(b - a), "matrix seq(double,double)");
}

matrix seq(double a, double b, double step)
{
    bool const leads_there = (b >= a && step > 0) || (a >= b && step < 0);
    return stepped(a, step, leads_there ? (b - a) / step : -1, "matrix seq(double,double,double)");
}

} // namespace varnow
