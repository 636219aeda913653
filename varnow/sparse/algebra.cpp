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

// A list as its operand in ascending order. Of one that a file or a hand left otherwise it is a
// sorted copy, in which the last entry of a position counts.
class ascending
{
public:
    explicit ascending(sparse const& s) : list_(is_ascending(s) ? s : held_)
    {
        if (&list_ == &held_) sort_in(s);
    }
    ascending(ascending const&) = delete;
    ascending& operator=(ascending const&) = delete;
    sparse const& list() const { return list_; }

private:
    static bool is_ascending(sparse const& s)
    {
        int bad = 0;
        for (int k = 1; k < s.nnz; ++k)
            bad |= (s.rowidx[k - 1] > s.rowidx[k]) |
                   ((s.rowidx[k - 1] == s.rowidx[k]) & (s.colidx[k - 1] >= s.colidx[k]));
        return bad == 0;
    }

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
        result_.nnz = n_;
        return std::move(result_);
    }

private:
    sparse result_;
    int n_ = 0;
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

    std::vector<int> starts;
    int const* begin;
    int const* end;
};

// Sums of one row of a product, all 0 between rows. Which of them have been touched is marked in a
// bit each, unless they are so many that all are looked at.
class row_sums
{
public:
    explicit row_sums(int cols)
        : sums_(static_cast<std::size_t>(cols)), marks_((static_cast<std::size_t>(cols) + 63) / 64)
    {
    }

    void add(double factor, int const* column, double const* value, int n)
    {
        for (int k = 0; k < n; ++k) {
            std::size_t const j = static_cast<std::size_t>(column[k] - 1);
            sums_[j] += factor * value[k];
            marks_[j / 64] |= std::uint64_t(1) << (j % 64);
        }
    }

    void move_to(writer& w, int i)
    {
        for (std::size_t m = 0; m < marks_.size(); ++m) {
            for (std::uint64_t left = marks_[m]; left != 0; left &= left - 1) {
                std::size_t const j = 64 * m + static_cast<std::size_t>(__builtin_ctzll(left));
                w.put(i, static_cast<int>(j) + 1, sums_[j]);
                sums_[j] = 0.0;
            }
            marks_[m] = 0;
        }
    }

private:
    std::vector<double> sums_;
    std::vector<std::uint64_t> marks_;
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
    for (int p = 0; p < x.nnz;) {
        int const i = x.rowidx[p];
        for (; p < x.nnz && x.rowidx[p] == i; ++p) {
            int const k = x.colidx[p], first = rows.begin[k];
            if (first < rows.end[k])
                sums.add(x.values[p], y.colidx + first, y.values + first, rows.end[k] - first);
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
        first = x.row_begin[n];
        last = x.row_end[n];
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
