// The credit data that the examples read, as the tests of models want it.
#pragma once

#include <varnow/varnow.h>

namespace varnow::test {

struct credit_sample
{
    matrix X; // the 4040 applications without a gap in these columns, each column at mean 0 and
              // deviation 1
    matrix y; // 1 for a bad one
};

inline credit_sample standardised_credit()
{
    table all;
    all.readtxt(VARNOW_EXAMPLE_DATA "/credit.txt", 0, 0, 1, 0, ';');
    table const names =
        c("Seniority", "Time", "Age", "Expenses", "Income", "Assets", "Debt", "Amount", "Price");
    Vector complete = vones(all.rows);
    for (int j = 1; j <= names.cols; ++j) complete = complete && all[names(j)] != "";
    all = all.filter(complete);

    credit_sample s;
    s.X = all.select(names);
    matrix const centre = mean(s.X), spread = stdev(s.X);
    for (int i = 1; i <= s.X.rows; ++i)
        for (int j = 1; j <= s.X.cols; ++j) s.X(i, j) = (s.X(i, j) - centre(j)) / spread(j);
    s.y = matrix(all["Status"] == "bad");
    return s;
}

} // namespace varnow::test
