// Internal: the cells of a vector, or of one line of a container, in their order.
#pragma once

#include <varnow/containers/data.h>
#include <varnow/containers/storage.h>

#include <type_traits>

namespace varnow::detail {

/// A view; C is the cell type, const or not. Cells that lie end to end are reached without the row
/// pointers.
template <class C> class line
{
public:
    using cell_type = std::remove_const_t<C>;

    line(C* first, int count) : n(count), first_(first), row_(nullptr), at_(0) {}
    /// The cells at column `at` of the rows.
    line(C* const* row, int cols, int at, int count) : n(count), first_(nullptr), row_(row), at_(at)
    {
        if (n > 0 && cols == 1 && straight_rows<C>(row, 1, n) == n) first_ = row[0];
    }
    operator line<C const>() const
    {
        return first_ ? line<C const>(first_, n) : line<C const>(row_, 0, at_, n);
    }

    C& operator[](int i) const { return first_ ? first_[i] : row_[i][at_]; }
    /// The cells as an array, or null where they do not lie end to end.
    C* array() const { return first_; }

    int const n;

private:
    C* first_;
    C* const* row_;
    int at_;
};

template <class C, class D> line<C> row_of(D& x, int i)
{
    return line<C>(x.cols > 0 ? x.cell[i] : nullptr, x.cols);
}
template <class C, class D> line<C> column_of(D& x, int j)
{
    return line<C>(x.cell, x.cols, j, x.rows);
}

/// More than one row and more than one column.
template <class T> bool beyond_vector(data<T> const& x)
{
    return x.rows > 1 && x.cols > 1;
}

/// All cells of a vector; one of a single cell counts as a row.
template <class C, class D> line<C> cells_of(D& x)
{
    if (x.rows < 1 || x.cols < 1) return line<C>(nullptr, 0);
    return x.rows == 1 ? row_of<C>(x, 0) : column_of<C>(x, 0);
}
template <class T> line<T> cells(data<T>& x)
{
    return cells_of<T>(x);
}
template <class T> line<T const> cells(data<T> const& x)
{
    return cells_of<T const>(x);
}

} // namespace varnow::detail
