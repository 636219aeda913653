// Smoothing of equally spaced data by a polynomial moved along it, and the Gram polynomials on
// 2m + 1 points that its weights are made of.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// The least-squares polynomial of each window, read off at the window's middle, and on the first
/// and last window at every point up to the ends.
/// - x: N by 1; a NaN spreads to every window that holds it
/// - degree: 0 to 5, below `points`: above, the weights divide by 0; 0 is the moving average, and
///   below 0 all weights are 0
/// - points: length of the window, odd, at most N
/// - returns: N by 1, without names
/// - refuses: several columns; `points` even or below 1; `points` > N; `degree` > 5; in this order
/// - source: Gorry, Anal. Chem. 62 (1990) 570; Savitzky and Golay, Anal. Chem. 36 (1964) 1627
VARNOW_API matrix smooth(matrix const& x, int degree, int points);

/// Coefficient of i^j in the Gram polynomial of degree k before it is normalised; 1 for j = k.
/// Refuses k > 5.
VARNOW_API double fun_delta(int k, int j, int m);
/// Its factor, which makes it 1 at i = m. Refuses k below 0 and k > 5.
VARNOW_API double fun_eps(int k, int m);
/// The Gram polynomial of degree k at i.
VARNOW_API double fun_p(int k, int i, int m);
/// n!; 1 for n < 1, infinity for n > 170.
VARNOW_API double factor(int n);
/// Weight of point i for the value at point t, both from -m to m, of the polynomial of that degree
/// fitted to 2m + 1 points; 0 for a degree below 0.
VARNOW_API double fun_w(int degree, int m, int t, int i);

} // namespace varnow
