// Internal: a hash table of positions, for everything that asks where a cell stands.
#pragma once

#include <varnow/core/text.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace varnow::detail {

using hash_word = std::uint32_t;

/// Folds the product of two words, so that every bit of either reaches the result.
inline std::uint64_t hash_fold(std::uint64_t a, std::uint64_t b)
{
    __extension__ using wide = unsigned __int128;
    wide const p = static_cast<wide>(a) * b;
    return static_cast<std::uint64_t>(p) ^ static_cast<std::uint64_t>(p >> 64);
}

/// Equal numbers have equal hashes, both zeros included.
inline hash_word hash_of(double x)
{
    x += 0.0;
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    bits = hash_fold(bits ^ 0x8a91a6d40bf42040u, 0xd6e8feb86659fd93u);
    return static_cast<hash_word>(bits >> 32 ^ bits);
}

inline hash_word hash_of(Text const& x)
{
    auto bytes = [](char const* from, std::size_t n) {
        std::uint64_t r = 0;
        std::memcpy(&r, from, n);
        return r;
    };
    std::uint64_t h = 0x9e3779b97f4a7c15u ^ static_cast<std::uint64_t>(x.len);
    char const* p = x.str;
    std::size_t n = static_cast<std::size_t>(x.len);
    for (; n > 8; n -= 8, p += 8) h = hash_fold(h ^ bytes(p, 8), 0xd6e8feb86659fd93u);
    // What is left, by reads of fixed size.
    std::uint64_t rest = 0;
    if (x.len >= 8)
        rest = bytes(p + n - 8, 8);
    else if (n >= 4)
        rest = bytes(p, 4) | bytes(p + n - 4, 4) << 32;
    else if (n > 0)
        rest = bytes(p, 1) | bytes(p + n / 2, 1) << 8 | bytes(p + n - 1, 1) << 16;
    h = hash_fold(h ^ rest, 0xa0761d6478bd642fu);
    return static_cast<hash_word>(h >> 32 ^ h);
}

/// Distinct keys by their positions. The keys stay with the caller, who compares them:
/// `same(position)` tells whether the key stored there equals the one at hand.
class position_table
{
public:
    position_table() : slots_(least_slots), mask_(least_slots - 1), count_(0) {}

    int size() const { return count_; }

    /// Position of an equal key, or -1.
    template <class Same> int find(hash_word hash, Same same) const
    {
        return slots_[seek(hash, same)].position;
    }

    /// The same, and when there is none the key goes in under the position.
    template <class Same> int find_or_add(hash_word hash, int position, Same same)
    {
        slot& s = slots_[seek(hash, same)];
        if (s.position >= 0) return s.position;
        s = slot{hash, position};
        if (static_cast<std::size_t>(++count_) * 2 > slots_.size()) grow();
        return -1;
    }

private:
    struct slot
    {
        hash_word hash = 0;
        int position = -1;
    };
    static constexpr std::size_t least_slots = 64;

    template <class Same> std::size_t seek(hash_word hash, Same& same) const
    {
        std::size_t k = hash & mask_;
        while (slots_[k].position >= 0 && !(slots_[k].hash == hash && same(slots_[k].position)))
            k = (k + 1) & mask_;
        return k;
    }

    void grow()
    {
        std::vector<slot> const old = std::move(slots_);
        slots_ = std::vector<slot>(old.size() * 4);
        mask_ = slots_.size() - 1;
        for (slot const& s : old) {
            if (s.position < 0) continue;
            std::size_t k = s.hash & mask_;
            while (slots_[k].position >= 0) k = (k + 1) & mask_;
            slots_[k] = s;
        }
    }

    std::vector<slot> slots_;
    std::size_t mask_;
    int count_;
};

} // namespace varnow::detail
