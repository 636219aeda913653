#include "tests/support/folder.h"
#include "tests/support/refusal.h"

#include <varnow/containers/matrix_arithmetic.h>
#include <varnow/coordination/tasks.h>
#include <varnow/core/console.h>

#include <mutex>
#include <thread>

using namespace varnow;

namespace {

char const mixed[] = "ROWNAME\tparam1\tstate\n"
                     "a\t1\tfinished\n"
                     "b\t2\twaiting\n"
                     "c\t3\tin progress\n"
                     "d\t4\todd\n";

std::string states(tasks const& t)
{
    std::string s;
    for (int i = 1; i <= t.n_tasks; ++i) s += std::string(t.list(i, t.n_params + 1).str) + ";";
    return s;
}

} // namespace

TEST(Tasks, NamesItsColumnsAndEmptiesItsCells)
{
    tasks t(2, 2, "list");
    t(2, 2) = "x";
    t.list(1, 3) = "odd";
    t.resize(2, 1);
    EXPECT_EQ(states(t), ";;");
    t.startall();
    EXPECT_EQ(states(t), "waiting;waiting;");
    t.finishall();
    EXPECT_EQ(t.find(), 0);
    t.clear();
    EXPECT_EQ(states(t), ";;");
    EXPECT_EQ(t.list.colname(2), "state");
    EXPECT_EQ(tasks().find(), 0);

    folder f;
    t.changename(f.put("list", "ROWNAME\tstate\na\tfinished\nb\t\n").c_str());
    double const before = clock_now();
    t.synchronize(); // empty states count as done
    EXPECT_LT(clock_now() - before, 1);
    EXPECT_EQ(t.n_params, 0);
}

TEST(Tasks, GoesThroughALifeInFilesOfTheStatedForm)
{
    folder f;
    tasks t(2, 1, f.path("list").c_str());
    t(1, 1) = "0.5";
    t(2, 1) = "1,000";
    t.startall();
    EXPECT_TRUE(f.names().empty());
    t.save();
    std::string const head = "ROWNAME\tparam1\tstate\n";
    EXPECT_EQ(f.text("list"), head + "\t0,5\twaiting\n\t1,000\twaiting\n");

    tasks worker;
    worker.changename(t.filename);
    worker.lock();
    EXPECT_EQ(f.names(), std::vector<std::string>{"list_"});
    EXPECT_EQ(worker(1, 1), "0,5");
    EXPECT_EQ(worker.find(), 1);
    worker.reserve(1);
    EXPECT_EQ(f.text("list_"), head + "\t0,5\tin progress\n\t1,000\twaiting\n");
    worker.unlock();
    EXPECT_EQ(f.names(), std::vector<std::string>{"list"});
    worker.lock();
    EXPECT_EQ(worker.find(), 2);
    worker.finish(1);
    worker.finish(2);
    worker.unlock();
    t.synchronize();
    EXPECT_EQ(states(t), "finished;finished;");
    // without the lock a file of the lock comes to stand beside the list
    t.reserve(2);
    EXPECT_EQ(f.names(), (std::vector<std::string>{"list", "list_"}));
}

TEST(Tasks, RepairsUnderTheLock)
{
    folder f;
    tasks t(f.put("list", mixed).c_str());
    EXPECT_EQ(t.n_tasks, 4);
    EXPECT_EQ(t.find(), 2);
    t.lock();
    t.repair();
    t.save();
    EXPECT_EQ(f.names(), std::vector<std::string>{"list"});
    t.unlock();
    EXPECT_EQ(states(tasks(t.filename)), "finished;waiting;waiting;odd;");
    t.lock();
    t.save();
    t.reserve(2); // the lock was not taken again
    t.unlock();
    EXPECT_EQ(states(tasks(t.filename)), "finished;in progress;waiting;odd;");
    EXPECT_EQ(f.names(), std::vector<std::string>{"list"});
}

// Threads stand for the processes, so that this runs on every system.
TEST(Tasks, WaitsForWhoeverHoldsTheName)
{
    folder f;
    Text const list = f.put("list", mixed).c_str(), numbers = f.put("m", "R\tc\na\t1,5\n").c_str();
    tasks holder(list);
    holder.lock();
    matrix m;
    lock(m, numbers);
    EXPECT_EQ(m(1, 1), 1.5);

    matrix seen;
    using namespace std; // has a lock of its own
    lock(seen, f.put("n", "R\tc\na\t2\n").c_str());
    EXPECT_EQ(seen(1, 1), 2);
    std::thread second([&] {
        tasks t;
        t.changename(list);
        t.lock();
        t.reserve(t.find());
        t.unlock();
    });
    std::thread reader([&] {
        tasks::waitfor(numbers);
        lock(seen, numbers);
    });
    sleep(1);
    EXPECT_EQ(holder.find(), 2);
    holder.finish(2);
    holder.list(4, 2) = "waiting";
    holder.finish(1);
    EXPECT_FALSE(f.holds("m"));
    m(1, 1) = 2.25;
    unlock(m, numbers);
    holder.unlock();
    second.join();
    reader.join();
    EXPECT_EQ(seen(1, 1), 2.25);
    EXPECT_EQ(f.text("m_"), "ROWNAME\tc\na\t2,250000\n");
    EXPECT_EQ(states(tasks(list)), "finished;finished;in progress;in progress;");
}

TEST(TasksDeathTest, RefusesWhatIsNotThere)
{
    folder f;
    auto refuses = [](auto call, char const* cls, char const* routine, char const* why,
                      std::string const& detail) {
        EXPECT_REFUSAL_DETAIL(call(), cls, routine, why, detail);
    };
    char const* const range = "indeks poza zakresem";
    tasks t(2, 2, "");
    for (auto [row, col] : {std::pair{0, 1}, {3, 1}, {1, 0}, {1, 3}})
        refuses([&, i = row, j = col] { t(i, j); }, "TASKS", "Text & operator ()(int,int)", range,
                "2 x 2 : ( " + std::to_string(row) + " , " + std::to_string(col) + " )");
    refuses([&] { t.reserve(3); }, "TASKS", "void reserve(int)", range, "2 x 2 : ( 3 )");
    std::string const nowhere = f.path("nowhere/list"), list = f.path("list");
    refuses([&] { tasks(1, 1, nowhere.c_str()).finish(1); }, "TABLE", "int writetxt(char *)",
            "nieudane otwarcie pliku do zapisu", "plik: " + nowhere + "_");
    f.put("list", "ROWNAME\tparam1\tstate\na\t1\twaiting\nb\t2\n");
    refuses([&] { tasks(list.c_str()); }, "TABLE", "int readtxt(char *)",
            "zmienna liczba elementow w wierszu: 3", "plik: " + list);
    for (char const* bytes : {"ROWNAME\na\nb\n", ""})
        refuses([&] { tasks(f.put("list", bytes).c_str()); }, "TASKS", "void load()", "brak kolumn",
                "plik: " + list);
}
