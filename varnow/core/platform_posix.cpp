#if !defined(_WIN32)

#include <varnow/core/platform.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <langinfo.h>
#include <poll.h>
#include <sys/mman.h>
#include <termios.h>
#include <unistd.h>

namespace varnow {
namespace platform {

namespace {

bool output_is_terminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

// Keys can be taken only where both ends are terminals and the process is in the foreground: a
// change of terminal settings would stop a background process.
bool can_ask()
{
    return isatty(STDIN_FILENO) && output_is_terminal() && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

// Delivers keys at once and unseen while it lives.
class raw_keys
{
    termios saved;
    bool changed;

public:
    raw_keys()
    {
        changed = tcgetattr(STDIN_FILENO, &saved) == 0;
        if (!changed) return;
        termios raw = saved;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        changed = tcsetattr(STDIN_FILENO, TCSANOW, &raw) == 0;
    }
    ~raw_keys()
    {
        if (changed) tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    }
    raw_keys(raw_keys const&) = delete;
    raw_keys& operator=(raw_keys const&) = delete;
};

template <class... A> void put_sequence(char const* format, A... a)
{
    if (!output_is_terminal()) return;
    std::printf(format, a...);
    std::fflush(stdout);
}

} // namespace

double clock_seconds()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    auto const microseconds = now.tv_nsec / 1000;
    return static_cast<double>(now.tv_sec) + static_cast<double>(microseconds) / 1000000.0;
}

void sleep_seconds(int seconds)
{
    if (seconds <= 0) return;
    timespec rest = {seconds, 0};
    while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
    }
}

void pause()
{
    if (!can_ask()) return;
    std::fputs("Press any key to continue . . . ", stdout);
    std::fflush(stdout);
    raw_keys raw;
    char key;
    while (read(STDIN_FILENO, &key, 1) < 0 && errno == EINTR) {
    }
    std::putchar('\n');
}

void clear_screen()
{
    put_sequence("%s", "\033[2J\033[H");
}

void move_cursor(short x, short y)
{
    put_sequence("\033[%d;%dH", y + 1, x + 1);
}

void cursor(short& x, short& y)
{
    if (!can_ask()) return;
    raw_keys raw;
    put_sequence("%s", "\033[6n");
    // The answer is ESC [ row ; column R; what was typed before it is lost.
    char answer[64];
    std::size_t n = 0;
    pollfd wait = {STDIN_FILENO, POLLIN, 0};
    while (n + 1 < sizeof answer && poll(&wait, 1, 200) == 1 &&
           read(STDIN_FILENO, answer + n, 1) == 1)
        if (answer[n++] == 'R') break;
    answer[n] = 0;
    char const* const start = std::strrchr(answer, '\033');
    int row, column;
    if (start && std::sscanf(start, "\033[%d;%dR", &row, &column) == 2) {
        x = static_cast<short>(column - 1);
        y = static_cast<short>(row - 1);
    }
}

void set_attribute(unsigned short attribute)
{
    // The console counts colours in the order blue, green, red, terminals in the opposite one.
    auto code = [](int bits, int normal, int bright) {
        int const colour = (bits & 1) << 2 | (bits & 2) | (bits & 4) >> 2;
        return (bits & 8 ? bright : normal) + colour;
    };
    // Grey on black is what a console starts with: the terminal's own colours.
    if ((attribute & 0xFF) == 7)
        put_sequence("%s", "\033[0m");
    else
        put_sequence("\033[%d;%dm", code(attribute, 30, 90), code(attribute >> 4, 40, 100));
}

int replace_file(char const* from, char const* to)
{
    return std::rename(from, to);
}

std::string temporary_name()
{
    char const* const directory = std::getenv("TMPDIR");
    std::string name = directory && *directory ? directory : "/tmp";
    name += "/varnowXXXXXX";
    int const file = mkstemp(&name[0]);
    if (file < 0) return std::string();
    close(file);
    return name;
}

std::string process_name()
{
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    return std::string(host) + "." + std::to_string(getpid());
}

void advise_large_pages(void* memory, std::size_t bytes)
{
#if defined(MADV_HUGEPAGE)
    std::uintptr_t const page = std::uintptr_t(1) << 21;
    std::uintptr_t const begin =
        (reinterpret_cast<std::uintptr_t>(memory) + page - 1) & ~(page - 1);
    std::uintptr_t const end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) & ~(page - 1);
    if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
    (void)memory;
    (void)bytes;
#endif
}

char const* decimal_point()
{
    // localeconv gathers the whole locale, which takes longer than reading a number.
    return nl_langinfo(RADIXCHAR);
}

} // namespace platform
} // namespace varnow

#endif
