#include "carry.h"

#include <cmath>
#include <memory>

// The rows of each group, counted from 1, in the library's order of groups. Keys are texts.
// [[Rcpp::export]]
Rcpp::List grouping_groups(Rcpp::List const& keys, int rows)
{
    // Keys go by their numbers, since names are found without regard to case.
    varnow::table t = table_arg(keys);
    t.resizec(rows, t.cols + 1);
    varnow::table names(1, t.cols - 1);
    for (int j = 0; j < t.cols; ++j) t.cnames[j] = varnow::itot(j);
    for (int j = 0; j < names.cols; ++j) names.cell[0][j] = t.cnames[j];
    for (int i = 0; i < t.rows; ++i) t.cell[i][t.cols - 1] = varnow::itot(i + 1);
    varnow::table found;
    std::unique_ptr<varnow::table[]> const groups(t.group_by(names, found));
    Rcpp::List r(found.rows);
    for (int g = 0; g < found.rows; ++g) {
        Rcpp::IntegerVector members(groups[g].rows);
        for (int i = 0; i < groups[g].rows; ++i)
            members[i] = varnow::ttoi(groups[g].cell[i][t.cols - 1]);
        r[g] = members;
    }
    return r;
}

// A statistic of the numbers of each group.
// [[Rcpp::export]]
Rcpp::NumericVector grouping_statistic(Rcpp::NumericVector const& x, Rcpp::List const& groups,
                                       std::string const& name, bool drop)
{
    statistic const f = statistic_named(name);
    Rcpp::NumericVector r(groups.size());
    for (R_xlen_t g = 0; g < groups.size(); ++g) {
        Rcpp::IntegerVector const members(groups[g]);
        varnow::matrix column(static_cast<int>(members.size()), 1);
        int n = 0;
        for (int const member : members)
            if (!drop || !std::isnan(x[member - 1])) column.cell[n++][0] = x[member - 1];
        column.resizec(n, 1);
        r[g] = f(column).cell[0][0];
    }
    return r;
}

// The codes of the level columns, which count from 1 with 0 for a missing one, and the counts.
// [[Rcpp::export]]
Rcpp::List grouping_pivot(Rcpp::List const& columns)
{
    varnow::table const t = table_arg(columns);
    varnow::table const r =
        t.cols == 1   ? pivot(varnow::table(t[1]))
        : t.cols == 2 ? pivot(varnow::table(t[1]), varnow::table(t[2]))
                      : pivot(varnow::table(t[1]), varnow::table(t[2]), varnow::table(t[3]));
    return table_result(r);
}

// [[Rcpp::export]]
Rcpp::CharacterVector grouping_levels(Rcpp::List const& column)
{
    return table_result(levels(table_arg(column)))[0];
}

// [[Rcpp::export]]
Rcpp::CharacterVector grouping_cut(Rcpp::NumericMatrix const& x, Rcpp::NumericVector const& breaks,
                                   int closed_left)
{
    return table_result(cut(matrix_arg(x), varnow::cvector(breaks), closed_left))[0];
}
