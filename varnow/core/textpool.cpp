// The buffers of texts. Short ones come from lists that every thread keeps for itself, since a
// table makes and drops them by the million; the others come from malloc.
#include <varnow/core/text.h>

#include <cstdlib>
#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(_WIN32)
#define VARNOW_PLAIN_BUFFERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VARNOW_PLAIN_BUFFERS 1
#endif
#endif

namespace varnow {
namespace detail {

namespace {

char* from_malloc(std::size_t size)
{
    void* const p = std::malloc(size);
    if (!p) throw std::bad_alloc();
    return static_cast<char*>(p);
}

} // namespace

#if defined(VARNOW_PLAIN_BUFFERS)

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

namespace {

// Buffers of 16, 32, ... 128 bytes; a text of len characters takes class len / 16.
int const classes = 8;
std::size_t const unit = 16;
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
    char* fresh; // the rest of the thread's chunk
    char* fresh_end;
    enum { unused, open, ended } stage;
};
__attribute__((tls_model("initial-exec"))) thread_local thread_state mine;

// Lists that no thread owns, and all chunks.
struct store
{
    std::mutex guard;
    node* lists[classes];
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

// Gives the thread's lists to the others when it ends. What is released even later, as by static
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

void new_chunk()
{
    auto* const c = reinterpret_cast<chunk*>(from_malloc(sizeof(chunk)));
    mine.fresh = c->bytes;
    mine.fresh_end = c->bytes + chunk_size;
    std::lock_guard<std::mutex> lock(common.guard);
    c->next = common.chunks;
    common.chunks = c;
}

// A list of at most `count` buffers that were never used.
node* fresh_list(int k, int count, int& made)
{
    std::size_t const size = unit * static_cast<std::size_t>(k + 1);
    if (mine.fresh_end - mine.fresh < static_cast<std::ptrdiff_t>(size)) new_chunk();
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

char* new_from_empty_shelf(int k)
{
    open_shelves();
    if (mine.stage == thread_state::ended) {
        int made;
        node* list = take_over(k);
        if (!list) list = fresh_list(k, 1, made);
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

void free_to_full_shelf(int k, node* n)
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
    int const k = len / static_cast<int>(unit);
    if (k >= classes) return from_malloc(static_cast<std::size_t>(len) + 1);
    shelf& s = mine.shelves[k];
    return s.list ? pop(s) : new_from_empty_shelf(k);
}

void free_text(char* str, int len) noexcept
{
    int const k = len / static_cast<int>(unit);
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

} // namespace detail
} // namespace varnow
