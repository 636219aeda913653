#include <varnow/containers/sort_engine.h>

#include <varnow/containers/gather.h>
#include <varnow/containers/storage.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

namespace varnow::detail {

namespace {

using word = std::uint64_t;

// A sort runs over words of a key in the upper and a position in the lower bits.
constexpr int position_bits = 31;
constexpr word position_mask = (word(1) << position_bits) - 1;
constexpr int window_bits = 64 - position_bits;

// Words of its own, or n of the caller's.
struct buffer
{
    explicit buffer(int n, word* given = nullptr)
        : own_(given ? nullptr : scratch<word>(static_cast<std::size_t>(n))),
          word_(given ? given : own_.get())
    {
    }
    operator word*() const { return word_; }

private:
    std::unique_ptr<word[]> own_;
    word* word_;
};

int bit_length(word x)
{
    return x == 0 ? 0 : 64 - __builtin_clzll(x);
}

int position_of(word packed)
{
    return static_cast<int>(packed & position_mask);
}

// Sorts packed words whose key has at most `bits` bits by that key.
void sort_packed(word* a, word* scratch, int n, int bits)
{
    constexpr int widest = 11;
    if (n < 600) {
        std::sort(a, a + n);
        return;
    }
    int const passes = (bits + widest - 1) / widest;
    if (passes == 0) return;
    int const width = (bits + passes - 1) / passes;
    word const digit = (word(1) << width) - 1;
    int count[3][1 << widest] = {};
    for (int i = 0; i < n; ++i)
        for (int p = 0, shift = position_bits; p < passes; ++p, shift += width)
            ++count[p][a[i] >> shift & digit];
    word* from = a;
    word* to = scratch;
    for (int p = 0, shift = position_bits; p < passes; ++p, shift += width) {
        int* const place = count[p];
        if (place[from[0] >> shift & digit] == n) continue;
        int before = 0;
        for (word k = 0; k <= digit; ++k) {
            int const here = place[k];
            place[k] = before;
            before += here;
        }
        for (int i = 0; i < n; ++i) to[place[from[i] >> shift & digit]++] = from[i];
        std::swap(from, to);
    }
    if (from != a) std::copy(from, from + n, a);
}

// The quicksort proper, on words of a rank above some bits that go with it. Since all to the right
// of a pivot are not below it, a later pivot of the same rank there finds nothing to move, and
// neither does one without rank (a NaN): no scan. So repeats cost no more than the exchange of the
// middle.
template <class W, int shift> class rank_sort
{
public:
    static constexpr W no_rank = W(~W(0)) >> shift;

    static W pack(word rank, int below)
    {
        return static_cast<W>(W(rank) << shift | W(unsigned(below)));
    }

    explicit rank_sort(W* a) : a_(a) {}
    // With every word ranked, `sorted` may hold them in rising order of ranks, and open[k] the
    // number of those before k whose order among their equals is asked for.
    rank_sort(W* a, W const* sorted, int const* open) : a_(a), sorted_(sorted), open_(open) {}

    // No rank from left to right is below `least`.
    void run(int left, int right, W least)
    {
        while (left < right) {
            if (open_ && open_[left] == open_[right + 1]) return take_sorted(left, right);
            if (right - left == 1) {
                W const pivot = a_[left] >> shift;
                if (a_[right] >> shift < pivot && pivot != no_rank) std::swap(a_[left], a_[right]);
                return;
            }
            std::swap(a_[left], a_[left + (right - left) / 2]);
            W const pivot = a_[left] >> shift;
            if (pivot == least || pivot == no_rank) {
                ++left;
                continue;
            }
            int const last = gather_below(a_, left, right, static_cast<W>(pivot << shift));
            std::swap(a_[left], a_[last]);
            if (last - left < right - last) {
                run(left, last - 1, least);
                left = last + 1;
                least = pivot;
            } else {
                run(last + 1, right, pivot);
                right = last - 1;
            }
        }
    }

    // The same where no rank is below the one before: all the exchanges of a pivot together move it
    // to the front of its equals, and what stood there to the middle.
    void run_rising(int left, int right)
    {
        while (left < right) {
            int const middle = left + (right - left) / 2;
            W const limit = a_[middle] >> shift << shift;
            int const first = first_not_below(left, middle, limit);
            std::swap(a_[first], a_[middle]);
            if (first - left < right - first) {
                run_rising(left, first - 1);
                left = first + 1;
            } else {
                run_rising(first + 1, right);
                right = first - 1;
            }
        }
    }

private:
    int first_not_below(int left, int right, W limit) const
    {
        if (a_[left] >= limit) return left;
        return static_cast<int>(
            std::partition_point(a_ + left, a_ + right, [limit](W x) { return x < limit; }) - a_);
    }

    // Nobody asks for the exchanges from left to right. Of the first rank some may have gone to the
    // left of here; the rest must be what is here.
    void take_sorted(int left, int right)
    {
        W const first = sorted_[left] >> shift;
        int put = left;
        if (left > 0 && sorted_[left - 1] >> shift == first)
            for (int i = left; i <= right; ++i)
                if (a_[i] >> shift == first) a_[put++] = a_[i];
        std::copy(sorted_ + put, sorted_ + right + 1, a_ + put);
    }

    W* const a_;
    W const* const sorted_ = nullptr;
    int const* const open_ = nullptr;
};

using position_sort = rank_sort<word, 32>;

// Sorts by keys that are first mapped to integers of the same order. `Keys` offers, for positions
// i and j,
// - key(i), of which equal values may still hide different keys when `exact` is false;
// - below(i, j) and equal(i, j) among such;
// - missing(i), for keys that are neither below nor equal to anything.
template <class Keys> class engine
{
public:
    // Without `exchanges` equal keys stay in the order of their positions.
    engine(Keys const& keys, int n, int* position, bool exchanges = true, word* work = nullptr)
        : keys_(keys), n_(n), position_(position), a_(n, work), scratch_(n, work ? work + n : work)
    {
        survey();
        if (Keys::exact && present_ == n_ && (rising_ || (falling_ && (exchanges || !repeats_)))) {
            take_in_turn();
            if (repeats_ && exchanges) exchange_in_turn();
            return;
        }
        sort_by_key();
        if (!exchanges)
            for (int k = 0; k < n_; ++k) position_[k] &= ~repeat_mark;
        else if (repeats_ || present_ < n_)
            exchange_ranks();
    }

private:
    // Range and count of the keys, and whether none is below (above) the one before.
    void survey()
    {
        least_ = ~word(0);
        word previous = 0;
        for (int i = 0; i < n_; ++i) {
            if (keys_.missing(i)) continue;
            word const k = keys_.key(i);
            least_ = std::min(least_, k);
            greatest_ = std::max(greatest_, k);
            if (present_ > 0) {
                rising_ &= k >= previous;
                falling_ &= k <= previous;
                repeats_ |= k == previous;
            }
            previous = k;
            ++present_;
        }
    }

    // Keys that rise or fall are ranked as they stand.
    void take_in_turn()
    {
        word rank = 0;
        for (int k = 0; k < n_; ++k) {
            int const i = rising_ ? k : n_ - 1 - k;
            if (k > 0 && keys_.key(i) != keys_.key(rising_ ? i - 1 : i + 1)) ++rank;
            a_[i] = position_sort::pack(rank, i);
            position_[k] = i;
        }
    }

    void exchange_in_turn()
    {
        if (rising_)
            position_sort(a_).run_rising(0, n_ - 1);
        else
            position_sort(a_).run(0, n_ - 1, 0);
        for (int k = 0; k < n_; ++k) position_[k] = position_of(a_[k]);
    }

    void sort_by_key()
    {
        repeats_ = false;
        if (present_ == 0) return;
        int const bits = bit_length(greatest_ - least_);
        hidden_bits_ = std::max(0, bits - window_bits);
        word* p = a_;
        for (int i = 0; i < n_; ++i)
            if (!keys_.missing(i))
                *p++ = (keys_.key(i) - least_) >> hidden_bits_ << position_bits | word(unsigned(i));
        sort_packed(a_, scratch_, present_, bits - hidden_bits_);
        if constexpr (Keys::exact)
            for (int k = 0; k < present_;) k = settle_stretch(k);
        else
            each_run(0, present_, [this](int from, int to) { settle_window(from, to); });
    }

    // Writes the positions of some words from `from` on, repeats marked, and gives the place behind
    // them. Where the window is that of the word before, the whole keys mostly repeat or rise, too:
    // no branch for each run of repeats.
    int settle_stretch(int from)
    {
        constexpr int most = 1024;
        int same[most], count = 0;
        int const end = std::min(present_, from + most);
        for (int k = from; k < end; ++k) {
            position_[k] = position_of(a_[k]);
            same[count] = k;
            count += k > 0 && a_[k] >> position_bits == a_[k - 1] >> position_bits;
        }
        for (int c = 0; c < count; ++c) {
            int const k = same[c];
            word const x = keys_.key(position_of(a_[k - 1])), y = keys_.key(position_of(a_[k]));
            if (y < x) return settle_window_around(k);
            position_[k] |= x == y ? repeat_mark : 0;
            repeats_ |= x == y;
        }
        return end;
    }

    int settle_window_around(int k)
    {
        word const upper = a_[k] >> position_bits;
        int from = k, to = k + 1;
        while (from > settled_ && a_[from - 1] >> position_bits == upper) --from;
        while (to < present_ && a_[to] >> position_bits == upper) ++to;
        settle_window(from, to);
        return settled_ = to;
    }

    // Calls f on every stretch of words with the same upper bits.
    template <class F> void each_run(int from, int to, F f)
    {
        while (from < to) {
            word const upper = a_[from] >> position_bits;
            int end = from + 1;
            while (end < to && a_[end] >> position_bits == upper) ++end;
            f(from, end);
            from = end;
        }
    }

    // The words agree in the window: order them by the bits that it left out.
    void settle_window(int from, int to)
    {
        if (hidden_bits_ == 0 || (!Keys::exact && one_key(from, to))) return settle_equal(from, to);
        word const hidden = (word(1) << hidden_bits_) - 1;
        for (int k = from; k < to; ++k) {
            int const i = position_of(a_[k]);
            a_[k] = ((keys_.key(i) - least_) & hidden) << position_bits | word(unsigned(i));
        }
        sort_packed(a_ + from, scratch_, to - from, hidden_bits_);
        each_run(from, to, [this](int f, int t) { settle_equal(f, t); });
    }

    bool one_key(int from, int to) const
    {
        if (to - from == 1) return true;
        word const first = keys_.key(position_of(a_[from]));
        for (int k = from + 1; k < to; ++k)
            if (keys_.key(position_of(a_[k])) != first) return false;
        return true;
    }

    // The words agree in the whole integer: write their positions, repeats marked.
    void settle_equal(int from, int to)
    {
        int* const p = position_;
        p[from] = position_of(a_[from]);
        if (to - from == 1) return;
        bool all = true;
        for (int k = from + 1; k < to; ++k) {
            int const i = position_of(a_[k]);
            all = all && (Keys::exact || keys_.equal(p[from], i));
            p[k] = i | repeat_mark;
        }
        repeats_ |= all;
        if (!all) settle_unequal(from, to);
    }

    void settle_unequal(int from, int to)
    {
        int* const p = position_;
        for (int k = from; k < to; ++k) p[k] &= ~repeat_mark;
        std::sort(p + from, p + to, [&](int i, int j) { return keys_.below(i, j); });
        for (int k = from + 1, previous = p[from]; k < to; ++k) {
            int const i = p[k];
            if (keys_.equal(previous, i)) {
                p[k] = i | repeat_mark;
                repeats_ = true;
            }
            previous = i;
        }
    }

    // The order among equal keys is the quicksort's: run it on ranks.
    void exchange_ranks()
    {
        if (present_ < n_)
            for (int i = 0; i < n_; ++i) a_[i] = position_sort::pack(position_sort::no_rank, i);
        word rank = 0;
        for (int k = 0; k < present_; ++k) {
            bool const repeat = position_[k] < 0;
            if (k > 0 && !repeat) ++rank;
            int const i = position_[k] & ~repeat_mark;
            a_[i] = position_sort::pack(rank, i);
        }
        position_sort(a_).run(0, n_ - 1, 0);
        for (int k = 0; k < n_; ++k) position_[k] = position_of(a_[k]);
    }

    static constexpr int repeat_mark = std::numeric_limits<int>::min(); // the sign bit

    Keys const& keys_;
    int const n_;
    int* const position_;
    buffer a_, scratch_;
    word least_ = 0, greatest_ = 0;
    int present_ = 0;
    bool rising_ = true, falling_ = true;
    int hidden_bits_ = 0;
    int settled_ = 0; // windows before it were ordered anew
    bool repeats_ = false;
};

struct number_keys
{
    static constexpr bool exact = true;

    bool missing(int i) const { return x[i] != x[i]; }
    word key(int i) const
    {
        double const v = x[i] + 0.0; // one key for both zeros
        word bits;
        std::memcpy(&bits, &v, sizeof bits);
        return bits ^ flip ^ (bits >> 63 ? ~word(0) : word(1) << 63);
    }
    bool below(int, int) const { return false; }
    bool equal(int, int) const { return true; }

    double const* x;
    word flip; // all bits for a falling order
};

class text_keys
{
public:
    static constexpr bool exact = false;

    text_keys(Text const* const* x, int n, Direction d) : x_(x), key_(n), falling_(d == Descending)
    {
        int const common = common_start(n);
        for (int i = 0; i < n; ++i) key_[i] = leading(*x[i], common) ^ (falling_ ? ~word(0) : 0);
    }
    static constexpr bool missing(int) { return false; }
    word key(int i) const { return key_[i]; }
    bool below(int i, int j) const { return falling_ ? *x_[j] < *x_[i] : *x_[i] < *x_[j]; }
    bool equal(int i, int j) const { return *x_[i] == *x_[j]; }

private:
    // Number of bytes that all begin with.
    int common_start(int n) const
    {
        int common = x_[0]->len;
        for (int i = 1; i < n && common > 0; ++i) {
            common = std::min(common, x_[i]->len);
            int k = 0;
            while (k < common && x_[i]->str[k] == x_[0]->str[k]) ++k;
            common = k;
        }
        return common;
    }

    // Eight bytes from a place on as an integer of the order of signed bytes. What ends early is
    // filled with the lowest, and cannot be told from a text that has these there.
    static word leading(Text const& x, int from)
    {
        unsigned char bytes[8] = {};
        int const n = std::min(8, x.len - from);
        for (int k = 0; k < n; ++k)
            bytes[k] =
                static_cast<unsigned char>(static_cast<unsigned char>(x.str[from + k]) ^ 0x80);
        word r = 0;
        for (unsigned char b : bytes) r = r << 8 | b;
        return r;
    }

    Text const* const* x_;
    buffer key_;
    bool falling_;
};

// Runs the quicksort on words that hold below(k) under the rank of each sorted key, as far as
// marked runs go, and gives what is below the ranks then: put(k, below).
template <class W, int shift, class Below, class Put>
void settle(double const* sorted_key, int n, char const* marked, int const* position, Below below,
            Put put)
{
    using sorter = rank_sort<W, shift>;
    std::size_t const size = static_cast<std::size_t>(n);
    auto const a = scratch<W>(size), sorted = scratch<W>(size);
    auto const open = scratch<int>(size + 1);
    word rank = 0;
    int asked = 0, run_asks = 0;
    for (int k = 0; k < n; ++k) {
        bool const next = k == 0 || sorted_key[k] != sorted_key[k - 1];
        rank += next;
        run_asks = next ? marked[k] : run_asks;
        open[std::size_t(k)] = asked;
        asked += run_asks;
        a[std::size_t(position[k])] = sorted[std::size_t(k)] = sorter::pack(rank, below(k));
    }
    open[size] = asked;
    sorter(a.get(), sorted.get(), open.get()).run(0, n - 1, 0);
    for (int k = 0; k < n; ++k) put(k, a[std::size_t(k)] & ((W(1) << shift) - 1));
}

} // namespace

void stable_positions(double const* key, int n, int* position, word* work)
{
    engine<number_keys>(number_keys{key, 0}, n, position, false, work);
}

void settle_repeats(double const* sorted_key, int n, char const* marked, int* position)
{
    settle<word, 32>(
        sorted_key, n, marked, position, [=](int k) { return position[k]; },
        [=](int k, word p) { position[k] = static_cast<int>(p); });
}

void settle_flags(double const* sorted_key, int n, char const* marked, int const* position,
                  double* flag)
{
    settle<std::uint32_t, 1>(
        sorted_key, n, marked, position, [=](int k) { return flag[k] != 0.0; },
        [=](int k, std::uint32_t f) { flag[k] = f; });
}

void sorted_positions(double const* key, int n, Direction d, int* position)
{
    engine<number_keys>(number_keys{key, d == Descending ? ~word(0) : 0}, n, position);
}

void sorted_positions(Text const* const* key, int n, Direction d, int* position)
{
    if (n > 0) engine<text_keys>(text_keys(key, n, d), n, position);
}

} // namespace varnow::detail
