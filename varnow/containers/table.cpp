#include <varnow/containers/table.h>

#include <cmath>
#include <cstdlib>

namespace varnow {

namespace {

Text number_text(double x)
{
    bool const whole = x == std::floor(x) && x >= -2147483648.0 && x <= 2147483647.0;
    return whole ? itot(static_cast<int>(x)) : dtot(x, 0);
}

} // namespace

table::table(matrix const& m) : data<Text>(m.rows, m.cols)
{
    copynames(m, *this);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = number_text(m.cell[i][j]);
}

table::operator matrix() const
{
    matrix r(rows, cols);
    copynames(*this, r);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) r.cell[i][j] = std::atof(com2dot(cell[i][j]).str);
    return r;
}

void table::test(Text const& prefix, Text const& cell_prefix)
{
    for (int i = 0; i < rows; ++i) rnames[i] = prefix + "R" + itot(i + 1);
    for (int j = 0; j < cols; ++j) cnames[j] = prefix + "C" + itot(j + 1);
    for (int i = 0, k = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) cell[i][j] = cell_prefix + itot(++k);
}

} // namespace varnow
