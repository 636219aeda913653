// One entry: search and insertion.
#include <varnow/sparse/sparse.h>

#include <varnow/core/messages.h>

#include <algorithm>

namespace varnow {

namespace {

// Apart from the search, whose frame it would burden.
[[gnu::noinline]] bool refuse_outside(sparse const& s, int i, int j, char const* routine)
{
    errormessage("SPARSE", routine, "indeks poza zakresem",
                 detail::index_detail(s.rows, s.cols, i, j));
    return false;
}

bool is_inside(sparse const& s, int i, int j, char const* routine)
{
    if (i >= 1 && i <= s.rows && j >= 1 && j <= s.cols) return true;
    return refuse_outside(s, i, j, routine);
}

// Where the search for an entry stopped: at it, or at the first one behind it. For an indexed row
// without entries that is its end.
struct place
{
    int at;
    bool found;
};

// Entries ascend without repeats, so at most `before` of n stand before the one in search and at
// most room - before behind the others; where all are stored, that leaves one position.
template <class F> int first_not(int n, int before, int room, F const& precedes)
{
    int low = std::max(0, n - (room - before)), left = std::min(n, before) - low;
    while (left > 0) {
        int const half = left / 2;
        bool const behind = precedes(low + half);
        low = behind ? low + half + 1 : low;
        left = behind ? left - half - 1 : half;
    }
    return low;
}

template <class F> int first_not_by_walk(int n, F const& precedes)
{
    int k = 0;
    while (k < n && precedes(k)) ++k;
    return k;
}

place find_in_row(sparse const& s, int i, int j)
{
    int const first = s.row_begin[i], last = s.row_end[i];
    if (first < 0 || first >= last) return {last, false};
    int const* const column = s.colidx + first;
    auto const precedes = [=](int k) { return column[k] < j; };
    int const k = s.sorted ? first_not(last - first, j - 1, s.cols, precedes)
                           : first_not_by_walk(last - first, precedes);
    return {first + k, first + k < last && column[k] == j};
}

place find_in_list(sparse const& s, int i, int j)
{
    int const n = std::max(s.nnz, 0);
    auto const precedes = [&](int k) {
        return s.rowidx[k] < i || (s.rowidx[k] == i && s.colidx[k] < j);
    };
    int const k = s.sorted ? first_not(n, (i - 1) * s.cols + j - 1, s.rows * s.cols, precedes)
                           : first_not_by_walk(n, precedes);
    return {k, k < n && s.rowidx[k] == i && s.colidx[k] == j};
}

place find(sparse const& s, int i, int j)
{
    return s.indexed ? find_in_row(s, i, j) : find_in_list(s, i, j);
}

bool is_behind_all(sparse const& s, int i, int j)
{
    if (s.nnz < 1) return true;
    int const row = s.rowidx[s.nnz - 1];
    return s.sorted && (i > row || (i == row && j > s.colidx[s.nnz - 1]));
}

double& append(sparse& s, int i, int j)
{
    int const at = std::max(s.nnz, 0);
    if (s.indexed) {
        if (s.row_begin[i] < 0) s.row_begin[i] = at;
        s.row_end[i] = at + 1;
    }
    s.rowidx[at] = i;
    s.colidx[at] = j;
    s.nnz = at + 1;
    return s.values[at] = 0.0;
}

// Makes room for an entry of row i in the index, and gives its position. `at` is where the search
// in the row stopped.
int insert_in_index(sparse& s, int i, int at)
{
    int later = i + 1;
    if (s.row_begin[i] < 0 || s.row_begin[i] >= s.row_end[i]) {
        while (later <= s.rows && s.row_begin[later] < 0) ++later;
        at = later <= s.rows ? s.row_begin[later] : s.nnz;
        s.row_begin[i] = at;
        s.row_end[i] = at;
    }
    ++s.row_end[i];
    for (; later <= s.rows; ++later) {
        s.row_begin[later] += s.row_begin[later] >= 0;
        s.row_end[later] += s.row_end[later] >= 0;
    }
    return at;
}

void insert(sparse& s, int i, int j, int at)
{
    auto const up = [&](auto* array) {
        std::copy_backward(array + at, array + s.nnz, array + s.nnz + 1);
    };
    up(s.rowidx);
    up(s.colidx);
    up(s.values);
    s.rowidx[at] = i;
    s.colidx[at] = j;
    s.values[at] = 0.0;
    ++s.nnz;
}

} // namespace

int sparse::iselem(int i, int j) const
{
    return is_inside(*this, i, j, "int iselem(int,int)") && find(*this, i, j).found;
}

int sparse::iszero(int i, int j) const
{
    return is_inside(*this, i, j, "int iszero(int,int)") && !find(*this, i, j).found;
}

double sparse::get(int i, int j) const
{
    if (!is_inside(*this, i, j, "double get(int,int)")) return 0.0;
    place const p = find(*this, i, j);
    return p.found ? values[p.at] : 0.0;
}

void sparse::set(int i, int j, double v)
{
    if (!is_inside(*this, i, j, "void set(int,int,double)")) return;
    place const p = find(*this, i, j);
    if (p.found)
        values[p.at] = v;
    else
        errormessage("SPARSE", "void set(int,int,double)", "odwolanie od pustego elementu",
                     Text(" ( ") + i + " , " + j + " )");
}

double& sparse::operator()(int i, int j)
{
    static double nowhere;
    char const* const routine = "double & operator ()(int,int)";
    if (!is_inside(*this, i, j, routine)) return nowhere = 0.0;
    if (is_behind_all(*this, i, j)) return append(*this, i, j);
    place const p = find(*this, i, j);
    if (p.found) return values[p.at];
    if (nnz == rows * cols) {
        errormessage("SPARSE", routine, "powtorzone pozycje", Text(" ( ") + i + " , " + j + " )");
        return nowhere = 0.0;
    }
    int const at = indexed ? insert_in_index(*this, i, p.at) : p.at;
    insert(*this, i, j, at);
    return values[at];
}

double& sparse::operator[](int k)
{
    static double nowhere;
    if (k >= 1 && k <= nnz) return values[k - 1];
    errormessage("SPARSE", "double & operator [](int)", "indeks poza zakresem",
                 Text(nnz) + " : [ " + k + " ]");
    return nowhere = 0.0;
}

double sparse::operator[](int k) const
{
    return const_cast<sparse&>(*this)[k];
}

} // namespace varnow
