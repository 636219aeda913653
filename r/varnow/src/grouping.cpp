#include "carry.h"

#include <cmath>
#include <vector>

// The rows of each group, counted from 1; codes are the groups' numbers from 1 on.
// [[Rcpp::export]]
Rcpp::List grouping_groups(Rcpp::IntegerVector const& codes)
{
    std::vector<int> counts;
    for (int const code : codes) {
        if (code > static_cast<int>(counts.size())) counts.resize(code);
        ++counts[code - 1];
    }
    Rcpp::List r(counts.size());
    std::vector<int*> next(counts.size());
    for (std::size_t g = 0; g < counts.size(); ++g) {
        Rcpp::IntegerVector members = Rcpp::no_init(counts[g]);
        next[g] = members.begin();
        r[g] = members;
    }
    for (R_xlen_t i = 0; i < codes.size(); ++i) *next[codes[i] - 1]++ = static_cast<int>(i + 1);
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

// Frequencies of the combinations of one to three columns of whole numbers.
// [[Rcpp::export]]
Rcpp::List grouping_pivot(Rcpp::NumericMatrix const& codes)
{
    varnow::matrix const m = matrix_arg(codes);
    auto column = [&m](int j) { return varnow::matrix(m[j]); };
    return table_result(m.cols == 1   ? pivot(column(1))
                        : m.cols == 2 ? pivot(column(1), column(2))
                                      : pivot(column(1), column(2), column(3)));
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
