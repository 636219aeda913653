// Any two patterns, products, and changes of shape.
#include <varnow/sparse/sparse.h>

#include <varnow/core/messages.h>
#include <varnow/sparse/threshold.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace varnow {

namespace {

// An operand's list in ascending order. Of one that a file has left otherwise it is a sorted copy,
// in which the last entry of a position counts.
class ascending
{
public:
    explicit ascending(sparse const& s) : list_(s.sorted ? s : held_)
    {
        if (!s.sorted) sort_in(s);
    }
    ascending(ascending const&) = delete;
    ascending& operator=(ascending const&) = delete;
    sparse const& list() const { return list_; }

private:
    void sort_in(sparse const& s)
    {
        std::vector<int> order(static_cast<std::size_t>(s.nnz));
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&s](int p, int q) {
            return s.rowidx[p] != s.rowidx[q] ? s.rowidx[p] < s.rowidx[q]
                                              : s.colidx[p] < s.colidx[q];
        });
        held_ = spempty(s.rows, s.cols);
        for (int k : order) held_(s.rowidx[k], s.colidx[k]) = s.values[k];
    }

    sparse held_;
    sparse const& list_;
};

// Writes the entries of a result, which come in ascending order; what is dropped is overwritten.
class writer
{
public:
    writer(int rows, int cols) : result_(spempty(rows, cols)) {}
    void put(int i, int j, double x)
    {
        result_.rowidx[n_] = i;
        result_.colidx[n_] = j;
        result_.values[n_] = x;
        n_ += detail::is_kept(x);
    }
    sparse result()
    {
        result_.nnz = static_cast<int>(n_);
        return std::move(result_);
    }

private:
    sparse result_;
    // Not an int, which stores to the arrays might change.
    std::ptrdiff_t n_ = 0;
};

bool of_one_shape(sparse const& a, sparse const& b, char const* routine)
{
    if (a.rows == b.rows && a.cols == b.cols) return true;
    errormessage("SPARSE", routine, "niezgodne wymiary macierzy", "");
    return false;
}

// Walks both lists side by side: left(p) for an entry of a alone, right(q) for one of b alone,
// both(p, q) where they meet.
template <class L, class R, class B>
void merge(sparse const& a, sparse const& b, L const& left, R const& right, B const& both)
{
    int p = 0, q = 0;
    while (p < a.nnz && q < b.nnz) {
        int const i = a.rowidx[p], j = a.colidx[p], k = b.rowidx[q], l = b.colidx[q];
        if (i == k && j == l)
            both(p++, q++);
        else if (i < k || (i == k && j < l))
            left(p++);
        else
            right(q++);
    }
    while (p < a.nnz) left(p++);
    while (q < b.nnz) right(q++);
}

// f with 0 for what is not stored, by which a result is that of whole matrices.
template <class F> sparse unite(sparse const& a, sparse const& b, char const* routine, F const& f)
{
    if (!of_one_shape(a, b, routine)) return sparse();
    ascending const in_a(a), in_b(b);
    sparse const &x = in_a.list(), &y = in_b.list();
    writer w(a.rows, a.cols);
    merge(
        x, y, [&](int p) { w.put(x.rowidx[p], x.colidx[p], x.values[p]); },
        [&](int q) { w.put(y.rowidx[q], y.colidx[q], f(0.0, y.values[q])); },
        [&](int p, int q) { w.put(x.rowidx[p], x.colidx[p], f(x.values[p], y.values[q])); });
    return w.result();
}

// f where both are stored; `alone` counts the entries of a that stand alone.
template <class F>
sparse intersect(sparse const& a, sparse const& b, char const* routine, F const& f, int& alone)
{
    alone = 0;
    if (!of_one_shape(a, b, routine)) return sparse();
    ascending const in_a(a), in_b(b);
    sparse const &x = in_a.list(), &y = in_b.list();
    writer w(a.rows, a.cols);
    merge(
        x, y, [&](int) { ++alone; }, [](int) {},
        [&](int p, int q) { w.put(x.rowidx[p], x.colidx[p], f(x.values[p], y.values[q])); });
    return w.result();
}

// Where the entries of each row stand: between begin[i] and end[i].
struct row_table
{
    explicit row_table(sparse const& s) : begin(s.row_begin), end(s.row_end)
    {
        if (s.indexed) return;
        starts.resize(static_cast<std::size_t>(s.rows) + 2);
        for (int i = 1, k = 0; i <= s.rows + 1; ++i) {
            while (k < s.nnz && s.rowidx[k] < i) ++k;
            starts[static_cast<std::size_t>(i)] = k;
        }
        begin = starts.data();
        end = begin + 1;
    }

    int count(int i) const { return end[i] - begin[i]; }

    std::vector<int> starts;
    int const* begin;
    int const* end;
};

// Sums of one row of a product, all 0 between rows. Where few are touched, each of these is marked
// by a bit, else all are looked at.
class row_sums
{
public:
    explicit row_sums(int cols)
        : cols_(static_cast<std::size_t>(cols)),
          many_(cols_ > few ? cols_ : 0),
          marks_(cols_ > few ? (cols_ + 63) / 64 : 0),
          sums_(cols_ > few ? many_.data() : few_)
    {
    }
    row_sums(row_sums const&) = delete;
    row_sums& operator=(row_sums const&) = delete;

    void expect(std::int64_t terms) { marked_ = cols_ > few && terms < cols(); }

    void add(double factor, int const* column, double const* value, int n)
    {
        if (n == cols()) {
            for (std::size_t j = 0; j < cols_; ++j) sums_[j] += factor * value[j];
        } else if (marked_) {
            for (int k = 0; k < n; ++k) {
                std::size_t const j = static_cast<std::size_t>(column[k] - 1);
                sums_[j] += factor * value[k];
                marks_[j / 64] |= std::uint64_t(1) << (j % 64);
            }
        } else {
            for (int k = 0; k < n; ++k) sums_[column[k] - 1] += factor * value[k];
        }
    }

    void move_to(writer& w, int i)
    {
        auto const move = [&](std::size_t j) {
            w.put(i, static_cast<int>(j) + 1, sums_[j]);
            sums_[j] = 0.0;
        };
        if (!marked_) {
            for (std::size_t j = 0; j < cols_; ++j) move(j);
            return;
        }
        for (std::size_t m = 0; m < marks_.size(); ++m)
            for (std::uint64_t& left = marks_[m]; left != 0; left &= left - 1)
                move(64 * m + static_cast<std::size_t>(__builtin_ctzll(left)));
    }

private:
    static constexpr std::size_t few = 32;
    int cols() const { return static_cast<int>(cols_); }

    std::size_t cols_;
    bool marked_ = false;
    // The products of a network's forward pass are small: no allocation for them.
    double few_[few] = {};
    std::vector<double> many_;
    std::vector<std::uint64_t> marks_;
    double* sums_;
};

// The smallest or largest of the numbers of non-zero entries, by `better`, or `none`.
template <class F> int extreme(sparse const& s, int const* number, int none, F const& better)
{
    int r = none;
    bool found = false;
    for (int k = 0; k < s.nnz; ++k)
        if (detail::is_kept(s.values[k])) {
            r = found ? better(r, number[k]) : number[k];
            found = true;
        }
    return r;
}

int smaller(int a, int b)
{
    return std::min(a, b);
}

int larger(int a, int b)
{
    return std::max(a, b);
}

// Adds k to the numbers, which must stay between 1 and most.
void shift(sparse& s, int* number, int k, int most, char const* routine)
{
    s.pack();
    for (int e = 0; e < s.nnz; ++e) {
        std::int64_t const moved = std::int64_t(number[e]) + k;
        if (moved < 1 || moved > most) {
            errormessage("SPARSE", routine, "przesuniecie poza zakres", "");
            return;
        }
    }
    for (int e = 0; e < s.nnz; ++e) number[e] += k;
}

} // namespace

sparse operator+(sparse const& a, sparse const& b)
{
    return unite(a, b, "sparse operator +(sparse,sparse)",
                 [](double x, double y) { return x + y; });
}

sparse operator-(sparse const& a, sparse const& b)
{
    return unite(a, b, "sparse operator -(sparse,sparse)",
                 [](double x, double y) { return x - y; });
}

sparse operator*(sparse const& a, sparse const& b)
{
    int alone;
    return intersect(
        a, b, "sparse operator *(sparse,sparse)", [](double x, double y) { return x * y; }, alone);
}

sparse operator/(sparse const& a, sparse const& b)
{
    char const* const routine = "sparse operator /(sparse,sparse)";
    int alone;
    sparse r = intersect(
        a, b, routine, [](double x, double y) { return x * (1.0 / y); }, alone);
    if (alone > 0) errormessage("SPARSE", routine, "dzielenie przez zero", "");
    return r;
}

sparse mul(sparse const& a, sparse const& b)
{
    if (a.cols != b.rows) {
        errormessage("SPARSE", "sparse mul(sparse,sparse)", "niezgodne wymiary macierzy", "");
        return sparse();
    }
    ascending const in_a(a), in_b(b);
    sparse const &x = in_a.list(), &y = in_b.list();
    row_table const rows(y);
    row_sums sums(b.cols);
    writer w(a.rows, b.cols);
    for (int first = 0, last = 0; first < x.nnz; first = last) {
        int const i = x.rowidx[first];
        std::int64_t terms = 0;
        for (; last < x.nnz && x.rowidx[last] == i; ++last) terms += rows.count(x.colidx[last]);
        sums.expect(terms);
        for (int p = first; p < last; ++p) {
            int const k = x.colidx[p], n = rows.count(k), at = rows.begin[k];
            if (n > 0) sums.add(x.values[p], y.colidx + at, y.values + at, n);
        }
        sums.move_to(w, i);
    }
    return w.result();
}

sparse operator~(sparse const& a)
{
    ascending const in_a(a);
    sparse const& x = in_a.list();
    sparse r(a.cols, a.rows);
    r.nnz = x.nnz;
    // Where the next entry of each column of a goes to.
    std::vector<int> next(static_cast<std::size_t>(a.cols) + 2);
    for (int k = 0; k < x.nnz; ++k) ++next[static_cast<std::size_t>(x.colidx[k]) + 1];
    std::partial_sum(next.begin(), next.end(), next.begin());
    for (int k = 0; k < x.nnz; ++k) {
        int const at = next[static_cast<std::size_t>(x.colidx[k])]++;
        r.rowidx[at] = x.colidx[k];
        r.colidx[at] = x.rowidx[k];
        r.values[at] = x.values[k];
    }
    return r;
}

void sparse::T()
{
    // Of one row or column the order is that of its transpose.
    if (rows > 1 && cols > 1) {
        *this = ~*this;
        return;
    }
    delindex();
    std::swap(rows, cols);
    std::swap(rowidx, colidx);
}

sparse row(sparse const& a, int n)
{
    if (n < 1 || n > a.rows) {
        errormessage("SPARSE", "sparse row(sparse,int)", "numer wiersza poza zakresem", "");
        return sparse();
    }
    ascending const in_a(a);
    sparse const& x = in_a.list();
    int const count = std::max(x.nnz, 0);
    int first, last;
    if (x.indexed) {
        first = std::max(x.row_begin[n], 0);
        last = std::max(x.row_end[n], 0);
    } else {
        first = static_cast<int>(std::lower_bound(x.rowidx, x.rowidx + count, n) - x.rowidx);
        last = static_cast<int>(std::upper_bound(x.rowidx, x.rowidx + count, n) - x.rowidx);
    }
    sparse r = spempty(1, a.cols);
    r.nnz = last - first;
    std::fill_n(r.rowidx, r.nnz, 1);
    std::copy_n(x.colidx + first, r.nnz, r.colidx);
    std::copy_n(x.values + first, r.nnz, r.values);
    return r;
}

void sparse::shiftrows(int k)
{
    shift(*this, rowidx, k, rows, "void shiftrows(int)");
}

void sparse::shiftcols(int k)
{
    shift(*this, colidx, k, cols, "void shiftcols(int)");
}

int sparse::minrow() const
{
    return extreme(*this, rowidx, rows, smaller);
}

int sparse::mincol() const
{
    return extreme(*this, colidx, cols, smaller);
}

int sparse::maxrow() const
{
    return extreme(*this, rowidx, 1, larger);
}

int sparse::maxcol() const
{
    return extreme(*this, colidx, 1, larger);
}

// clang-format off
#define FREE(name) int name(sparse const& a) { return a.name(); }
FREE(minrow) FREE(mincol) FREE(maxrow) FREE(maxcol)
#undef FREE
// clang-format on

} // namespace varnow
