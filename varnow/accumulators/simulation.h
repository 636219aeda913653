// A summary of a long stream of simulated results in fixed memory.
#pragma once

#include <varnow/containers/matrix.h>

namespace varnow {

/// Running power sums, extremes, a histogram with fixed edges and the first 20,000 values. Objects
/// that were filled apart, also on other machines, are saved, loaded and merged by `+=`. The fields
/// are open; `first` and `counts` keep their sizes.
///
/// An infinite value or NaN is a value like any other: it is counted in n and in the end cell that
/// `add` names, and spreads through the sums. After a NaN every query from the sums is NaN (gmean
/// only if another value makes it so: a NaN has no logarithm here) and the extremes are those of
/// the other values. After an infinity mean() is that infinity, var() and what follows are NaN;
/// after two of different signs mean() is NaN too.
/// n ends at 2,147,483,647 values: those after them are left out, with a warning at the last one.
class VARNOW_API simulation
{
public:
    int n;
    int bins;
    double lo;
    double hi;
    double width;
    double s1, s2, s3, s4;
    double min_x, max_x;
    double slog;
    double sinv;
    matrix first;
    matrix counts;

    /// Without a histogram: lo, hi, width and bins are 0. A merge brings one.
    simulation();
    /// A histogram of equal cells from lo to hi.
    /// - refuses: negative bins
    simulation(double lo, double hi, int bins);
    /// As new, edges and cells kept.
    void reset();

    /// Counts x. Cell k of the histogram, from 1, is the whole part of (x - lo) / width + 1; the
    /// end cells take what lies outside, the last one +infinity as well, the first one -infinity
    /// and whatever gives NaN.
    void add(double x);

    // All from the sums, so that merged objects answer like one. Without values 0 / 0, NaN, but
    // min() +infinity and max() -infinity.
    int length() const { return n; }
    double(min)() const { return min_x; }
    double(max)() const { return max_x; }
    double range() const { return max_x - min_x; }
    double sum() const { return s1; }
    double mean() const { return s1 / n; }
    /// exp(slog / n) and n / sinv: over all n, although values that are not above 0 have no part in
    /// slog and zeros none in sinv.
    double gmean() const;
    double hmean() const { return n / sinv; }
    /// Over n - 1. The sums are of plain powers: of values far from 0 in units of their deviation,
    /// digits are lost; subtract a constant first.
    double var() const;
    double stdev() const;
    /// With the corrections for a sample; NaN or infinite below 3 (4) values.
    double skewness() const;
    double kurtosis() const;
    /// bins by 2: the centre of each cell measured from lo (lo is not added) and its share of n.
    matrix hist() const;
    /// The most frequent of the stored values, of several the smallest.
    double mode() const;

    /// A text head with the fields and behind it both matrices as by `matrix::writebin`, six
    /// decimals everywhere, in every locale the same. A file that cannot be opened is passed over
    /// in silence; a write that fails is warned of.
    void save(Text const& name) const;
    /// Passes over a file that cannot be opened in silence. One that is damaged, truncated, or
    /// holds sizes that do not belong together is warned of; the object stays as it was.
    /// Of `first` the file may hold the taken rows only; `add` brings the others back.
    void load(Text const& name);

    /// Merges: sums and counts are added, the stored values of `other` follow those of this object,
    /// so that `first` may grow. An object without values takes the other's histogram; `s += s`
    /// doubles s.
    /// - refuses: histograms of different bins, lo or hi; more than 2,147,483,647 values together
    simulation& operator+=(simulation const& other);
};

} // namespace varnow
