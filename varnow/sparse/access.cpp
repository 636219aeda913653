// One entry: search and insertion.
#include <varnow/sparse/sparse.h>

#include <varnow/core/messages.h>

#include <algorithm>

namespace varnow {

namespace {

bool is_inside(sparse const& s, int i, int j, char const* routine)
{
    if (i >= 1 && i <= s.rows && j >= 1 && j <= s.cols) return true;
    errormessage("SPARSE", routine, "indeks poza zakresem",
                 detail::index_detail(s.rows, s.cols, i, j));
    return false;
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
    int low = std::max(0, n - (room - before)), high = std::min(n, before);
    while (low < high) {
        int const middle = low + (high - low) / 2;
        if (precedes(middle))
            low = middle + 1;
        else
            high = middle;
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
    if (n == 0 || (s.sorted && precedes(n - 1))) return {n, false};
    int const k = s.sorted ? first_not(n, (i - 1) * s.cols + j - 1, s.rows * s.cols, precedes)
                           : first_not_by_walk(n, precedes);
    return {k, k < n && s.rowidx[k] == i && s.colidx[k] == j};
}

place find(sparse const& s, int i, int j)
{
    return s.indexed ? find_in_row(s, i, j) : find_in_list(s, i, j);
}

// Makes room for an entry of row i in the index, and gives its position. `at` is where the search
// in the row stopped.
int insert_in_index(sparse& s, int i, int at)
{
    int later = i + 1;
    if (s.row_begin[i] < 0 || s.row_begin[i] >= s.row_end[i]) {
        at = s.nnz;
        // Behind the last entry there are no rows to look at.
        if (s.nnz > 0 && !(s.sorted && s.rowidx[s.nnz - 1] < i)) {
            while (later <= s.rows && s.row_begin[later] < 0) ++later;
            if (later <= s.rows) at = s.row_begin[later];
        }
        s.row_begin[i] = at;
        s.row_end[i] = at;
    }
    ++s.row_end[i];
    if (at < s.nnz || !s.sorted)
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
    place const p = find(*this, i, j);
    if (p.found) return values[p.at];
    if (nnz < 0) nnz = 0;
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
