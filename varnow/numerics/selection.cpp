#include <varnow/numerics/selection.h>

#include <varnow/containers/sort_engine.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace varnow::detail {

namespace {

bool holds_nan(double const* x, int n)
{
    bool found = false;
    for (int i = 0; i < n; ++i) found |= x[i] != x[i];
    return found;
}

// A number as an integer of the same order, one for both zeros.
std::uint64_t ordered_bits(double x)
{
    x += 0.0;
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits >> 63 ? ~bits : bits | std::uint64_t(1) << 63;
}

constexpr int buckets = 4096;
constexpr int worth_splitting = 2048;

// Writes to out[r] the value of each rank r of [first, last), where x holds the values of ranks
// `base` to base + n - 1 of the sample.
class selection
{
public:
    selection(double* x, int n, int base, int const* first, int const* last, double* out)
        : x_(x), n_(n), base_(base), first_(first), last_(last), out_(out)
    {
    }

    void run()
    {
        if (n_ < worth_splitting) {
            std::sort(x_, x_ + n_);
            for (int const* r = first_; r != last_; ++r) out_[*r] = x_[*r - base_];
            return;
        }
        double lo = x_[0], hi = x_[0];
        for (int i = 1; i < n_; ++i) {
            lo = x_[i] < lo ? x_[i] : lo;
            hi = x_[i] > hi ? x_[i] : hi;
        }
        if (lo == hi) {
            for (int const* r = first_; r != last_; ++r) out_[*r] = lo;
            return;
        }
        // Buckets of equal width keep the order, since rounding does. Values that crowd into a few
        // of them are split by their bits, which tell any two values apart after a few turns.
        double const scale = buckets / (hi - lo);
        if (scale > 0.0 && std::isfinite(scale) && std::isfinite(scale * (hi - lo)))
            if (split(
                    [=](double v) {
                        return std::min(static_cast<int>((v - lo) * scale), buckets - 1);
                    },
                    n_ / 16))
                return;
        std::uint64_t const least = ordered_bits(lo), range = ordered_bits(hi) - least;
        int shift = 0;
        while (range >> shift >= buckets) ++shift;
        split([=](double v) { return static_cast<int>((ordered_bits(v) - least) >> shift); }, n_);
    }

private:
    // Looks into the buckets that hold a wanted rank; false when one bucket holds more than `most`.
    template <class Bucket> bool split(Bucket bucket, int most)
    {
        std::array<int, buckets> size{};
        for (int i = 0; i < n_; ++i) ++size[static_cast<std::size_t>(bucket(x_[i]))];
        if (*std::max_element(size.begin(), size.end()) > most) return false;

        struct part
        {
            int base, n, at;
            int const *first, *last;
        };
        std::vector<part> parts;
        std::array<int, buckets> put;
        put.fill(-1);
        int base = base_, kept = 0;
        int const* r = first_;
        for (std::size_t b = 0; b < buckets && r != last_; base += size[b++]) {
            int const* const from = r;
            while (r != last_ && *r < base + size[b]) ++r;
            if (from == r) continue;
            parts.push_back({base, size[b], kept, from, r});
            put[b] = kept;
            kept += size[b];
        }
        std::vector<double> values(static_cast<std::size_t>(kept));
        for (int i = 0; i < n_; ++i) {
            int& at = put[static_cast<std::size_t>(bucket(x_[i]))];
            if (at >= 0) values[static_cast<std::size_t>(at++)] = x_[i];
        }
        for (part const& p : parts)
            selection(values.data() + p.at, p.n, p.base, p.first, p.last, out_).run();
        return true;
    }

    double* const x_;
    int const n_, base_;
    int const *const first_, *const last_;
    double* const out_;
};

} // namespace

void sort_sample(double* x, int n)
{
    std::vector<double> const key(x, x + n);
    std::vector<int> position(key.size());
    if (holds_nan(x, n))
        sorted_positions(x, n, Ascending, position.data());
    else
        stable_positions(x, n, position.data());
    for (int k : position) *x++ = key[static_cast<std::size_t>(k)];
}

void put_in_place(double* x, int n, std::vector<int> const& ranks)
{
    if (holds_nan(x, n))
        sort_sample(x, n);
    else if (!ranks.empty())
        selection(x, n, 0, ranks.data(), ranks.data() + ranks.size(), x).run();
}

} // namespace varnow::detail
