// Internal: loops over blocks of data rows, vectorised for the machine at hand. Sums across columns
// have no stated order.
#pragma once

namespace varnow::detail {

/// out[i] = d[c] + the sum over j < c of d[j] * row[i][j].
void row_products(double const* const* row, int count, int c, double const* d, double* out);
/// g[j] += the sum over i of row[i][j] * pull[i]; g[c] += the sum of pull.
void add_rows(double const* const* row, int count, int c, double const* pull, double* g);
/// Of power = exp(z s), with p = 1 / (power + 1): pull = s p, or 0 where z s is not below far, and
/// the weight power p^2, or 0 where z is not between -far and far; a NaN of z goes into the weight.
void weigh(int count, double const* z, double const* s, double const* power, double far,
           double* pull, double* weight);
/// along = toward - gamma along; returns the sum of along^2 * weight.
double turn_and_weigh(int count, double gamma, double const* toward, double const* weight,
                      double* along);
/// H(j, l) += x[l] * ((1 - p) * x[j] * p), m by m.
void add_outer(double const* x, int m, double p, double* const* H);
/// v = the product of a matrix, given transposed, with x, its sums in ascending order; step += v *
/// rest.
void add_transformed(double const* x, int m, double const* const* transposed, double rest,
                     double* v, double* step);

} // namespace varnow::detail
