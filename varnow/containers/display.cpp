#include <varnow/containers/data.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace varnow {

namespace {

// How the cells of one column are printed; kept small, since a table may have many columns.
struct column
{
    int width = 0;
    int decimals = 0;
    bool scientific = false;
};

constexpr int digits_shown = 7;

std::string number(double x, column const& c)
{
    if (std::isnan(x)) return "NaN";
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, c.scientific ? "%.*e" : "%.*f", c.decimals, x);
    return buffer;
}

// The digits behind the point of the mantissa that seven significant digits of x leave, trailing
// zeros taken away, and its exponent.
void scale(double x, int& mantissa, int& exponent)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.*e", digits_shown - 1, std::fabs(x));
    exponent = std::atoi(buffer + digits_shown + 2);
    mantissa = digits_shown - 1;
    while (mantissa > 0 && buffer[mantissa + 1] == '0') --mantissa;
}

// One form for a column, so that decimal points stand below each other: fixed, unless very large or
// very small numbers make that the longer one.
column measure(data<double> const& a, int j)
{
    column fixed, scientific;
    scientific.scientific = true;
    for (int i = 0; i < a.rows; ++i) {
        double const x = a.cell[i][j];
        if (!std::isfinite(x)) continue;
        int mantissa, exponent;
        scale(x, mantissa, exponent);
        scientific.decimals = std::max(scientific.decimals, mantissa);
        fixed.decimals = std::max(fixed.decimals, mantissa - exponent);
    }
    auto const widest = [&a, j](column& c) {
        for (int i = 0; i < a.rows; ++i)
            c.width = std::max(c.width, static_cast<int>(number(a.cell[i][j], c).size()));
    };
    widest(scientific);
    if (fixed.decimals <= 15) widest(fixed);
    return fixed.decimals <= 15 && fixed.width <= scientific.width + 4 ? fixed : scientific;
}

column measure(data<Text> const& a, int j)
{
    column c;
    for (int i = 0; i < a.rows; ++i) c.width = std::max(c.width, a.cell[i][j].len);
    return c;
}

void put(std::string& line, char const* s, int length, int width, bool right)
{
    std::size_t const padding = static_cast<std::size_t>(std::max(width - length, 0));
    if (right) line.append(padding, ' ');
    line.append(s, static_cast<std::size_t>(length));
    if (!right) line.append(padding, ' ');
}

void put(std::string& line, Text const& s, int width, bool right)
{
    put(line, s.str, s.len, width, right);
}

void put_cell(std::string& line, double x, column const& c)
{
    std::string const s = number(x, c);
    put(line, s.data(), static_cast<int>(s.size()), c.width, true);
}

void put_cell(std::string& line, Text const& x, column const& c)
{
    put(line, x, c.width, false);
}

int longest(Text const* names, int n)
{
    int most = 0;
    for (int i = 0; i < n; ++i) most = std::max(most, names[i].len);
    return most;
}

void print(std::string& line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
    line.clear();
}

} // namespace

template <class T> void data<T>::display(Text const& title) const
{
    constexpr bool right = std::is_same<T, double>::value;
    std::string line;
    print(line);
    if (title.len > 0) {
        put(line, title, 0, false);
        print(line);
    }
    if (rows == 0 || cols == 0) {
        line = "(" + std::to_string(rows) + " x " + std::to_string(cols) + ")";
        print(line);
    }
    std::vector<column> form;
    for (int j = 0; j < cols; ++j) {
        form.push_back(measure(*this, j));
        form.back().width = std::max(form.back().width, cnames[j].len);
    }
    int const margin = longest(rnames, rows);
    char const* const between = "  ";
    bool const margin_shown = margin > 0;
    if (longest(cnames, cols) > 0) {
        line.append(static_cast<std::size_t>(margin), ' ');
        for (int j = 0; j < cols; ++j) {
            if (j > 0 || margin_shown) line += between;
            put(line, cnames[j], form[static_cast<std::size_t>(j)].width, right);
        }
        print(line);
    }
    for (int i = 0; i < rows && cols > 0; ++i) {
        put(line, rnames[i], margin, false);
        for (int j = 0; j < cols; ++j) {
            if (j > 0 || margin_shown) line += between;
            put_cell(line, cell[i][j], form[static_cast<std::size_t>(j)]);
        }
        print(line);
    }
    print(line);
}

template void data<double>::display(Text const&) const;
template void data<Text>::display(Text const&) const;

} // namespace varnow
