#include <varnow/analytics/grouping.h>

#include <varnow/analytics/factor.h>
#include <varnow/core/parse.h>
#include <varnow/core/textutils.h>

#include <memory>
#include <numeric>
#include <utility>
#include <vector>

namespace varnow {

namespace {

using detail::factor;

char const* const by_columns = "table* group_by(table,int,table)";

// Position of a key column, 0 behind a refusal.
int key_column(table const& t, Text const& name, char const* routine)
{
    int const j = t.find_col(name, 1);
    if (j < 1) errormessage("TABLE", routine, "nie znaleziono kolumny", name);
    // What the levels of a column without rows are refused with.
    if (j >= 1 && t.rows < 1) errormessage("TABLE", "table levels(data)", "puste dane", "");
    return t.rows < 1 ? 0 : j;
}

// The pairs of levels that occur, those of a varying fastest.
factor combined(factor const& a, factor const& b)
{
    auto pair = [&](int i) { return std::int64_t(b.code[i]) * a.levels() + a.code[i]; };
    factor f = detail::factor_of(pair, static_cast<int>(a.code.size()));
    std::vector<int> order(f.first.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](int k, int l) { return pair(f.first[k]) < pair(f.first[l]); });
    f.renumber(order);
    return f;
}

// The groups of t by the columns at the positions.
factor groups_of(table const& t, std::vector<int> const& columns)
{
    if (columns.empty()) {
        if (t.rows < 1 || t.cols < 1) return factor();
        return factor{std::vector<int>(t.rows), {0}};
    }
    auto column = [&t](int j) {
        return detail::sorted_factor(detail::column_of<Text const>(t, j - 1));
    };
    factor f = column(columns[0]);
    for (std::size_t k = 1; k < columns.size(); ++k) f = combined(f, column(columns[k]));
    return f;
}

// The positions of the key columns; false behind a refusal.
bool find_keys(table const& t, table const& names, std::vector<int>& columns)
{
    for (int k = 0; k < names.rows * names.cols; ++k) {
        columns.push_back(key_column(t, names.cell[0][k], by_columns));
        if (columns.back() < 1) return false;
    }
    return true;
}

table key_table(table const& t, factor const& groups, std::vector<int> const& columns)
{
    table keys(groups.levels(), static_cast<int>(columns.size()));
    for (int j = 0; j < keys.cols; ++j) {
        keys.cnames[j] = t.cnames[columns[j] - 1];
        for (int g = 0; g < keys.rows; ++g)
            keys.cell[g][j] = t.cell[groups.first[g]][columns[j] - 1];
    }
    return keys;
}

// Whether a row has a name.
bool named_rows(table const& t)
{
    bool named = false;
    detail::in_pieces(t.rows, [&](std::ptrdiff_t i, std::ptrdiff_t k) {
        named = named || !detail::all_empty(t.rnames + i, k);
    });
    return named;
}

// Calls f with the numbers of the rows of t in the order given. Since these stand far from each
// other, their pointers, cells and texts are brought near some steps ahead.
template <class F> void visit(table const& t, std::vector<int> const& rows, F f)
{
    constexpr std::size_t pointer_ahead = 32, cells_ahead = 20, texts_ahead = 10;
    std::size_t const n = rows.size();
    for (std::size_t k = 0; k < n; ++k) {
        if (k + pointer_ahead < n) __builtin_prefetch(t.cell + rows[k + pointer_ahead]);
        if (k + cells_ahead < n) {
            Text const* const cells = t.cell[rows[k + cells_ahead]];
            __builtin_prefetch(cells);
            __builtin_prefetch(cells + t.cols - 1);
        }
        if (k + texts_ahead < n) {
            Text const* const cells = t.cell[rows[k + texts_ahead]];
            for (int j = 0; j < t.cols; ++j) __builtin_prefetch(cells[j].str);
        }
        f(rows[k]);
    }
}

// The rows of each group as a table. One group is written after the other, so that its texts lie
// together.
std::unique_ptr<table[]> split(table const& t, factor const& groups)
{
    detail::gathered const places(groups);
    std::unique_ptr<table[]> r(new table[groups.first.size()]);
    bool const named = named_rows(t);
    table* group = r.get();
    int at = 0;
    visit(t, places.rows(), [&](int i) {
        if (at == group->rows) {
            int const g = groups.code[i];
            group = &r[g];
            group->resize(places.count(g), t.cols);
            detail::copy_texts_to_new(t.cnames, group->cnames, t.cols);
            at = 0;
        }
        detail::copy_cells(t.cell[i], t.cols, group->cell[at]);
        if (named) group->rnames[at] = t.rnames[i];
        ++at;
    });
    return r;
}

double number(Text const& x)
{
    return detail::parse_double(x.str, x.str + x.len, true);
}

// Adds the column of a formula, still empty, to the result and takes the name of its source out of
// the formula; false behind a refusal.
bool begin_formula(table& result, Text const& formula, table::statistic f, Text& column)
{
    auto refuse = [](char const* why, Text const& what) {
        errormessage("TABLE", "table summarise(table,Text,matrix f(matrix))", why, what);
        return false;
    };
    int const open = formula.firstpos('('), close = formula.firstpos(')'),
              equals = formula.firstpos('=');
    if (open < 1 || close < 1 || equals < 1 || open > close || open < equals)
        return refuse("nieprawidlowa formula", "");
    if (!f) return refuse("brak funkcji", formula);
    column = subtext(formula, open + 1, close - open - 1);
    result.newcol(part(formula, equals - 1));
    return true;
}

Text value_text(matrix const& value)
{
    return dtot(double(value), 0);
}

// Position of a formula's column, with the refusal of operator[].
int formula_column(table const& t, Text const& name)
{
    int const j = t.find_col(name, 1);
    if (j < 1) errormessage<Text>("_data_ operator [](Text)", "nie znaleziono kolumny", "");
    return j;
}

} // namespace

table* table::group_by(Text const& col, table& keys) const
{
    int const j = key_column(*this, col, "table* group_by(Text,table)");
    if (j < 1) {
        keys = table();
        return nullptr;
    }
    factor const groups = groups_of(*this, {j});
    std::unique_ptr<table[]> r = split(*this, groups);
    keys = key_table(*this, groups, {j});
    return r.release();
}

table* table::group_by(table const& names, table& keys) const
{
    std::vector<int> columns;
    if (names.rows > 1)
        errormessage("TABLE", by_columns, "pierwszy argument ma byc wektorem wierszowym", "");
    if (names.rows > 1 || !find_keys(*this, names, columns)) {
        keys = table();
        return nullptr;
    }
    factor const groups = groups_of(*this, columns);
    std::unique_ptr<table[]> r = split(*this, groups);
    keys = key_table(*this, groups, columns);
    return r.release();
}

// No group becomes a table: each column that a formula names is read once, from the first row to
// the last, and the numbers of a group then lie side by side.
table table::summarise(table const& names, Text const& f1, statistic g1, Text const& f2,
                       statistic g2, Text const& f3, statistic g3, Text const& f4, statistic g4,
                       Text const& f5, statistic g5, Text const& f6, statistic g6, Text const& f7,
                       statistic g7, Text const& f8, statistic g8, Text const& f9, statistic g9,
                       Text const& f10, statistic g10) const
{
    if (names.rows > 1) {
        errormessage("TABLE", "table summarise(table,Text,matrix f(matrix),...)",
                     "pierwszy argument ma byc wektorem wierszowym", "");
        return table();
    }
    std::vector<int> columns;
    if (!find_keys(*this, names, columns)) return table();
    factor const groups = groups_of(*this, columns);
    table result = key_table(*this, groups, columns);

    detail::gathered const places(groups);
    std::vector<std::vector<double>> numbers(static_cast<std::size_t>(cols));
    std::vector<int> const row_at = named_rows(*this) ? places.rows() : std::vector<int>();
    auto add = [&](Text const& formula, statistic f) {
        Text name;
        if (!begin_formula(result, formula, f, name) || result.rows < 1) return;
        int const j = formula_column(*this, name);
        if (j < 1) return;
        std::vector<double>& values = numbers[j - 1];
        if (values.empty()) {
            auto const column = detail::column_of<Text const>(*this, j - 1);
            values = places.values([&](int i) { return number(column[i]); });
        }
        matrix m;
        for (int g = 0; g < result.rows; ++g) {
            places.put(values, g, m);
            m.cnames[0] = name;
            for (int i = 0; !row_at.empty() && i < m.rows; ++i)
                m.rnames[i] = rnames[row_at[places.start(g) + i]];
            result.cell[g][result.cols - 1] = value_text(f(m));
        }
    };

    struct
    {
        Text const& formula;
        statistic f;
    } const steps[] = {{f1, g1}, {f2, g2}, {f3, g3}, {f4, g4}, {f5, g5},
                       {f6, g6}, {f7, g7}, {f8, g8}, {f9, g9}, {f10, g10}};
    for (auto const& step : steps)
        if (step.formula.len > 0) add(step.formula, step.f);
    return result;
}

void table::summarise_stp(table& result, table const* groups, Text const& formula, statistic g)
{
    Text name;
    if (!begin_formula(result, formula, g, name)) return;
    matrix m;
    for (int i = 0; i < result.rows; ++i) {
        table const& t = groups[i];
        int const j = formula_column(t, name);
        if (j < 1) return;
        m.resize(t.rows, 1);
        copynames_r2r(t, m);
        m.cnames[0] = name;
        for (int k = 0; k < t.rows; ++k) m.cell[k][0] = number(t.cell[k][j - 1]);
        result.cell[i][result.cols - 1] = value_text(g(m));
    }
}

} // namespace varnow
