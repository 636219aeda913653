// Starting parameters of the response curves (logistic.h) for a fit or a network.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

// x: a column of n values of one variable; t: a column of n targets. Rows with a NaN in either are
// left out. The result is a column without names.
// - refuse: x or t of several columns; different lengths

/// The two levels of `f_B`: the mean of t where x is 0, and the mean elsewhere, which is the
/// least-squares curve. A level without rows is that of the other, 0 when there are no rows.
VARNOW_API matrix param_start_B(matrix const& x, matrix const& t);
/// The four parameters of `f_C`, p(2) above 0, near the least-squares curve: x is gathered into at
/// most 128 groups of equal rank, and centre and width of the sigmoid are searched on a grid that
/// closes in; the levels follow by linear least squares. Among curves that fit alike a moderate one
/// is chosen.
/// - direction: above 0 for a rising curve, below 0 for a falling one, 0 for whichever fits
/// For an x that does not vary, p(1) is 0 and p(4) the mean of t.
VARNOW_API matrix param_start_C(matrix const& x, matrix const& t, int direction);

} // namespace varnow
