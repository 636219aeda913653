// What texts do with their buffers: take, copy, join, compare.
#include <varnow/core/textbuild.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
#define VARNOW_PLAIN_BUFFERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VARNOW_PLAIN_BUFFERS 1
#endif
#endif

namespace varnow {
namespace detail {

char empty_text[1] = {0};

namespace {

// Short buffers come from lists that every thread keeps for itself, since tables make and drop
// texts by the million; the others come from malloc.
std::size_t const unit = 16;

char* from_malloc(std::size_t size)
{
    void* const p = std::malloc(size);
    if (!p) throw std::bad_alloc();
    return static_cast<char*>(p);
}

} // namespace

#if defined(VARNOW_PLAIN_BUFFERS)

bool const pooled = false;

bool same_class(int, int)
{
    return false;
}

char const* readable_end(Text const& x)
{
    return x.str + x.len + 1;
}

// Sanitizers watch every buffer by itself, and thread-local storage is slow on Windows.
char* new_text(int len)
{
    return from_malloc(static_cast<std::size_t>(len) + 1);
}

void free_text(char* str, int) noexcept
{
    std::free(str);
}

#else

bool const pooled = true;

namespace {

// Buffers of 16, 32, ... 128 bytes; a text of len characters takes class len / 16.
int const classes = 8;

int class_of(int len)
{
    return static_cast<int>(static_cast<unsigned>(len) / unit);
}

bool same_class(int a, int b)
{
    return class_of(a) == class_of(b) && class_of(a) < classes;
}

} // namespace

char const* readable_end(Text const& x)
{
    if (x.len == 0 || class_of(x.len) >= classes) return x.str + x.len + 1;
    return x.str + unit * static_cast<std::size_t>(class_of(x.len) + 1);
}

namespace {

// A list is handed on as a whole when it holds so many buffers.
int const list_length = 1024;
std::size_t const chunk_size = 1 << 16;

// A free buffer: the rest of its list, and, in the first one, the next list.
struct node
{
    node* next;
    node* next_list;
};
static_assert(sizeof(node) <= unit, "the smallest buffer holds a node");

// Memory that was never used: the first bytes of a stretch tell its end.
struct stretch
{
    stretch* next;
    char* end;
};
std::size_t const least_stretch = unit * classes;

struct chunk
{
    chunk* next;
    alignas(unit) char bytes[chunk_size];
};

// What one thread keeps of a class: a list in use, and one in reserve, so that a thread on the
// edge between an empty and a full list doesn't run to the common store every time.
struct shelf
{
    node* list;
    node* reserve;
    int room; // how many buffers the list in use may still take
};

// Constant at the start and never destroyed, for texts that are released after everything else.
struct thread_state
{
    shelf shelves[classes];
    char* fresh; // the thread's stretch of unused memory
    char* fresh_end;
    enum { unused, open, ended } stage;
};
__attribute__((tls_model("initial-exec"))) thread_local thread_state mine;

// What no thread owns, and all chunks, so that they can always be found.
struct store
{
    std::mutex guard;
    node* lists[classes];
    stretch* stretches;
    chunk* chunks;
} common;

void hand_over(int k, node* list)
{
    if (!list) return;
    std::lock_guard<std::mutex> lock(common.guard);
    list->next_list = common.lists[k];
    common.lists[k] = list;
}

node* take_over(int k)
{
    std::lock_guard<std::mutex> lock(common.guard);
    node* const list = common.lists[k];
    if (list) common.lists[k] = list->next_list;
    return list;
}

void hand_over_fresh()
{
    if (mine.fresh_end - mine.fresh >= static_cast<std::ptrdiff_t>(least_stretch)) {
        auto* const s = reinterpret_cast<stretch*>(mine.fresh);
        s->end = mine.fresh_end;
        std::lock_guard<std::mutex> lock(common.guard);
        s->next = common.stretches;
        common.stretches = s;
    }
    mine.fresh = mine.fresh_end = nullptr;
}

// Room for a buffer of any class: what another thread left, or a new chunk.
void take_over_fresh()
{
    std::lock_guard<std::mutex> lock(common.guard);
    if (stretch* const s = common.stretches) {
        common.stretches = s->next;
        mine.fresh = reinterpret_cast<char*>(s);
        mine.fresh_end = s->end;
        return;
    }
    auto* const c = reinterpret_cast<chunk*>(from_malloc(sizeof(chunk)));
    c->next = common.chunks;
    common.chunks = c;
    mine.fresh = c->bytes;
    mine.fresh_end = c->bytes + chunk_size;
}

// Gives what the thread kept to the others when it ends. What is released even later, as by static
// objects, goes to the common store one by one.
struct thread_end
{
    ~thread_end()
    {
        mine.stage = thread_state::ended;
        for (int k = 0; k < classes; ++k) {
            shelf& s = mine.shelves[k];
            hand_over(k, s.list);
            hand_over(k, s.reserve);
            s = shelf();
        }
        hand_over_fresh();
    }
};
thread_local thread_end at_thread_end;

// The shelves of a new thread have no room and no list, so that its first call comes here.
void open_shelves()
{
    if (mine.stage != thread_state::unused) return;
    static_cast<void>(&at_thread_end);
    mine.stage = thread_state::open;
    for (shelf& s : mine.shelves) s.room = list_length;
}

// A list of at most `count` buffers that were never used.
node* fresh_list(int k, int count, int& made)
{
    std::size_t const size = unit * static_cast<std::size_t>(k + 1);
    if (mine.fresh_end - mine.fresh < static_cast<std::ptrdiff_t>(size)) take_over_fresh();
    node* list = nullptr;
    node** tail = &list;
    for (made = 0; made < count && mine.fresh_end - mine.fresh >= std::ptrdiff_t(size); ++made) {
        auto* const n = reinterpret_cast<node*>(mine.fresh);
        mine.fresh += size;
        *tail = n;
        tail = &n->next;
    }
    *tail = nullptr;
    return list;
}

char* pop(shelf& s)
{
    node* const n = s.list;
    s.list = n->next;
    ++s.room;
    return reinterpret_cast<char*>(n);
}

void push(shelf& s, node* n)
{
    n->next = s.list;
    s.list = n;
    --s.room;
}

__attribute__((noinline)) char* new_from_empty_shelf(int k)
{
    open_shelves();
    if (mine.stage == thread_state::ended) {
        int made;
        node* list = take_over(k);
        if (!list) {
            list = fresh_list(k, 1, made);
            hand_over_fresh();
        }
        hand_over(k, list->next);
        return reinterpret_cast<char*>(list);
    }
    shelf& s = mine.shelves[k];
    s.list = s.reserve;
    s.reserve = nullptr;
    if (!s.list) s.list = take_over(k);
    s.room = 0;
    if (!s.list) {
        int made;
        s.list = fresh_list(k, 64, made);
        s.room = list_length - made;
    }
    return pop(s);
}

__attribute__((noinline)) void free_to_full_shelf(int k, node* n)
{
    open_shelves();
    if (mine.stage == thread_state::ended) {
        n->next = nullptr;
        hand_over(k, n);
        return;
    }
    shelf& s = mine.shelves[k];
    if (s.room == 0) {
        hand_over(k, s.reserve);
        s.reserve = s.list;
        s.list = nullptr;
        s.room = list_length;
    }
    push(s, n);
}

} // namespace

char* new_text(int len)
{
    int const k = class_of(len);
    if (k >= classes) return from_malloc(static_cast<std::size_t>(len) + 1);
    shelf& s = mine.shelves[k];
    return s.list ? pop(s) : new_from_empty_shelf(k);
}

void free_text(char* str, int len) noexcept
{
    int const k = class_of(len);
    if (k >= classes) {
        std::free(str);
        return;
    }
    auto* const n = reinterpret_cast<node*>(str);
    shelf& s = mine.shelves[k];
    if (s.room > 0)
        push(s, n);
    else
        free_to_full_shelf(k, n);
}

#endif

Text blank_text(std::size_t n)
{
    if (n > INT_MAX - 1) throw std::bad_alloc();
    Text r;
    if (n == 0) return r;
    r.str = new_text(static_cast<int>(n));
    r.len = static_cast<int>(n);
    r.str[n] = 0;
    return r;
}

} // namespace detail

namespace {

// memcpy, without its call for what most texts are, and with few branches on the length, which no
// processor can predict.
void copy_bytes(char* to, char const* from, std::size_t n)
{
    if (n > 16) {
        std::memcpy(to, from, n);
    } else if (n >= 4) {
        std::size_t const last = n - 4, second = std::min<std::size_t>(4, last),
                          third = std::min<std::size_t>(8, last);
        std::uint32_t words[4];
        std::memcpy(words, from, 4);
        std::memcpy(words + 1, from + second, 4);
        std::memcpy(words + 2, from + third, 4);
        std::memcpy(words + 3, from + last, 4);
        std::memcpy(to, words, 4);
        std::memcpy(to + second, words + 1, 4);
        std::memcpy(to + third, words + 2, 4);
        std::memcpy(to + last, words + 3, 4);
    } else if (n > 0) {
        char const first = from[0], middle = from[n / 2], last = from[n - 1];
        to[0] = first;
        to[n / 2] = middle;
        to[n - 1] = last;
    }
}

// A new buffer with n characters and the zero behind them.
char* new_copy(char const* from, std::size_t n)
{
    char* const r = detail::new_text(static_cast<int>(n));
    copy_bytes(r, from, n);
    r[n] = 0;
    return r;
}

#if defined(__x86_64__) && !defined(VARNOW_PLAIN_BUFFERS)
// The same where one load can leave out the bytes behind the end, without touching them.
__attribute__((target("avx512bw,avx512vl"))) char* new_copy_masked(char const* from, std::size_t n)
{
    if (n >= detail::unit) return new_copy(from, n);
    char* const r = detail::new_text(static_cast<int>(n));
    __mmask16 const mask = static_cast<__mmask16>((1u << n) - 1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(r), _mm_maskz_loadu_epi8(mask, from));
    return r;
}

bool masks()
{
    static bool const r = __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    return r;
}
#else
char* new_copy_masked(char const* from, std::size_t n)
{
    return new_copy(from, n);
}

bool masks()
{
    return false;
}
#endif

bool is_short(Text const& x)
{
    return detail::pooled && x.len > 0 && x.len < static_cast<int>(detail::unit);
}

// Whether a zero byte stands among the characters of a short text.
bool short_with_zero(Text const& x)
{
    static char const masks[] = "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                                "\1\1\1\1\1\1\1\1\1\1\1\1\1\1\1\1";
    std::uint64_t bytes[2], behind[2];
    std::memcpy(bytes, x.str, 16);
    std::memcpy(behind, masks + 16 - x.len, 16); // 1 for each byte behind the characters
    auto zeros = [&](int i) {
        std::uint64_t const b = bytes[i] | behind[i];
        return (b - 0x0101010101010101u) & ~b & 0x8080808080808080u;
    };
    return (zeros(0) | zeros(1)) != 0;
}

// How many characters copying takes: those before the first zero byte.
std::size_t copied(Text const& x)
{
    if (!x.str) return 0;
    return is_short(x) && !short_with_zero(x) ? static_cast<std::size_t>(x.len)
                                              : std::strlen(x.str);
}

// Fills a buffer of its length with the text's characters, and zeros behind them.
void copy_text(char* to, Text const& from)
{
    std::size_t const n = static_cast<std::size_t>(from.len), end = copied(from);
    if (is_short(from))
        std::memcpy(to, from.str, detail::unit); // both buffers have them
    else
        std::memcpy(to, from.str, n + 1);
    if (end < n) std::memset(to + end, 0, n - end);
}

// A text of n characters: a, then b, then zeros.
Text join(std::size_t n, char const* a, std::size_t a_end, char const* b, std::size_t b_end)
{
    Text r = detail::blank_text(n);
    if (n == 0) return r;
    copy_bytes(r.str, a, a_end);
    copy_bytes(r.str + a_end, b, b_end);
    if (a_end + b_end < n) std::memset(r.str + a_end + b_end, 0, n - a_end - b_end);
    return r;
}

std::size_t size(Text const& x)
{
    return static_cast<std::size_t>(x.len);
}

// Whether a buffer for one length serves the other as it is.
bool same_buffer(int a, int b)
{
    return a == b || (detail::pooled && a > 0 && b > 0 && detail::same_class(a, b));
}

} // namespace

void Text::assign(char const* s, std::size_t n)
{
    if (n > INT_MAX - 1) throw std::bad_alloc();
    if (n == 0) return;
    str = masks() ? new_copy_masked(s, n) : new_copy(s, n);
    len = static_cast<int>(n);
}

void Text::copy_from(Text const& b)
{
    if (!b.str) {
        len = 0;
        return;
    }
    str = detail::new_text(b.len);
    copy_text(str, b);
}

void Text::release() noexcept
{
    if (str) detail::free_text(str, len);
}

Text& Text::replace_by(Text const& b)
{
    if (this == &b) return *this;
    if (!str || !b.str || !same_buffer(len, b.len)) return *this = Text(b);
    len = b.len;
    copy_text(str, b);
    return *this;
}

Text& Text::operator=(char const* s)
{
    return *this = Text(s);
}

Text& Text::operator+=(Text const& b)
{
    return *this = *this + b;
}

Text operator+(Text const& a, Text const& b)
{
    return join(size(a) + size(b), a.str, copied(a), b.str, copied(b));
}

Text operator+(Text const& a, char const* b)
{
    std::size_t const n = std::strlen(b);
    return join(size(a) + n, a.str, copied(a), b, n);
}

Text operator+(char const* a, Text const& b)
{
    std::size_t const n = std::strlen(a);
    return join(n + size(b), a, n, b.str, copied(b));
}

int detail::less(Text const& a, Text const& b)
{
    int const n = std::min(a.len, b.len);
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        std::uint64_t x, y;
        std::memcpy(&x, a.str + i, 8);
        std::memcpy(&y, b.str + i, 8);
        if (x != y) break;
    }
    while (i < n && a.str[i] == b.str[i]) ++i;
    if (i == n) return a.len < b.len;
    return static_cast<signed char>(a.str[i]) < static_cast<signed char>(b.str[i]);
}

} // namespace varnow
