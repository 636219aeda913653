// A quantile of a stream in fixed memory, and the quantile of several such estimates.
#pragma once

#include <varnow/containers/matrix.h>
#include <varnow/containers/vector.h>

#include <cstdint>
#include <vector>

namespace varnow {

/// Estimates the quantile at p. Up to 100,000 values are kept; at 10,000 a bootstrap finds a window
/// around the quantile, and from 100,000 on only values inside it are kept and the others counted.
/// The window shrinks when the table is full; when that drops nothing, the table freezes and its
/// rows become the cells of a histogram.
///
/// The bootstrap takes 1,000,000 steps of the library's random generator. An object serves one
/// thread, the const members included.
///
/// The fields are open and may be written to. The sorted table is kept between calls of `result`
/// and `cdf` and made anew when a digest of the rows in use, `used`, `frozen` and `below` differs,
/// so that no change goes unnoticed; the digest is a pass over the rows.
///
/// An infinite value is a value like any other: dropped on its side of the window, or kept. A NaN
/// is counted in n, is on no side of a window, and is kept until the table freezes; afterwards
/// `add` counts it in the first row. In the sorted table NaN stand behind every number, so that
/// `result` is NaN when the rank sought falls among them, and `cdf` takes them as above everything.
/// NaN, or infinities of both signs, among the first 10,000 values may leave a window of NaN, which
/// drops nothing.
/// n ends at 2,147,483,647 values: those after them are left out, with a warning at the last one.
class VARNOW_API quantiles
{
public:
    matrix tab;
    int frozen;
    int n;
    int used;
    int below;
    int above;
    double p;
    double sigma;
    double lo, hi;

    /// - probability: becomes p; outside 0 to 1 and for NaN the estimate is an end of the table
    explicit quantiles(double probability) { reset(probability); }
    void reset(double probability);

    void add(double x);

    /// The estimate, between two rows of the table. When the rank sought is not in the table it is
    /// the first (last) row, with a warning. Without values: a warning and row 1 of `tab`.
    double result() const;
    /// The share of values up to x, between two rows of the table; 0 below the first value, 1 above
    /// the last, with a warning when values have been dropped on that side. Of a value that repeats
    /// only its first row counts. Towards an infinite row nothing is added. NaN for x of NaN and
    /// without values; with all values dropped `below` / n.
    double cdf(double x) const;
    /// The smallest (largest) value of the table, passing over NaN; NaN if there is none.
    double T_min() const;
    double T_max() const;

    // The steps of `add`.

    /// Appends a row with the count 1; nothing in a full table.
    void insert(double x);
    /// Counts x in the first row that is not below it, or in the last one, which then takes its
    /// value; rows are taken as sorted. NaN counts in row 1.
    void increase(double x);
    /// Drops the rows outside the window; freezes a full table that loses none.
    void remove_extremes();
    /// Narrows the window to the estimate and 4 standard errors to both sides; below p of 0.05
    /// (above 0.95) it is open downwards (upwards).
    void range_update();
    /// The rows in use, ascending; of a frozen table all rows as they stand.
    void prepare_table(matrix& out) const;

private:
    friend class quantiles2;

    // A row of the sorted table: its value, and the values counted up to it and with it.
    struct entry
    {
        double value, upto;
    };

    int rows_in_use() const;
    std::uint64_t digest() const;
    void prepare() const;
    void put_prepared(matrix& out) const;
    double prepared_result() const;
    double prepared_cdf(double x) const;
    void first_window();
    int first_not_below(double x, int last) const;
    void make_guide();

    mutable std::vector<entry> prepared_;
    mutable std::uint64_t prepared_digest_ = 0;
    // Of a frozen table, the first row in or behind each of the stretches of equal width between
    // its ends: a search need not cross all rows.
    std::vector<int> guide_;
    double guide_from_ = 0.0, guide_scale_ = 0.0;
};

/// Combines estimates that were filled apart: the value at which the mean of their distribution
/// functions is p. An estimate counts as one, whatever its number of values.
class VARNOW_API quantiles2
{
public:
    int capacity;
    int count;
    double p;
    std::vector<quantiles> items;
    Vector usable;

    /// Room for so many estimates, 4.7 MB each; a negative capacity is 0.
    explicit quantiles2(int slots);
    /// New room. The former estimates are gone, but `count` stays, and with it the slot that comes
    /// next and the p that it must have.
    void reset(int slots);

    /// Takes a copy of q. The first one sets p.
    /// - refuses: more than `capacity`; another p
    quantiles2& operator+=(quantiles const& q);

    /// The mean over the usable items; NaN when there is none.
    double cdf(double x) const;
    /// Values in the usable (in all) items; 2,147,483,647 stands for any number above it.
    int simulations_used() const;
    int simulations_all() const;
    /// cdf(x) - p.
    double equation(double x) const { return cdf(x) - p; }
    /// A root of `equation` between a and b as `fzero` closes in on it.
    /// - a, b: infinite ends are taken as 1e300
    /// - tol: relative to the larger of the root and 1; at least 2^-52
    /// - refuses: the same sign at a and b, NaN included; 0 has any sign
    double qfzero(double a, double b, double tol) const;
    /// Makes usable the items whose table holds the quantile at p: no more than p of their values
    /// were dropped below it, no more than 1 - p above. On return a and b enclose the solution:
    /// their smallest and largest value, or the number next to it where the function jumps there.
    /// - refuses: no such item
    void search_range(double& a, double& b);
    /// The estimate from the usable items; `search_range` chooses them anew when their values do
    /// not enclose it. Warns when items were left out and when cdf of the result is off p by more
    /// than 1e-6, as it is where many values are equal. NaN without items.
    double result();

private:
    int filled() const;
    quantiles const& item(int i) const { return items[static_cast<std::size_t>(i)]; }
    bool is_usable(int i) const;
    template <class F> std::int64_t simulations(F wanted) const;
    std::int64_t used() const;
    std::int64_t all() const;
    void usable_range(double& a, double& b) const;
    void prepare() const;
    double prepared_cdf(double x) const;
};

} // namespace varnow
