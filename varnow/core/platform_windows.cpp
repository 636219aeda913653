#if defined(_WIN32)

#define NOMINMAX
#include <windows.h>

#include <varnow/core/platform.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace varnow {
namespace platform {

namespace {

HANDLE console()
{
    std::fflush(stdout);
    return GetStdHandle(STD_OUTPUT_HANDLE);
}

} // namespace

double clock_seconds()
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER ticks;
    ticks.LowPart = now.dwLowDateTime;
    ticks.HighPart = now.dwHighDateTime;
    // Ticks of 100 ns; the file time begins in 1601.
    unsigned long long const us = ticks.QuadPart / 10 - 11644473600000000ULL;
    return static_cast<double>(us / 1000000) + static_cast<double>(us % 1000000) / 1000000.0;
}

void sleep_seconds(int seconds)
{
    // A single wait is limited to 32 bits of milliseconds.
    int const longest = 1000000;
    for (; seconds > 0; seconds -= std::min(seconds, longest))
        Sleep(static_cast<DWORD>(std::min(seconds, longest)) * 1000);
}

void pause()
{
    std::system("PAUSE");
}

void clear_screen()
{
    std::system("chcp 1250");
    std::system("cls");
}

void move_cursor(short x, short y)
{
    COORD const at = {x, y};
    SetConsoleCursorPosition(console(), at);
}

void cursor(short& x, short& y)
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(console(), &info)) return;
    x = info.dwCursorPosition.X;
    y = info.dwCursorPosition.Y;
}

void set_attribute(unsigned short attribute)
{
    SetConsoleTextAttribute(console(), attribute);
}

int replace_file(char const* from, char const* to)
{
    return MoveFileExA(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED) ? 0 : -1;
}

std::string temporary_name()
{
    char directory[MAX_PATH + 1], name[MAX_PATH + 1];
    DWORD const n = GetTempPathA(sizeof directory, directory);
    if (n == 0 || n > MAX_PATH || GetTempFileNameA(directory, "vrn", 0, name) == 0)
        return std::string();
    return name;
}

std::string process_name()
{
    char host[MAX_COMPUTERNAME_LENGTH + 1] = "";
    DWORD length = sizeof host;
    GetComputerNameA(host, &length);
    return std::string(host) + "." + std::to_string(GetCurrentProcessId());
}

void advise_large_pages(void*, std::size_t) {}

char const* decimal_point()
{
    return std::localeconv()->decimal_point;
}

} // namespace platform
} // namespace varnow

#endif
