// Internal: a column as numbers of its distinct cells, and rows brought together by such numbers.
#pragma once

#include <varnow/containers/line.h>
#include <varnow/containers/matrix.h>
#include <varnow/containers/position_table.h>
#include <varnow/containers/sort_engine.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

namespace varnow::detail {

/// Row i holds the distinct cell number code[i], which stands first in row first[code[i]]. The code
/// of a NaN, which equals nothing, is -1.
struct factor
{
    std::vector<int> code;
    std::vector<int> first;

    int levels() const { return static_cast<int>(first.size()); }

    /// Level order[k] becomes level k.
    void renumber(std::vector<int> const& order)
    {
        std::vector<int> rank(first.size()), moved(first.size());
        for (int k = 0; k < levels(); ++k) {
            rank[order[k]] = k;
            moved[k] = first[order[k]];
        }
        for (int& c : code)
            if (c >= 0) c = rank[c];
        first.swap(moved);
    }
};

inline hash_word hash_of(std::int64_t x)
{
    std::uint64_t const bits =
        hash_fold(static_cast<std::uint64_t>(x) ^ 0x8a91a6d40bf42040u, 0xd6e8feb86659fd93u);
    return static_cast<hash_word>(bits >> 32 ^ bits);
}

/// What a level is told by, so that the rows of its cells, which lie anywhere, are left alone.
template <class T> struct level_key
{
    explicit level_key(T x) : x_(x) {}
    friend bool operator==(level_key a, level_key b) { return a.x_ == b.x_; }

private:
    T x_;
};
/// A text of up to 16 bytes as a whole; a longer one is looked at when its ends agree.
template <> struct level_key<Text>
{
    explicit level_key(Text const& x) : len_(static_cast<std::size_t>(x.len)), str_(x.str)
    {
        if (len_ >= sizeof begin_) {
            std::memcpy(&begin_, str_, sizeof begin_);
            std::memcpy(&end_, str_ + len_ - sizeof end_, sizeof end_);
        } else {
            for (std::size_t k = 0; k < len_; ++k)
                begin_ = begin_ << 8 | static_cast<unsigned char>(str_[k]);
        }
    }
    friend bool operator==(level_key const& a, level_key const& b)
    {
        constexpr std::size_t both = sizeof begin_ + sizeof end_;
        return a.len_ == b.len_ && a.begin_ == b.begin_ && a.end_ == b.end_ &&
               (a.len_ <= both || std::memcmp(a.str_, b.str_, a.len_) == 0);
    }

private:
    std::size_t len_;
    char const* str_;
    std::uint64_t begin_ = 0, end_ = 0;
};

/// Of the cells at(0) to at(n - 1), levels in the order of their first appearance.
template <class At> factor factor_of(At at, int n)
{
    using cell = std::decay_t<decltype(at(0))>;
    factor f;
    f.code.resize(n);
    position_table seen;
    std::vector<level_key<cell>> keys;
    for (int i = 0; i < n; ++i) {
        auto const& x = at(i);
        if constexpr (std::is_same<cell, double>::value)
            if (x != x) {
                f.code[i] = -1;
                continue;
            }
        level_key<cell> const key(x);
        int const k =
            seen.find_or_add(hash_of(x), f.levels(), [&](int level) { return keys[level] == key; });
        f.code[i] = k < 0 ? f.levels() : k;
        if (k < 0) {
            f.first.push_back(i);
            keys.push_back(key);
        }
    }
    return f;
}
template <class T> factor factor_of(line<T const> const& x)
{
    return factor_of([&x](int i) -> T const& { return x[i]; }, x.n);
}

/// Levels ascending by the order of Text.
inline factor sorted_factor(line<Text const> const& x)
{
    factor f = factor_of(x);
    std::vector<Text const*> keys;
    for (int i : f.first) keys.push_back(&x[i]);
    std::vector<int> order(keys.size());
    sorted_positions(keys.data(), f.levels(), Ascending, order.data());
    f.renumber(order);
    return f;
}

/// The rows of each level side by side, in their order. Refers to the codes of the factor, none of
/// which may be -1.
class gathered
{
public:
    explicit gathered(factor const& f) : code_(f.code), start_(f.first.size() + 1)
    {
        for (int c : code_) ++start_[c + 1];
        for (std::size_t g = 1; g < start_.size(); ++g) start_[g] += start_[g - 1];
    }

    /// Where the first row of a level stands, and how many rows it has.
    int start(int level) const { return start_[level]; }
    int count(int level) const { return start_[level + 1] - start_[level]; }

    /// at(i) of every row i, in its place.
    template <class At> auto values(At at) const
    {
        std::vector<int> next(start_.begin(), start_.end() - 1);
        std::vector<std::decay_t<decltype(at(0))>> v(code_.size());
        for (std::size_t i = 0; i < v.size(); ++i) v[next[code_[i]]++] = at(static_cast<int>(i));
        return v;
    }
    std::vector<int> rows() const
    {
        return values([](int i) { return i; });
    }

    /// Those of the values that belong to a level, as one column.
    void put(std::vector<double> const& values, int level, matrix& column) const
    {
        column.resize(count(level), 1);
        for (int i = 0; i < column.rows; ++i) column.cell[i][0] = values[start_[level] + i];
    }

private:
    std::vector<int> const& code_;
    std::vector<int> start_;
};

} // namespace varnow::detail
