#include <varnow/core/console.h>
#include <varnow/core/messages.h>
#include <varnow/core/platform.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

#if !defined(_WIN32)
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace varnow;

namespace {

std::string content(std::string const& path)
{
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), {}};
}

} // namespace

TEST(Console, SeparatingLinesHaveTheLengthAskedFor)
{
    testing::internal::CaptureStdout();
    sepline('-', 5);
    sepline('%', 2);
    sepline('x', 0);
    sepline('x', SHRT_MIN);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "-----%%");
}

TEST(Console, TheClockCountsSecondsOfTheEpochAndSleepTakesThem)
{
    double const before = clock_now();
    EXPECT_NEAR(before, static_cast<double>(std::time(nullptr)), 2);
    sleep(0);
    sleep(-1);
    sleep(INT_MIN);
    sleep(1);
    EXPECT_GE(clock_now() - before, 0.99);
}

TEST(Console, WithoutATerminalTheCursorCallsPrintNothingAndChangeNothing)
{
    testing::internal::CaptureStdout();
    short x = 17, y = 4;
    gotoxy(3, 2);
    setcolor(12);
    getpos(x, y);
    save_cursor_pos();
    restore_cursor_pos();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(x, 17);
    EXPECT_EQ(y, 4);
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
    EXPECT_EQ(content(to), "new");
    EXPECT_NE(platform::replace_file(from.c_str(), to.c_str()), 0);
    EXPECT_EQ(content(to), "new");
    std::remove(to.c_str());
}

namespace {

// Tests on a terminal of their own.
class Terminal : public testing::Test
{
#if defined(_WIN32)
protected:
    void SetUp() override
    {
        GTEST_SKIP() << "no terminal can be made here";
    }
#endif
};

// Runs a program on a terminal of its own and answers it as a terminal and a person would: to a
// question for the cursor by "row 5, column 9", and to the pause by a key. Returns what it wrote.
std::string on_a_terminal(void (*program)())
{
#if defined(_WIN32)
    program();
    return std::string();
#else
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
        if (answer && write(terminal, answer, std::string(answer).size()) < 0) break;
    }
    int status = -1;
    waitpid(child, &status, 0);
    close(terminal);
    EXPECT_EQ(status, 0);
    return seen;
#endif
}

} // namespace

TEST_F(Terminal, IsDrivenByItsSequences)
{
    EXPECT_EQ(on_a_terminal([] {
                  clrscr();
                  gotoxy(3, 2);
                  setcolor(12);          // bright red on black
                  setcolor(1 + 16 * 14); // blue on bright yellow
                  setcolor(7);
                  short x = -1, y = -1;
                  getpos(x, y);
                  std::printf("%d %d", x, y);
                  save_cursor_pos();
                  restore_cursor_pos();
              }),
              "\033[2J\033[H\033[3;4H\033[91;40m\033[34;103m\033[0m\033[6n8 4\033[6n\033[5;9H");
}

TEST_F(Terminal, IsLeftAloneWhenItDoesNotAnswer)
{
    EXPECT_EQ(on_a_terminal([] {
                  std::fputs("Press any key", stdout); // the key comes in place of an answer
                  short x = -1, y = -1;
                  getpos(x, y);
                  std::printf("%d %d", x, y);
              }),
              "Press any key\033[6n-1 -1");
}

TEST_F(Terminal, ShowsAnErrorUntilAKeyIsPressed)
{
    EXPECT_THAT(on_a_terminal([] { errormessage("TEXT", "f()", "m", "d"); }),
                testing::StartsWith("\r\nTEXT: f()\r\nm\r\nd\r\nPress any key"));
}
