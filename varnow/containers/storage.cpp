#include <varnow/containers/storage.h>

#include <varnow/core/platform.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>

namespace varnow::detail {

namespace {

// What stands in front of every array that this file hands out.
struct alignas(16) block
{
    std::size_t bytes;
    std::size_t rows; // or the count of names
    std::size_t cols;
    std::size_t kind;
};
constexpr std::size_t kind_names = 1, kind_numbers = 2, kind_texts = 3;
template <class T>
constexpr std::size_t kind_of = std::is_same<T, Text>::value ? kind_texts : kind_numbers;

// Released large arrays wait here for the next request of the same shape, with row pointers and
// empty texts in place: fresh pages cost more than most loops over them. The oldest goes first.
class shelf
{
public:
    block* take(std::size_t kind, std::size_t rows, std::size_t cols) noexcept
    {
        std::lock_guard<std::mutex> guard(lock_);
        for (std::size_t k = count_; k-- > 0;) {
            block* const b = kept_[k];
            if (b->kind != kind || b->rows != rows || b->cols != cols) continue;
            forget(k);
            return b;
        }
        return nullptr;
    }

    void put(block* b) noexcept
    {
        std::lock_guard<std::mutex> guard(lock_);
        while (count_ == kept_.size() || (count_ > 0 && bytes_ + b->bytes > most_bytes)) {
            block* const oldest = kept_[0];
            forget(0);
            std::free(oldest);
        }
        kept_[count_++] = b;
        bytes_ += b->bytes;
    }

    static constexpr std::size_t most_bytes = std::size_t(64) << 20;

private:
    void forget(std::size_t k) noexcept
    {
        bytes_ -= kept_[k]->bytes;
        std::copy(kept_.begin() + static_cast<std::ptrdiff_t>(k) + 1,
                  kept_.begin() + static_cast<std::ptrdiff_t>(count_),
                  kept_.begin() + static_cast<std::ptrdiff_t>(k));
        --count_;
    }

    std::mutex lock_;
    std::array<block*, 8> kept_{};
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;
};

// Never destroyed, since containers of static storage may be released after it.
shelf& kept_blocks()
{
    static shelf& s = *new shelf;
    return s;
}

#if defined(__SANITIZE_ADDRESS__)
#define VARNOW_KEEP_BLOCKS 0 // so that a use after release is seen
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VARNOW_KEEP_BLOCKS 0
#endif
#endif
#ifndef VARNOW_KEEP_BLOCKS
#define VARNOW_KEEP_BLOCKS 1
#endif

bool worth_keeping(std::size_t bytes)
{
    return VARNOW_KEEP_BLOCKS && bytes >= (std::size_t(1) << 16) && bytes <= shelf::most_bytes;
}

// A block of that shape, `fresh` when its content is not set up yet.
block* new_block(std::size_t kind, std::size_t rows, std::size_t cols, std::size_t bytes,
                 bool& fresh)
{
    if (worth_keeping(bytes))
        if (block* const b = kept_blocks().take(kind, rows, cols)) {
            fresh = false;
            return b;
        }
    // One byte more: also an array of nothing begins inside its block, where a search for leaks
    // finds it.
    block* const b = static_cast<block*>(std::malloc(bytes + 1));
    if (!b) throw std::bad_alloc();
    platform::advise_large_pages(b, bytes);
    *b = block{bytes, rows, cols, kind};
    fresh = true;
    return b;
}

void free_block(block* b) noexcept
{
    if (worth_keeping(b->bytes))
        kept_blocks().put(b);
    else
        std::free(b);
}

template <class T> T** row_pointers(block* b)
{
    return reinterpret_cast<T**>(b + 1);
}

// The cells stand behind the row pointers on a cache line.
template <class T> T* first_cell(block* b)
{
    auto const end = reinterpret_cast<std::uintptr_t>(row_pointers<T>(b) + b->rows);
    return reinterpret_cast<T*>((end + 63) & ~std::uintptr_t(63));
}

std::size_t checked_product(std::size_t a, std::size_t b)
{
    constexpr std::size_t most =
        static_cast<std::size_t>(std::numeric_limits<std::ptrdiff_t>::max()) / 4;
    if (b != 0 && a > most / b) throw std::bad_array_new_length();
    return a * b;
}

void reset(Text* texts, std::size_t n) noexcept
{
    in_pieces(static_cast<std::ptrdiff_t>(n), [texts](std::ptrdiff_t i, std::ptrdiff_t k) {
        if (all_empty(texts + i, k)) return;
        for (std::ptrdiff_t j = i; j < i + k; ++j) {
            texts[j].~Text();
            new (texts + j) Text();
        }
    });
}

// Whether the row pointers of a block that was kept stand as in a new one, going by some of them:
// where exchanges have mixed the rows, every loop over them would cost more.
template <class T> bool seems_straight(block* b)
{
    T* const first = first_cell<T>(b);
    std::size_t const step = b->rows / 64 + 1;
    for (std::size_t i = 0; i < b->rows; i += step)
        if (row_pointers<T>(b)[i] != first + i * b->cols) return false;
    return true;
}

} // namespace

template <class T> T** new_cells(int rows, int cols)
{
    if (rows < 0 || cols < 0) throw std::bad_array_new_length();
    std::size_t const r = static_cast<std::size_t>(rows), c = static_cast<std::size_t>(cols);
    std::size_t const cells = checked_product(checked_product(r, c), sizeof(T));
    std::size_t const bytes = sizeof(block) + r * sizeof(T*) + 63 + cells;
    bool fresh;
    block* const b = new_block(kind_of<T>, r, c, bytes, fresh);
    T** const row = row_pointers<T>(b);
    if (!fresh && seems_straight<T>(b)) return row;
    T* const first = first_cell<T>(b);
    for (std::size_t i = 0; i < r; ++i) row[i] = first + i * c;
    if constexpr (std::is_same<T, Text>::value)
        if (fresh)
            for (std::size_t k = 0; k < r * c; ++k) new (first + k) Text();
    return row;
}

template <class T> void free_cells(T** cell) noexcept
{
    if (!cell) return;
    block* const b = reinterpret_cast<block*>(cell) - 1;
    if constexpr (std::is_same<T, Text>::value) reset(first_cell<T>(b), b->rows * b->cols);
    free_block(b);
}

template double** new_cells<double>(int, int);
template Text** new_cells<Text>(int, int);
template void free_cells<double>(double**) noexcept;
template void free_cells<Text>(Text**) noexcept;

Text* new_names(int n)
{
    if (n < 0) throw std::bad_array_new_length();
    std::size_t const count = static_cast<std::size_t>(n);
    bool fresh;
    block* const b = new_block(kind_names, count, 0, sizeof(block) + count * sizeof(Text), fresh);
    Text* const names = reinterpret_cast<Text*>(b + 1);
    if (fresh)
        for (std::size_t i = 0; i < count; ++i) new (names + i) Text();
    return names;
}

void free_names(Text* names) noexcept
{
    if (!names) return;
    block* const b = reinterpret_cast<block*>(names) - 1;
    reset(names, b->rows);
    free_block(b);
}

int checked_size(std::int64_t n)
{
    if (n < 0 || n > std::numeric_limits<int>::max()) throw std::bad_array_new_length();
    return static_cast<int>(n);
}

} // namespace varnow::detail
