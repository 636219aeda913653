#include <varnow/analytics/pivot.h>

#include <varnow/analytics/factor.h>
#include <varnow/containers/ordering.h>
#include <varnow/core/parse.h>

#include <cmath>
#include <utility>
#include <vector>

namespace varnow {

namespace {

using detail::factor;
using detail::line;

bool refuse(char const* routine, char const* why)
{
    errormessage("TABLE", routine, why, "");
    return true;
}

template <class T> bool refused(char const* routine, data<T> const& x)
{
    if (x.cols > 1) return refuse(routine, "oczekiwana kolumna danych");
    return (x.rows < 1 || x.cols < 1) && refuse(routine, "puste dane");
}

// The levels of a column of numbers. Which of the two zeros is the level, and how a NaN divides the
// others, hangs on the order of the sort; otherwise any sort of the distinct numbers will do.
std::vector<double> sorted_levels(data<double> const& x, factor const& f)
{
    bool positive_zero = false, negative_zero = false, nan = false;
    for (int i = 0; i < x.rows; ++i) {
        double const v = x.cell[i][0];
        nan |= v != v;
        positive_zero |= v == 0 && !std::signbit(v);
        negative_zero |= v == 0 && std::signbit(v);
    }
    std::vector<double> r;
    if (!nan && !(positive_zero && negative_zero)) {
        for (int i : f.first) r.push_back(x.cell[i][0]);
        std::sort(r.begin(), r.end());
        return r;
    }
    data<double> all = x;
    sort(all);
    for (int i = 0; i < all.rows; ++i)
        if (i == 0 || !(all.cell[i][0] == all.cell[i - 1][0])) r.push_back(all.cell[i][0]);
    return r;
}

// A column as pivot counts it: its levels in order, the key that each counts by (two levels may
// come to the same number), and the key of every row, -1 for none.
struct variable
{
    std::vector<Text> level;
    std::vector<int> key;
    std::vector<int> row_key;
    int keys;
    Text name;
};

void take_levels(data<Text> const& x, variable& v)
{
    line<Text const> const cells = detail::cells_of<Text const>(x);
    factor f = detail::sorted_factor(cells);
    for (int k = 0; k < f.levels(); ++k) {
        v.level.push_back(cells[f.first[k]]);
        v.key.push_back(k);
    }
    v.keys = f.levels();
    v.row_key = std::move(f.code);
}

void take_levels(data<double> const& x, variable& v)
{
    factor f = detail::factor_of(detail::cells_of<double const>(x));
    // Levels as their texts tell them, and behind them the distinct numbers, to be looked up.
    std::vector<double> numbers = sorted_levels(x, f);
    int const n = static_cast<int>(numbers.size());
    for (double& level : numbers) {
        Text const written = TtoU<double, Text>(level);
        level = detail::parse_double(written.str, written.str + written.len, true);
        v.level.push_back(Text(level));
    }
    for (int i : f.first) numbers.push_back(x.cell[i][0]);
    std::vector<int> const key =
        detail::factor_of([&](int k) { return numbers[k]; }, n + f.levels()).code;
    v.key.assign(key.begin(), key.begin() + n);
    v.keys = *std::max_element(v.key.begin(), v.key.end()) + 1;
    v.row_key = std::move(f.code);
    for (int& k : v.row_key)
        if (k >= 0) k = key[n + k] < v.keys ? key[n + k] : -1;
}

template <class T> variable variable_of(data<T> const& x, char const* name)
{
    variable v;
    take_levels(x, v);
    v.name = x.cnames[0].len > 0 ? x.cnames[0] : Text(name);
    return v;
}

table crossed(std::vector<variable> const& variables)
{
    int const n = static_cast<int>(variables.size());
    int rows = 1;
    std::size_t keys = 1;
    for (variable const& v : variables) {
        rows = detail::checked_size(std::int64_t(rows) * static_cast<int>(v.level.size()));
        keys *= static_cast<std::size_t>(v.keys);
    }
    std::vector<int> counts(keys);
    for (std::size_t i = 0; i < variables[0].row_key.size(); ++i) {
        std::size_t at = 0;
        bool counted = true;
        for (variable const& v : variables) {
            counted = counted && v.row_key[i] >= 0;
            at = at * static_cast<std::size_t>(v.keys) + static_cast<std::size_t>(v.row_key[i]);
        }
        if (counted) ++counts[at];
    }

    table r(rows, n + 1);
    for (int j = 0; j < n; ++j) r.cnames[j] = variables[j].name;
    r.cnames[n] = "COUNT";
    std::vector<int> level(variables.size());
    for (int i = 0; i < rows; ++i) {
        std::size_t at = 0;
        for (int j = 0; j < n; ++j) {
            variable const& v = variables[j];
            r.cell[i][j] = v.level[level[j]];
            at = at * static_cast<std::size_t>(v.keys) + static_cast<std::size_t>(v.key[level[j]]);
        }
        r.cell[i][n] = itot(counts[at]);
        for (int j = n - 1; j >= 0 && ++level[j] == static_cast<int>(variables[j].level.size());
             --j)
            level[j] = 0;
    }
    return r;
}

double number(double x)
{
    return x;
}
double number(Text const& x)
{
    return ttod(x);
}

// The label of each interval, the one below the first break first.
std::vector<Text> labels_of(std::vector<double> const& breaks, bool closed_left)
{
    char const* const open = closed_left ? "[" : "(";
    char const* const close = closed_left ? ")" : "]";
    std::vector<Text> r;
    Text from = "-Inf";
    for (double b : breaks) {
        Text const to = dtots(b);
        r.push_back(open + from + "," + to + close);
        from = to;
    }
    r.push_back(open + from + ",Inf]");
    return r;
}

template <class T, class F>
table apply_to_levels(data<T> const& x, table const& index, bool no_f, F f)
{
    char const* const routine = "table apply(data,table,matrix f(matrix))";
    auto refuse = [routine](char const* why) {
        errormessage("TABLE", routine, why, "");
        return table();
    };
    if (x.cols != 1) return refuse("oczekiwana kolumna danych");
    if (x.rows < 1) return refuse("puste dane");
    if (index.cols != 1) return refuse("oczekiwana kolumna indeksujaca");
    if (index.rows != x.rows) return refuse("dlugosc indeksu niezgodna z dlugoscia danych");
    if (no_f) return refuse("brak funkcji");

    line<Text const> const keys = detail::cells_of<Text const>(index);
    line<T const> const cells = detail::cells_of<T const>(x);
    factor const levels = detail::sorted_factor(keys);
    detail::gathered const rows(levels);
    std::vector<double> const values = rows.values([&](int i) { return number(cells[i]); });
    table r(levels.levels(), 2);
    r.cnames[0] = index.cnames[0].len > 0 ? index.cnames[0] : Text("VAR");
    r.cnames[1] = x.cnames[0].len > 0 ? x.cnames[0] : Text("VALUE");
    matrix column;
    for (int k = 0; k < r.rows; ++k) {
        rows.put(values, k, column);
        r.cell[k][0] = keys[levels.first[k]];
        r.cell[k][1] = dtot(double(f(column)), 0);
    }
    return r;
}

} // namespace

template <class T> table levels(data<T> const& x)
{
    if (refused("table levels(data)", x)) return table();
    line<T const> const cells = detail::cells_of<T const>(x);
    table r;
    if constexpr (std::is_same<T, double>::value) {
        std::vector<double> const sorted = sorted_levels(x, detail::factor_of(cells));
        r.resize(static_cast<int>(sorted.size()), 1);
        for (int k = 0; k < r.rows; ++k) r.cell[k][0] = TtoU<double, Text>(sorted[k]);
    } else {
        factor const f = detail::sorted_factor(cells);
        r.resize(f.levels(), 1);
        for (int k = 0; k < r.rows; ++k) r.cell[k][0] = cells[f.first[k]];
    }
    r.cnames[0] = "LEVELS";
    return r;
}

template <class T> table pivot(data<T> const& x)
{
    if (refused("table pivot(data)", x)) return table();
    return crossed({variable_of(x, "VAR")});
}

template <class T> table pivot(data<T> const& x, data<T> const& y)
{
    auto refuse = [](char const* why) {
        errormessage("TABLE", "table pivot(data,data)", why, "");
        return table();
    };
    if (x.cols != 1) return refuse("pierwszy argument musi byc kolumna danych");
    if (y.cols != 1) return refuse("drugi argument musi byc kolumna danych");
    if (x.rows != y.rows) return refuse("niezgodne dlugosci danych");
    if (refused("table levels(data)", x)) return table();
    return crossed({variable_of(x, "VAR1"), variable_of(y, "VAR2")});
}

template <class T> table pivot(data<T> const& x, data<T> const& y, data<T> const& z)
{
    auto refuse = [](char const* why) {
        errormessage("TABLE", "table pivot(data,data,data)", why, "");
        return table();
    };
    if (x.cols != 1) return refuse("pierwszy argument musi byc kolumna danych");
    if (y.cols != 1) return refuse("drugi argument musi byc kolumna danych");
    if (z.cols != 1) return refuse("trzeci argument musi byc kolumna danych");
    if (x.rows != y.rows || x.rows != z.rows) return refuse("niezgodne dlugosci danych");
    if (refused("table levels(data)", x)) return table();
    return crossed({variable_of(x, "VAR1"), variable_of(y, "VAR2"), variable_of(z, "VAR3")});
}

template <class T> table cut(data<T> const& x, matrix const& breaks, int flag)
{
    char const* const routine = "table cut(data,matrix,int)";
    if (refused(routine, x)) return table();
    auto refuse = [routine](char const* why) {
        errormessage("TABLE", routine, why, "");
        return table();
    };
    if (breaks.rows != 1 && breaks.cols != 1)
        return refuse("oczekiwany wektor definiujacy przedzialy");
    if (breaks.rows < 1 || breaks.cols < 1)
        return refuse("potrzebna przynajmniej jedna granica przedzialow");

    line<double const> const given = detail::cells(breaks);
    std::vector<double> b;
    b.reserve(static_cast<std::size_t>(given.n));
    for (int k = 0; k < given.n; ++k) b.push_back(given[k]);
    std::vector<Text> const labels = labels_of(b, flag != 0);
    auto passed = [flag](double limit, double v) { return flag ? v >= limit : v > limit; };
    // Halving finds the first break that is not passed only where those before it all are.
    bool const ascending = std::adjacent_find(b.begin(), b.end(), [](double p, double q) {
                               return !(p <= q);
                           }) == b.end();
    auto interval = [&](double v) {
        if (ascending)
            return std::partition_point(b.begin(), b.end(),
                                        [&](double limit) { return passed(limit, v); }) -
                   b.begin();
        return std::find_if(b.begin(), b.end(), [&](double limit) { return !passed(limit, v); }) -
               b.begin();
    };

    line<T const> const cells = detail::cells_of<T const>(x);
    table r(x.rows, 1);
    copynames_r2r(x, r);
    r.cnames[0] = "CUT";
    for (int i = 0; i < x.rows; ++i) {
        double const v = number(cells[i]);
        std::ptrdiff_t const k = interval(v);
        // Neither above nor below the first break: one of the two is NaN.
        if (k > 0 || v == b[0] || v < b[0]) r.cell[i][0] = labels[k];
    }
    return r;
}

template <class T> table apply(data<T> const& x, table const& index, matrix (*f)(matrix const&))
{
    return apply_to_levels(x, index, f == nullptr, f);
}

template <class T>
table apply(data<T> const& x, table const& index, matrix (*f)(matrix const&, double), double p)
{
    return apply_to_levels(x, index, f == nullptr, [f, p](matrix const& m) { return f(m, p); });
}

#define INSTANCES(A)                                                                               \
    template table levels(A const&);                                                               \
    template table pivot(A const&);                                                                \
    template table pivot(A const&, A const&);                                                      \
    template table pivot(A const&, A const&, A const&);                                            \
    template table cut(A const&, matrix const&, int);                                              \
    template table apply(A const&, table const&, matrix (*)(matrix const&));                       \
    template table apply(A const&, table const&, matrix (*)(matrix const&, double), double);
INSTANCES(data<double>) INSTANCES(data<Text>)
#undef INSTANCES

} // namespace varnow
