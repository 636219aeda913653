// Descriptive statistics of the columns of a matrix.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/vector.h>

namespace varnow {

// One rule of orientation and one of names hold for every statistic S from `sum` to `quantile`, so
// that results can be bound together into a labelled table. An object of exactly one row is one
// sample: the result is 1 by 1, its row bears the row's name and its column the name S. Any other
// object, also one without rows, holds a sample in each column: the result is 1 by cols, its row
// bears the name S and its columns keep theirs. Sums run from the first value to the last. A NaN
// in a sample makes the result NaN where nothing else is said.

/// "SUM"; 0 for no values.
VARNOW_API matrix sum(matrix const& m);
/// "SUMSQR", the sum of squares; 0 for no values.
VARNOW_API matrix sumsqr(matrix const& m);
/// "PROD"; 1 for no values.
VARNOW_API matrix prod(matrix const& m);
/// "MEAN"; NaN for no values.
VARNOW_API matrix mean(matrix const& m);
/// "VAR", in two passes, divided by n - 1; NaN for fewer than two values.
VARNOW_API matrix var(matrix const& m);
/// "STDEV", the square root of `var`.
VARNOW_API matrix stdev(matrix const& m);
/// "COUNT", the number of values that are not NaN.
VARNOW_API matrix count(matrix const& m);
/// "MIN", "MAX": the first value, replaced by each smaller (larger) one; NaN for no values. A NaN
/// that stands first stays; later ones are passed over.
VARNOW_API matrix(min)(matrix const& m);
VARNOW_API matrix(max)(matrix const& m);
/// "MODE", the most frequent value, of several the smallest; 0 for no values. Every NaN stands for
/// itself, where `sort` puts it.
VARNOW_API matrix mode(matrix const& m);
/// "MEDIAN", the quantile at 0.5.
VARNOW_API matrix median(matrix const& m);
/// "QUANTILE_" followed by p with three decimals. Of x sorted ascending, counted from 0, and
/// h = (n - 1) p with whole part i and fraction f: x[i] when f is 0, else
/// (1 - f) x[i] + f x[i + 1].
/// - p: a probability; outside 0 to 1, and for no values, the result is NaN
/// A sample that holds NaN is taken in the order that `sort` gives it.
VARNOW_API matrix quantile(matrix const& m, double p);
/// Several quantiles, each sample being put in order once. A row of K by cols for each
/// probability, or for an object of one row 1 by K; the rows (columns) bear the names "QUANTILE_".
/// - refuses: ps without exactly one row or one column; ps without cells
VARNOW_API matrix quantile(matrix const& m, matrix const& ps);

/// Running sum (product) along the row of an object of one row, else down each column; names kept.
VARNOW_API matrix cumsum(matrix const& m);
VARNOW_API matrix cumprod(matrix const& m);

/// Relative frequencies of the values of each column in bins of equal width from its smallest to
/// its largest value, bins down the rows.
/// - returns: k by cols, k the square root of rows truncated, rows named "HIST_1" and on, column
///   names kept; ones in a single row for at most one row. Each column sums to 1, but a result of
///   one row (2 or 3 rows of data) sums to 1 as a whole
/// A value that no bin takes is left out: a NaN, an infinite one, any value of a column that begins
/// with NaN.
VARNOW_API matrix hist(matrix const& m);

/// Covariance of two columns, divided by n.
/// - refuses: more than one column, or none; different lengths
VARNOW_API double cov(matrix const& a, matrix const& b);
/// That covariance over the root of var(a) var(b), which divide by n - 1: a perfect linear relation
/// gives (n - 1) / n. Refuses as `cov`.
VARNOW_API double cor(matrix const& a, matrix const& b);
/// Covariances of all columns, divided by n = rows; column names on both sides. Each is the sum of
/// products of deviations, rows ascending.
VARNOW_API matrix cov(matrix const& m);
/// Correlations of all columns, 1 for a perfect linear relation; column names on both sides.
VARNOW_API matrix cor(matrix const& m);

/// Mean (sum) of each column over the rows whose flag is not 0; 1 by cols, also for one row, named
/// "MEANIF" ("SUMIF"), column names kept. With no flag set NaN (0).
/// - refuses: as many flags as rows are needed
VARNOW_API matrix meanif(matrix const& m, Vector const& flags);
VARNOW_API matrix sumif(matrix const& m, Vector const& flags);

} // namespace varnow
