#include <varnow/sparse/sparse.h>

#include <varnow/core/messages.h>
#include <varnow/sparse/threshold.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace varnow {

namespace {

// rows * cols, which fits once the size has been let in.
int room(sparse const& s)
{
    return s.rows * s.cols;
}

bool fits(int r, int c, char const* routine)
{
    if (r >= 0 && c >= 0 && std::int64_t(r) * c <= INT_MAX) return true;
    errormessage("SPARSE", routine, "niewlasciwy rozmiar macierzy", Text(r) + " x " + c);
    return false;
}

// One block for the three arrays, of which only used pages cost anything; the values, which want
// the widest alignment, are its begin.
void release(sparse& s) noexcept
{
    ::operator delete(s.values);
    s.rows = s.cols = 0;
    s.nnz = -1;
    s.rowidx = s.colidx = nullptr;
    s.values = nullptr;
}

void allocate(sparse& s, int r, int c)
{
    std::size_t const n = std::size_t(r) * std::size_t(c);
    if (n > 0) {
        s.values = static_cast<double*>(::operator new(n*(sizeof(double) + 2 * sizeof(int))));
        s.rowidx = reinterpret_cast<int*>(s.values + n);
        s.colidx = s.rowidx + n;
    }
    s.rows = r;
    s.cols = c;
}

// Another shape, the entries undefined; the arrays stay where their length does.
void reshape(sparse& s, int r, int c)
{
    if (r * c != room(s)) {
        release(s);
        allocate(s, r, c);
    }
    s.rows = r;
    s.cols = c;
}

void allocate_index(sparse& s)
{
    std::size_t const n = std::size_t(s.rows) + 1;
    s.row_begin = new int[2 * n];
    s.row_end = s.row_begin + n;
    s.row_begin[0] = s.row_end[0] = -1;
    s.indexed = 1;
}

void copy_index(sparse const& from, sparse& to)
{
    std::copy_n(from.row_begin + 1, to.rows, to.row_begin + 1);
    std::copy_n(from.row_end + 1, to.rows, to.row_end + 1);
}

void copy_entries(sparse const& from, sparse& to)
{
    int const n = std::max(from.nnz, 0);
    std::copy_n(from.rowidx, n, to.rowidx);
    std::copy_n(from.colidx, n, to.colidx);
    std::copy_n(from.values, n, to.values);
    to.nnz = from.nnz;
    to.sorted = from.sorted;
}

void exchange(sparse& a, sparse& b) noexcept
{
    std::swap(a.rows, b.rows);
    std::swap(a.cols, b.cols);
    std::swap(a.nnz, b.nnz);
    std::swap(a.rowidx, b.rowidx);
    std::swap(a.colidx, b.colidx);
    std::swap(a.values, b.values);
    std::swap(a.indexed, b.indexed);
    std::swap(a.row_begin, b.row_begin);
    std::swap(a.row_end, b.row_end);
    std::swap(a.sorted, b.sorted);
}

// Appends the entries of s for which keep(k) holds to r, which may be s.
template <class F> void copy_if(sparse const& s, sparse& r, F const& keep)
{
    int n = 0;
    for (int k = 0; k < s.nnz; ++k)
        if (keep(k)) {
            r.rowidx[n] = s.rowidx[k];
            r.colidx[n] = s.colidx[k];
            r.values[n] = s.values[k];
            ++n;
        }
    r.nnz = n;
}

} // namespace

sparse::sparse() noexcept
    : rows(0),
      cols(0),
      nnz(0),
      rowidx(nullptr),
      colidx(nullptr),
      values(nullptr),
      indexed(0),
      row_begin(nullptr),
      row_end(nullptr),
      sorted(1)
{
}

sparse::sparse(int r, int c) : sparse()
{
    nnz = -1;
    if (fits(r, c, "sparse(int,int)")) allocate(*this, r, c);
}

sparse::sparse(matrix const& m) : sparse()
{
    if (!fits(m.rows, m.cols, "sparse(matrix)")) return;
    allocate(*this, m.rows, m.cols);
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j)
            if (detail::is_kept(m.cell[i][j])) {
                rowidx[nnz] = i + 1;
                colidx[nnz] = j + 1;
                values[nnz] = m.cell[i][j];
                ++nnz;
            }
}

sparse::sparse(sparse const& b) : sparse()
{
    *this = b;
}

sparse::sparse(sparse&& b) noexcept : sparse()
{
    exchange(*this, b);
}

sparse::~sparse()
{
    free();
}

sparse& sparse::operator=(sparse const& b)
{
    if (this == &b) return *this;
    if (rows != b.rows || !b.indexed) delindex();
    reshape(*this, b.rows, b.cols);
    copy_entries(b, *this);
    if (b.indexed) {
        if (!indexed) allocate_index(*this);
        copy_index(b, *this);
    }
    return *this;
}

sparse& sparse::operator=(sparse&& b) noexcept
{
    exchange(*this, b);
    return *this;
}

void sparse::free() noexcept
{
    delindex();
    release(*this);
    nnz = -1;
    sorted = 1;
}

void sparse::resize(int r, int c)
{
    if ((r == rows && c == cols) || !fits(r, c, "void resize(int,int)")) return;
    delindex();
    nnz = -1;
    sorted = 1;
    reshape(*this, r, c);
}

void sparse::resizec(int r, int c)
{
    if (!fits(r, c, "void resizec(int,int)")) return;
    int const had_index = indexed;
    delindex();
    auto const fits_in = [&](int k) { return rowidx[k] <= r && colidx[k] <= c; };
    if (r * c == room(*this)) {
        if (nnz >= 0) copy_if(*this, *this, fits_in);
        reshape(*this, r, c);
    } else {
        sparse kept(r, c);
        if (nnz >= 0) copy_if(*this, kept, fits_in);
        kept.sorted = sorted;
        *this = std::move(kept);
    }
    if (had_index) mkindex();
}

void sparse::pack()
{
    delindex();
    if (nnz >= 0) copy_if(*this, *this, [this](int k) { return detail::is_kept(values[k]); });
}

// From the last entry backward, so that no entry is overwritten before it has moved.
void sparse::unpack()
{
    delindex();
    int i = rows, j = cols, at = room(*this) - 1;
    auto const put = [&](double x) {
        rowidx[at] = i;
        colidx[at] = j;
        values[at] = x;
        --at;
        if (--j == 0) {
            j = cols;
            --i;
        }
    };
    for (int k = nnz - 1; k >= 0; --k) {
        int const place = (rowidx[k] - 1) * cols + colidx[k] - 1;
        double const x = values[k];
        while (at > place) put(0.0);
        // Of an unsorted list, what stands behind its place is lost.
        if (at == place) put(x);
    }
    while (at >= 0) put(0.0);
    nnz = room(*this);
    sorted = 1;
}

void sparse::synch(sparse const& ref)
{
    if (rows != ref.rows || cols != ref.cols) {
        errormessage("SPARSE", "void synch(sparse)", "niezgodne wymiary macierzy referencyjnej",
                     "");
        return;
    }
    if (this != &ref) {
        int const n = std::max(ref.nnz, 0);
        std::vector<double> kept(static_cast<std::size_t>(n));
        for (int k = 0; k < n; ++k) kept[std::size_t(k)] = get(ref.rowidx[k], ref.colidx[k]);
        std::copy_n(ref.rowidx, n, rowidx);
        std::copy_n(ref.colidx, n, colidx);
        std::copy_n(kept.data(), n, values);
        nnz = n;
        sorted = ref.sorted;
    }
    delindex();
}

void sparse::mkindex()
{
    if (indexed) return;
    allocate_index(*this);
    std::fill_n(row_begin + 1, rows, -1);
    std::fill_n(row_end + 1, rows, -1);
    for (int k = 0, row = 0; k < nnz; ++k)
        if (rowidx[k] > row) {
            row = rowidx[k];
            row_begin[row] = k;
        }
    for (int i = rows, end = nnz; i >= 1; --i)
        if (row_begin[i] >= 0) {
            row_end[i] = end;
            end = row_begin[i];
        }
}

void sparse::delindex() noexcept
{
    delete[] row_begin;
    row_begin = row_end = nullptr;
    indexed = 0;
}

void sparse::cpyindex(sparse const& ref)
{
    if (rows != ref.rows || cols != ref.cols) {
        errormessage("SPARSE", "void cpyindex(sparse)", "niezgodne wymiary macierzy referencyjnej",
                     "");
        return;
    }
    if (indexed) return;
    // Positions of another list may lie behind the entries of this one.
    if (!ref.indexed || ref.nnz != nnz) return mkindex();
    allocate_index(*this);
    copy_index(ref, *this);
}

sparse::operator matrix() const
{
    if (rows == 0 || cols == 0) {
        errormessage("SPARSE", "operator matrix()", "konwersja niemozliwa, zerowy rozmiar obiektu",
                     "");
        return matrix();
    }
    matrix m(rows, cols);
    m.zeros();
    for (int k = 0; k < nnz; ++k) m.cell[rowidx[k] - 1][colidx[k] - 1] = values[k];
    return m;
}

sparse::operator double() const
{
    if (rows != 1 || cols != 1) {
        errormessage("SPARSE", "operator double()",
                     "konwersja niemozliwa, niewlasciwy rozmiar macierzy", "");
        return 0.0;
    }
    return nnz == 1 ? values[0] : 0.0;
}

} // namespace varnow
