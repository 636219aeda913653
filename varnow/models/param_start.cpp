#include <varnow/models/param_start.h>

#include <varnow/containers/matrix_special.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace varnow {

namespace {

struct point
{
    double x, t, weight;
};
using points = std::vector<point>;

// The rows with finite numbers; false behind a refusal.
bool take_rows(matrix const& x, matrix const& t, char const* routine, points& rows)
{
    if (x.cols > 1 || t.cols > 1) {
        errormessage("MATRIX", routine, "oczekiwane wektory kolumnowe", "");
        return false;
    }
    if (x.rows != t.rows) {
        errormessage("MATRIX", routine, "niezgodne wymiary macierzy", "");
        return false;
    }
    for (int i = 0; i < x.rows && x.cols + t.cols == 2; ++i)
        if (std::isfinite(x.cell[i][0]) && std::isfinite(t.cell[i][0]))
            rows.push_back({x.cell[i][0], t.cell[i][0], 1.0});
    return true;
}

double weighted_mean(points const& rows, double point::*what)
{
    double total = 0.0, weight = 0.0;
    for (point const& p : rows) {
        total += p.*what * p.weight;
        weight += p.weight;
    }
    return weight > 0.0 ? total / weight : 0.0;
}

// Points of equal x become one; where more than `most` are left, neighbours too.
points grouped(points rows, std::size_t most)
{
    std::sort(rows.begin(), rows.end(), [](point a, point b) { return a.x < b.x; });
    auto const gather = [&](auto together) {
        points groups;
        for (point const& p : rows) {
            if (groups.empty() || !together(groups.back(), p)) {
                groups.push_back(p);
                continue;
            }
            point& g = groups.back();
            double const share = p.weight / (g.weight + p.weight);
            g.x += (p.x - g.x) * share;
            g.t += (p.t - g.t) * share;
            g.weight += p.weight;
        }
        return groups;
    };
    double const least = static_cast<double>(rows.size()) / static_cast<double>(most);
    points const distinct = gather([](point const& g, point const& p) { return g.x == p.x; });
    if (distinct.size() <= most) return distinct;
    rows = distinct;
    return gather([=](point const& g, point const&) { return g.weight < least; });
}

// The least-squares curve p1 tanh((x - centre) / width) + p4 of a given centre and width.
struct sigmoid
{
    double centre, log_width;
    double gain = -1.0; // what it takes off the sum of squares
    double p1 = 0.0, p4 = 0.0;
};

class curve_search
{
public:
    curve_search(points const& groups, int direction)
        : groups_(groups), direction_(direction), mean_(weighted_mean(groups, &point::t))
    {
        std::size_t const last = groups.size() - 1;
        spread_ = groups[last - last / 10].x - groups[last / 10].x;
        auto const t = std::minmax_element(groups.begin(), groups.end(),
                                           [](point a, point b) { return a.t < b.t; });
        most_p1_ = 50.0 * (t.second->t - t.first->t);
    }

    // Few distinct x have many curves that fit alike: then the one in the middle is kept.
    sigmoid best()
    {
        sigmoid found = {0.0, 0.0};
        auto const look_at = [&](double centre) {
            for (int k = 0; k < widths; ++k)
                improve(found, centre, std::log(narrowest * spread_) + 0.36 * outward(k, widths));
        };
        std::size_t const last = groups_.size() - 1;
        for (int k = 0; k <= centres; ++k)
            look_at(groups_[last * static_cast<std::size_t>(outward(k, centres + 1)) / centres].x);
        for (double beyond : {1.0, 2.0}) {
            look_at(groups_[0].x - beyond * spread_);
            look_at(groups_[last].x + beyond * spread_);
        }
        if (found.gain <= 0.0) return {0.0, 0.0, 0.0, 0.0, mean_};
        for (double step = 0.5; step > 1e-4;) {
            sigmoid const from = found;
            double const move = step * std::exp(from.log_width);
            for (int i = -1; i <= 1; ++i)
                for (int j = -1; j <= 1; ++j)
                    improve(found, from.centre + i * move, from.log_width + j * step);
            if (!(found.gain > from.gain * (1.0 + 1e-10))) step /= 2.0;
        }
        return found;
    }

private:
    static constexpr int widths = 21, centres = 24;
    static constexpr double narrowest = 0.02, widest = 100.0;

    // 0 to n - 1, n odd, from the middle on.
    static int outward(int k, int n) { return n / 2 + (k % 2 ? (k + 1) / 2 : -k / 2); }

    void improve(sigmoid& found, double centre, double log_width) const
    {
        double const width = std::exp(log_width);
        if (width < 0.1 * narrowest * spread_ || width > widest * spread_) return;
        double weight = 0.0, h = 0.0, hh = 0.0, ht = 0.0;
        for (point const& p : groups_) {
            double const y = std::tanh((p.x - centre) / width), wy = p.weight * y;
            weight += p.weight;
            h += wy;
            hh += wy * y;
            ht += wy * (p.t - mean_);
        }
        double const middle = h / weight, variation = hh - middle * h;
        if (!(variation > 1e-12 * weight) || ht * direction_ < 0.0) return;
        double const p1 = ht / variation, gain = p1 * ht;
        if (std::fabs(p1) > most_p1_) return;
        if (gain > found.gain * (1.0 + 1e-9))
            found = {centre, log_width, gain, p1, mean_ - p1 * middle};
    }

    points const& groups_;
    int direction_;
    double mean_, spread_;
    double most_p1_; // levels far beyond the targets would cancel all digits of the values
};

} // namespace

matrix param_start_B(matrix const& x, matrix const& t)
{
    points rows, sides[2];
    matrix p = zeros(2, 1);
    if (!take_rows(x, t, "matrix param_start_B(matrix,matrix)", rows) || rows.empty()) return p;
    for (point const& r : rows) sides[r.x != 0.0].push_back(r);
    for (int k : {0, 1})
        p.cell[k][0] = weighted_mean(sides[k].empty() ? rows : sides[k], &point::t);
    return p;
}

matrix param_start_C(matrix const& x, matrix const& t, int direction)
{
    constexpr std::size_t most_groups = 128;
    points rows;
    if (!take_rows(x, t, "matrix param_start_C(matrix,matrix,int)", rows)) return zeros(4, 1);
    points const groups = grouped(rows, most_groups);
    if (groups.size() < 2) return ~c(0.0, 1.0, 0.0, weighted_mean(rows, &point::t));
    sigmoid const s = curve_search(groups, (direction > 0) - (direction < 0)).best();
    double const width = std::exp(s.log_width);
    return ~c(s.p1, 1.0 / width, -s.centre / width, s.p4);
}

} // namespace varnow
