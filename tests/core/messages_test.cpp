#include "tests/support/folder.h"
#include "tests/support/output.h"
#include "tests/support/refusal.h"

#include <varnow/core/messages.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace varnow;
using test::warned;

namespace {

template <class... Cells> std::string message_of()
{
    return warned([] { warningmessage<Cells...>("_T_ _U_ _data_ f(_data_)", "_T_ w", "_data_"); });
}

} // namespace

TEST(Messages, FillTheRoutineAloneFromTheCellTypes)
{
    std::pair<std::string, char const*> const cases[] = {
        {message_of<double>(), "MATRIX: double _U_ matrix f(matrix)"},
        {message_of<Text>(), "TABLE: Text _U_ table f(table)"},
        {message_of<double, int>(), "MATRIX: double int matrix f(matrix)"},
        {message_of<Text, double>(), "TABLE: Text double table f(table)"},
        {message_of<Text, char const*>(), "TABLE: Text const char * table f(table)"},
        {message_of<Text, date>(), "TABLE: Text date table f(table)"},
    };
    for (auto const& [text, expected] : cases)
        EXPECT_EQ(text, std::string("\n") + expected + "\n_T_ w\n_data_\n");
    EXPECT_EQ(warned([] { warningmessage("QUANTILES", "f()", "m", ""); }),
              "\nQUANTILES: f()\nm\n\n");
    EXPECT_EQ(detail::index_detail(0, 4, "a", -1), "0 x 4 : ( a , -1 )");
}

TEST(MessagesDeathTest, AnErrorPrintsItsTextAndNothingElseAndLeavesByExit)
{
    // Exit handlers run and open streams are written out.
    folder const f;
    EXPECT_EXIT(
        {
            std::fputs("written", std::fopen(f.path("left_open").c_str(), "w"));
            std::atexit([] { std::fputs("handler", stderr); });
            errormessage<double>("_T_ & operator ()(int)", "indeks poza zakresem",
                                 detail::index_detail(3, 4, 7));
        },
        testing::ExitedWithCode(0),
        testing::StrEq("\nMATRIX: double & operator ()(int)\nindeks poza zakresem\n3 x 4 : ( 7 )\n"
                       "handler"));
    EXPECT_EQ(f.bytes("left_open"), "written");
}

TEST(MessagesDeathTest, ThreadsThatRefuseAtOnceLeaveOnceWithOneMessage)
{
    EXPECT_EXIT(
        {
            std::atexit([] { std::fputs("handler", stderr); });
            int const count = 8;
            std::atomic<int> ready(0);
            std::vector<std::thread> threads;
            for (int i = 0; i < count; ++i)
                threads.emplace_back([&ready] {
                    ++ready;
                    while (ready < count) std::this_thread::yield();
                    errormessage("MATRIX", "f()", "m", "");
                });
            for (std::thread& t : threads) t.join();
        },
        testing::ExitedWithCode(0), testing::StrEq("\nMATRIX: f()\nm\n\nhandler"));
}
