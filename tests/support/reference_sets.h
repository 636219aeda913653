// Linear regression problems of the NIST Statistical Reference Datasets with their certified
// values.
#pragma once

#include <varnow/containers/matrix.h>

#include <cmath>
#include <string>
#include <vector>

namespace varnow::test {

struct reference_set
{
    std::string name;
    matrix X, y;
    // Certified, the intercept last.
    std::vector<double> coefficients, errors;
};

// The powers of x from 1 to `degree`.
inline matrix powers(std::vector<double> const& x, int degree)
{
    matrix X(static_cast<int>(x.size()), degree);
    for (int i = 0; i < X.rows; ++i) {
        double p = 1;
        for (int j = 0; j < degree; ++j) X.cell[i][j] = p *= x[static_cast<std::size_t>(i)];
    }
    return X;
}

inline matrix as_column(std::vector<double> const& x)
{
    return powers(x, 1);
}

inline reference_set norris()
{
    return {"Norris",
            ~matrix("0.2 337.4 118.2 884.6 10.1 226.5 666.3 996.3 448.6 777 558.2 0.4 0.6 775.5 "
                    "666.9 338 447.5 11.6 556 228.1 995.8 887.6 120.2 0.3 0.3 556.8 339.1 887.2 "
                    "999 779 11.1 118.3 229.2 669.1 448.9 0.5"),
            ~matrix("0.1 338.8 118.1 888 9.2 228.1 668.5 998.5 449.1 778.9 559.2 0.3 0.1 778.1 "
                    "668.8 339.3 448.9 10.8 557.7 228.3 998 888.8 119.6 0.3 0.6 557.6 339.3 888 "
                    "998.5 778.9 10.2 117.6 228.9 668.4 449.2 0.2"),
            {1.00211681802045, -0.262323073774029},
            {0.429796848199937E-03, 0.232818234301152}};
}

inline reference_set pontius()
{
    std::vector<double> x;
    for (int i = 0; i < 40; ++i) x.push_back(150000.0 * (i % 20 + 1));
    return {"Pontius",
            powers(x, 2),
            ~matrix(".11019 .21956 .32949 .43899 .54803 .65694 .76562 .87487 .98292 1.09146 "
                    "1.20001 1.30822 1.41599 1.52399 1.63194 1.73947 1.84646 1.95392 2.06128 "
                    "2.16844 .11052 .22018 .32939 .43886 .54798 .65739 .76596 .87474 .983 1.0915 "
                    "1.20004 1.30818 1.41613 1.52408 1.63159 1.73965 1.84696 1.95445 2.06177 "
                    "2.16829"),
            {0.732059160401003E-06, -0.316081871345029E-14, 0.673565789473684E-03},
            {0.157817399981659E-09, 0.486652849992036E-16, 0.107938612033077E-03}};
}

inline reference_set longley()
{
    return {"Longley",
            "83.0 234289 2356 1590 107608 1947; 88.5 259426 2325 1456 108632 1948;"
            "88.2 258054 3682 1616 109773 1949; 89.5 284599 3351 1650 110929 1950;"
            "96.2 328975 2099 3099 112075 1951; 98.1 346999 1932 3594 113270 1952;"
            "99.0 365385 1870 3547 115094 1953; 100.0 363112 3578 3350 116219 1954;"
            "101.2 397469 2904 3048 117388 1955; 104.6 419180 2822 2857 118734 1956;"
            "108.4 442769 2936 2798 120445 1957; 110.8 444546 4681 2637 121950 1958;"
            "112.6 482704 3813 2552 123366 1959; 114.2 502601 3931 2514 125368 1960;"
            "115.7 518173 4806 2572 127852 1961; 116.9 554894 4007 2827 130081 1962",
            ~matrix("60323 61122 60171 61187 63221 63639 64989 63761 66019 67857 68169 66513 68655 "
                    "69564 69331 70551"),
            {15.0618722713733, -0.358191792925910E-01, -2.02022980381683, -1.03322686717359,
             -0.511041056535807E-01, 1829.15146461355, -3482258.63459582},
            {84.9149257747669, 0.334910077722432E-01, 0.488399681651699, 0.214274163161675,
             0.226073200069370, 455.478499142212, 890420.383607373}};
}

// Polynomials of degree 5 on 0, 1, ..., 20 with all coefficients 1 and deviations, in multiples of
// `size`, that change none of them.
inline reference_set wampler(std::string const& name, double size)
{
    matrix const deviation = "759 -2048 2048 -2048 2523 -2048 2048 -2048 1838 -2048 2048 -2048 "
                             "1838 -2048 2048 -2048 2523 -2048 2048 -2048 759";
    std::vector<double> x, y, errors = {2363.55173469681, 779.343524331583,  101.475507550350,
                                        5.64566512170752, 0.112324854679312, 2152.32624678170};
    for (double& e : errors) e *= size;
    for (int i = 0; i < 21; ++i) {
        double value = 0;
        for (int k = 0; k < 6; ++k) value = value * i + 1;
        x.push_back(i);
        y.push_back(value + size * deviation(i + 1));
    }
    return {name, powers(x, 5), as_column(y), std::vector<double>(6, 1), errors};
}

// Digits of x that agree with the certified value, at most 15.
inline double digits(double x, double certified)
{
    double const off = std::fabs(x - certified) / std::fabs(certified);
    return off > 1e-15 ? -std::log10(off) : 15;
}

} // namespace varnow::test
