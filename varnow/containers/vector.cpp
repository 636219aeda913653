#include <varnow/containers/vector.h>

#include <varnow/containers/storage.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>
#include <utility>

namespace varnow {

namespace {

int* new_elements(int n)
{
    if (n < 0) throw std::bad_array_new_length();
    return n == 0 ? nullptr : new int[static_cast<std::size_t>(n)];
}

// n elements from a on by a fixed step.
Vector progression(int a, int step, int n)
{
    Vector r(n);
    // Unsigned, since the value behind the last element may not be an int.
    unsigned const first = static_cast<unsigned>(a), by = static_cast<unsigned>(step);
    for (int i = 0; i < n; ++i) r.v[i] = static_cast<int>(first + static_cast<unsigned>(i) * by);
    return r;
}

template <class F> Vector map(Vector const& a, F f)
{
    Vector r(a.n);
    for (int i = 0; i < a.n; ++i) r.v[i] = f(a.v[i]);
    return r;
}

template <class F> Vector zip(Vector const& a, Vector const& b, F f)
{
    if (a.n != b.n) return Vector();
    Vector r(a.n);
    for (int i = 0; i < a.n; ++i) r.v[i] = f(a.v[i], b.v[i]);
    return r;
}

} // namespace

Vector::Vector(int count) : n(0), v(new_elements(count))
{
    n = count;
}

Vector::Vector(std::initializer_list<int> values)
    : Vector(detail::checked_size(static_cast<std::int64_t>(values.size())))
{
    std::copy(values.begin(), values.end(), v);
}

Vector::Vector(Vector const& b) : Vector(b.n)
{
    std::copy(b.v, b.v + b.n, v);
}

Vector::Vector(Vector&& b) noexcept : n(b.n), v(b.v)
{
    b.n = 0;
    b.v = nullptr;
}

Vector::~Vector()
{
    delete[] v;
}

Vector& Vector::operator=(Vector const& b)
{
    if (this == &b) return *this;
    resize(b.n);
    std::copy(b.v, b.v + b.n, v);
    return *this;
}

Vector& Vector::operator=(Vector&& b) noexcept
{
    std::swap(n, b.n);
    std::swap(v, b.v);
    return *this;
}

void Vector::resize(int count)
{
    if (n == count) return;
    int* const fresh = new_elements(count);
    delete[] v;
    v = fresh;
    n = count;
}

void Vector::fill(int x)
{
    std::fill(v, v + n, x);
}

void Vector::free() noexcept
{
    delete[] v;
    v = nullptr;
    n = 0;
}

void Vector::display(Text const& title) const
{
    std::fputc('\n', stdout);
    if (title.len > 0) {
        std::fwrite(title.str, 1, static_cast<std::size_t>(title.len), stdout);
        std::fputc('\n', stdout);
    }
    int width = 1;
    for (int i = 0; i < n; ++i) width = std::max(width, std::snprintf(nullptr, 0, "%i", v[i]));
    for (int i = 0; i < n; ++i) std::printf("%*i ", width, v[i]);
    std::fputs("\n\n", stdout);
}

Vector detail::listed(int count, std::initializer_list<int> values)
{
    Vector r(count);
    auto const given = static_cast<std::size_t>(count) < values.size()
                           ? static_cast<std::size_t>(count)
                           : values.size();
    int* const end = std::copy(values.begin(), values.begin() + given, r.v);
    std::fill(end, r.v + count, 0);
    return r;
}

Vector $(int n)
{
    return progression(1, 1, std::max(n, 0));
}

Vector $(int a, int b)
{
    return $(a, 1, b);
}

Vector $(int a, int s, int b)
{
    std::int64_t const way = std::int64_t(b) - a;
    bool const rising = way >= 0;
    int const n = detail::checked_size((rising ? way : -way) / s + 1);
    return progression(a, rising ? s : static_cast<int>(0u - static_cast<unsigned>(s)), n);
}

Vector filled(int x, int n)
{
    Vector r(n);
    r.fill(x);
    return r;
}
Vector vzeros(int n)
{
    return filled(0, n);
}
Vector vones(int n)
{
    return filled(1, n);
}

int sum(Vector const& a)
{
    unsigned s = 0; // wraps where a signed sum would be undefined
    for (int i = 0; i < a.n; ++i) s += static_cast<unsigned>(a.v[i]);
    return static_cast<int>(s);
}

Vector find(Vector const& a)
{
    int count = 0;
    for (int i = 0; i < a.n; ++i) count += a.v[i] != 0;
    Vector r(count);
    // No branch on the flag, which nothing predicts: a position is written ahead, and the next one
    // takes its place unless the flag was set.
    for (int k = 0, i = 0; k < count; ++i) {
        r.v[k] = i + 1;
        k += a.v[i] != 0;
    }
    return r;
}

Vector nindex(Vector const& a, int n)
{
    if (n < 1) return Vector();
    Vector keep = vones(n);
    for (int i = 0; i < a.n; ++i)
        if (a.v[i] < 0 && a.v[i] >= -n) keep.v[-a.v[i] - 1] = 0;
    return find(keep);
}

Vector operator-(Vector const& a)
{
    return map(a, [](int x) { return static_cast<int>(0u - static_cast<unsigned>(x)); });
}
Vector operator!(Vector const& a)
{
    return map(a, [](int x) { return int(x == 0); });
}
Vector operator&&(Vector const& a, Vector const& b)
{
    return zip(a, b, [](int x, int y) { return int((x != 0) & (y != 0)); });
}
Vector operator||(Vector const& a, Vector const& b)
{
    return zip(a, b, [](int x, int y) { return int((x | y) != 0); });
}

} // namespace varnow
