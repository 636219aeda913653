#include "tests/support/output.h"

#include <varnow/core/console.h>
#include <varnow/core/messages.h>
#include <varnow/core/platform.h>

#include <gmock/gmock.h>

#include <climits>
#include <cstdio>
#include <ctime>
#include <fstream>

#if !defined(_WIN32)
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace varnow;
using test::printed;

TEST(Console, TheClockCountsSecondsOfTheEpochAndSleepTakesThem)
{
    double const before = clock_now();
    EXPECT_NEAR(before, static_cast<double>(std::time(nullptr)), 2);
    for (int s : {0, -1, INT_MIN, 1}) sleep(s);
    EXPECT_GE(clock_now() - before, 0.99);
}

TEST(Console, PrintsLinesAndWithoutATerminalNothingElse)
{
    short x = 17, y = 4;
    std::string const seen = printed([&] {
        for (int n : {5, 0, SHRT_MIN}) sepline('%', static_cast<short>(n));
        gotoxy(3, 2);
        setcolor(12);
        getpos(x, y);
        save_cursor_pos();
        restore_cursor_pos();
    });
    EXPECT_EQ(seen, "%%%%%");
    EXPECT_TRUE(x == 17 && y == 4);
}

TEST(Platform, ATemporaryFileIsNewAndReplacesAnother)
{
    std::string const from = platform::temporary_name(), to = platform::temporary_name();
    ASSERT_NE(from, to);
    EXPECT_TRUE(std::ifstream(from).is_open());
    std::ofstream(from) << "new";
    std::ofstream(to) << "old and longer";
    EXPECT_EQ(platform::replace_file(from.c_str(), to.c_str()), 0);
    EXPECT_FALSE(std::ifstream(from).is_open());
    EXPECT_NE(platform::replace_file(from.c_str(), to.c_str()), 0);
    EXPECT_EQ(read_file(to.c_str()), "new");
    std::remove(to.c_str());
}

#if !defined(_WIN32)

namespace {

// Runs a program on a terminal of its own and answers it as a terminal and a person would: to a
// question for the cursor by "row 5, column 9", and to the pause by a key. Returns what it wrote.
std::string on_a_terminal(void (*program)())
{
    int terminal;
    pid_t const child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        program();
        std::fflush(stdout);
        _exit(0);
    }
    std::string seen;
    char block[256];
    for (ssize_t n; (n = read(terminal, block, sizeof block)) > 0;) {
        std::string const piece(block, static_cast<std::size_t>(n));
        seen += piece;
        char const* answer = nullptr;
        if (piece.find("\033[6n") != piece.npos) answer = "typed ahead\033[5;9R";
        if (piece.find("Press any key") != piece.npos) answer = "k";
        if (answer && write(terminal, answer, std::strlen(answer)) < 0) break;
    }
    int status = -1;
    waitpid(child, &status, 0);
    close(terminal);
    EXPECT_EQ(status, 0);
    return seen;
}

void show_position()
{
    short x = -1, y = -1;
    getpos(x, y);
    std::printf("%d %d", x, y);
}

} // namespace

TEST(Terminal, IsDrivenByItsSequencesAndAnErrorWaitsForAKey)
{
    EXPECT_EQ(on_a_terminal([] {
                  clrscr();
                  gotoxy(3, 2);
                  setcolor(12);          // bright red on black
                  setcolor(1 + 16 * 14); // blue on bright yellow
                  setcolor(7);
                  show_position();
                  save_cursor_pos();
                  restore_cursor_pos();
              }),
              "\033[2J\033[H\033[3;4H\033[91;40m\033[34;103m\033[0m\033[6n8 4\033[6n\033[5;9H");
    EXPECT_EQ(on_a_terminal([] {
                  std::fputs("Press any key", stdout); // the key comes in place of an answer
                  show_position();
              }),
              "Press any key\033[6n-1 -1");
    EXPECT_THAT(on_a_terminal([] { errormessage("TEXT", "f()", "m", "d"); }),
                testing::StartsWith("\r\nTEXT: f()\r\nm\r\nd\r\nPress any key"));
}

#endif
