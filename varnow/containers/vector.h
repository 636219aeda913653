// Vector: lists of 1-based positions and 0/1 flags.
#pragma once

#include <varnow/core/text.h>

#include <initializer_list>
#include <type_traits>

namespace varnow {

/// An array of int: 1-based row or column numbers, or flags. A list of negative numbers selects the
/// complement. Copies are deep; the empty Vector has a null array.
class VARNOW_API Vector
{
public:
    int n;
    int* v;

    Vector() noexcept : n(0), v(nullptr) {}
    /// n elements, not initialised.
    explicit Vector(int count);
    Vector(std::initializer_list<int> values);
    Vector(Vector const& b);
    Vector(Vector&& b) noexcept;
    ~Vector();
    Vector& operator=(Vector const& b);
    Vector& operator=(Vector&& b) noexcept;

    /// Another length drops the content; the same length keeps it.
    void resize(int count);
    void fill(int x);
    void free() noexcept;
    /// Prints the title on a line of its own, unless empty, and the elements to standard output.
    void display(Text const& title = Text()) const;
};

namespace detail {
template <class... A>
using if_integers =
    std::enable_if_t<(sizeof...(A) > 0) && (std::is_integral<A>::value && ...), int>;
VARNOW_API Vector listed(int count, std::initializer_list<int> values);
} // namespace detail

/// The given integers in order. Of numbers with a fraction `c` makes a matrix, of texts a table.
template <class... A, detail::if_integers<A...> = 0> Vector c(A... values)
{
    return Vector{static_cast<int>(values)...};
}

/// The first `count` of the values that follow.
template <class... A> Vector vi(int count, A... values)
{
    return detail::listed(count, {static_cast<int>(values)...});
}

/// 1 to n; no elements for n < 1.
VARNOW_API Vector $(int n);
/// From a to b, both included, rising or falling by 1.
VARNOW_API Vector $(int a, int b);
/// From a toward b in steps of the positive size s in either direction; s of 0 is a division by
/// zero.
VARNOW_API Vector $(int a, int s, int b);
VARNOW_API Vector filled(int x, int n);
VARNOW_API Vector vzeros(int n);
VARNOW_API Vector vones(int n);

VARNOW_API int sum(Vector const& a);
/// The 1-based positions of the elements that are not 0, rising.
VARNOW_API Vector find(Vector const& a);
/// The positive complement, within 1 to n, of a list of negative positions.
VARNOW_API Vector nindex(Vector const& a, int n);

VARNOW_API Vector operator-(Vector const& a);
/// 1 where the element is 0, else 0.
VARNOW_API Vector operator!(Vector const& a);
/// 1 where both (either) are not 0; vectors of different lengths give the empty Vector.
VARNOW_API Vector operator&&(Vector const& a, Vector const& b);
VARNOW_API Vector operator||(Vector const& a, Vector const& b);

} // namespace varnow
