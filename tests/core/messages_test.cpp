#include <varnow/core/messages.h>

#include "tests/support/refusal.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

using namespace varnow;

namespace {

std::string warned(void (*warn)())
{
    testing::internal::CaptureStderr();
    warn();
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Messages, FillTheRoutineFromTheCellTypes)
{
    struct
    {
        void (*warn)();
        char const* first_line;
    } const cases[] = {
        {[] { warningmessage<double>("_T_ _U_ _data_", "m", "d"); }, "MATRIX: double _U_ matrix"},
        {[] { warningmessage<Text>("_T_ _U_ _data_", "m", "d"); }, "TABLE: Text _U_ table"},
        {[] { warningmessage<double, double>("_T_ _U_ _data_", "m", "d"); },
         "MATRIX: double double matrix"},
        {[] { warningmessage<double, int>("_T_ _U_ _data_", "m", "d"); },
         "MATRIX: double int matrix"},
        {[] { warningmessage<Text, double>("_T_ _U_ _data_", "m", "d"); },
         "TABLE: Text double table"},
        {[] { warningmessage<Text, Text>("_T_ _U_ _data_", "m", "d"); }, "TABLE: Text Text table"},
        {[] { warningmessage<Text, char const*>("_T_ _U_ _data_", "m", "d"); },
         "TABLE: Text const char * table"},
        {[] { warningmessage<Text, date>("_T_ _U_ _data_", "m", "d"); }, "TABLE: Text date table"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(warned(c.warn), std::string("\n") + c.first_line + "\nm\nd\n");
}

TEST(Messages, ReplaceEveryTokenButOnlyInTheRoutine)
{
    EXPECT_EQ(warned([] { warningmessage<Text>("_data_ f(_data_,_T_)", "_T_ w", "_data_"); }),
              "\nTABLE: table f(table,Text)\n_T_ w\n_data_\n");
}

TEST(Messages, KeepTheLineOfAnEmptyDetail)
{
    EXPECT_EQ(warned([] { warningmessage("QUANTILES", "f()", "m", ""); }),
              "\nQUANTILES: f()\nm\n\n");
}

TEST(Messages, ShowSizesAndIndexes)
{
    EXPECT_EQ(detail::index_detail(3, 4, 7), "3 x 4 : ( 7 )");
    EXPECT_EQ(detail::index_detail(3, 4, 7, 1), "3 x 4 : ( 7 , 1 )");
    EXPECT_EQ(detail::index_detail(0, 4, "a", -1), "0 x 4 : ( a , -1 )");
}

TEST(MessagesDeathTest, AnErrorPrintsItsTextAndNothingElseAndLeavesByExit)
{
    // Exit handlers run and open streams are written out.
    std::string const path = testing::TempDir() + "varnow_messages_test.txt";
    std::remove(path.c_str());
    EXPECT_EXIT(
        {
            std::FILE* left_open = std::fopen(path.c_str(), "w");
            std::fputs("written", left_open);
            std::atexit([] { std::fputs("handler", stderr); });
            errormessage<double>("_T_ & operator ()(int)", "indeks poza zakresem",
                                 detail::index_detail(3, 4, 7));
        },
        testing::ExitedWithCode(0),
        testing::StrEq("\nMATRIX: double & operator ()(int)\nindeks poza zakresem\n3 x 4 : ( 7 )\n"
                       "handler"));
    std::FILE* f = std::fopen(path.c_str(), "r");
    ASSERT_TRUE(f);
    char text[16] = {};
    EXPECT_EQ(std::fread(text, 1, sizeof text, f), 7u);
    std::fclose(f);
    std::remove(path.c_str());
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
