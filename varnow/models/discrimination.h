// How well a score separates two classes of observations.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/table.h>

namespace varnow {

// x is the score and y the flag, 1 for a bad observation and 0 for a good one (fractions serve),
// columns of n rows. Observations stand by ascending x, so a good score is a high one and a perfect
// model gathers the bads at the beginning. Ties stand where `sort(x, y, Ascending, 1)` puts them.
// nb is the sum of y, and n0 = n - nb; where one of them is 0 the curves and what rests on them
// are NaN.
// - refuse: what `sort` refuses, which is x and y of different shapes and more than a vector; but
//   for IV and IVa a row of several cells

/// The largest difference, with its sign, of the distribution functions of bads and goods: near 0
/// for a score that works the wrong way; NaN for one class only and for no rows.
VARNOW_API double KS(matrix x, matrix y);
/// KS with the place where it is first reached: the score there and the shares of goods and bads up
/// to there. All are NaN where KS is.
VARNOW_API double KS_xy(matrix x, matrix y, double& sx, double& goods, double& bads);

/// The table of the cumulative curve, n by 6, with the row names of x: x; the share u = i / n of
/// the population; the share of bads; the ideal curve; the share of bads among the rows from this
/// one to the end; the share of goods. Columns are not named.
/// - mode: 1 makes the ideal curve rise in nb rounded to a whole number of even steps; any other
///   value takes the best curve that the values of y allow
VARNOW_API matrix CAP(matrix x, matrix y, int mode);

/// The accuracy ratio: the area that the model's curve gains over chance, in proportion to the gain
/// of the ideal curve.
/// - range: share of the population, from the lowest score up, over which areas are taken; 1.0 is
///   all of it
/// - ideal: not 0 for the ideal curve from the number of bads, 0 for y sorted descending
/// - ties: not 0 to level the model's curve over tied scores by `del_rand_quality`
/// - rounded: not 0 to round nb to a whole number; heeded with range 1.0 and ideal not 0 only, as
///   the number is always rounded with any other range
VARNOW_API double AR(matrix x, matrix y, double range, int ideal, int ties, int rounded);

/// Area under a cumulative curve by trapezoids of width 1 / n, from 0 before its first cell; 0 for
/// an object without cells.
/// - c: one row or one column
VARNOW_API double area(matrix const& c, int n);

/// The acceptance table: for each row i of 1, 1 + n / bins, ... up to n the columns "Score" x(i),
/// "Count" and "Bads" of the rows from i to the end, "Acceptance" 1 - i / n, "Quality" bads per
/// count. Cells are written as `table(matrix)` writes numbers; the rows have no names.
/// - refuses: bins below 1 or above n
VARNOW_API table TA(matrix x, matrix y, int bins);

/// Information value over k groups of equal rank: the sum of (log a - log b)(a - b) with the shares
/// a of all goods and b of all bads that fall into a group. A group without goods or bads gives an
/// infinite or NaN term; nothing is smoothed.
/// - x, y: rows serve as well as columns
/// - refuses: k below 1
VARNOW_API double IV(matrix x, matrix y, int k);
/// IV with a and b multiplied by the group's share of observations.
VARNOW_API double IVa(matrix x, matrix y, int k);

/// Replaces y by its mean over each run of tied scores. A run holds the rows whose score is at most
/// 1e-09 away from its first row's.
/// - x: one column, already sorted
/// - refuses: more than one column; different lengths
VARNOW_API void del_rand_quality(matrix& x, matrix& y);

} // namespace varnow
