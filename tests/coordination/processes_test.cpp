// Real processes on one folder, and what kills and full disks leave of their files.
#if defined(__unix__)

#include "tests/support/folder.h"
#include "tests/support/refusal.h"

#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/coordination/tasks.h>
#include <varnow/core/console.h>

#include <atomic>
#include <csignal>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace varnow;

namespace {

constexpr int done = 7; // no refusal ends with this

template <class F> pid_t start(F work)
{
    pid_t const child = fork();
    if (child == 0) {
        alarm(100); // a test that fails must not wait for ever
        work();
        _exit(done);
    }
    return child;
}

int ended(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void expect_killed(std::vector<pid_t> const& children)
{
    for (pid_t p : children) kill(p, SIGKILL);
    for (pid_t p : children) EXPECT_EQ(ended(p), -SIGKILL);
}

// A list in a file, whose tasks are numbered, and how often each was done: seen by all processes
// and safe from their deaths.
struct shared_list
{
    int n;
    Text name, held = name + "_";
    useconds_t pause; // of a task
    std::atomic<int>* counts = static_cast<std::atomic<int>*>(
        mmap(nullptr, sizeof(std::atomic<int>) * n, PROT_READ | PROT_WRITE,
             MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    std::vector<pid_t> workers;

    shared_list(int number, std::string const& file, unsigned microseconds)
        : n(number), name(file), pause(microseconds)
    {
        tasks t(n, 1, name);
        for (int i = 1; i <= n; ++i) t(i, 1) = itot(i);
        t.startall();
        t.save();
    }

    void start_workers(int number)
    {
        for (int k = 0; k < number; ++k) workers.push_back(start([this] { work(); }));
    }
    void work()
    {
        tasks t;
        t.changename(name);
        for (;;) {
            t.lock();
            int const row = t.find();
            if (row > 0) t.reserve(row);
            t.unlock();
            if (row == 0) return;
            usleep(pause);
            ++counts[row - 1];
            t.lock();
            t.finish(row);
            t.unlock();
        }
    }
    void wait_for_workers()
    {
        for (pid_t p : std::exchange(workers, {})) EXPECT_EQ(ended(p), done);
    }
    void expect_done(std::vector<int> const& times) const
    {
        tasks t(name);
        t.synchronize();
        ASSERT_TRUE(t.n_tasks == n && t.n_params == 1);
        for (int i = 1; i <= n; ++i) EXPECT_TRUE(t(i, 1) == itot(i) && t.list(i, 2) == "finished");
        EXPECT_EQ(std::vector<int>(counts, counts + n), times);
    }
};

} // namespace

TEST(Processes, DoEveryTaskOfOneListOnce)
{
    folder f;
    shared_list list(200, f.path("list"), 20000);
    list.start_workers(8);
    list.expect_done(std::vector<int>(200, 1));
    list.wait_for_workers();
    EXPECT_EQ(f.names(), std::vector<std::string>{"list"});
}

// Kills come while tasks are done and while the lock is held. The operator puts back what the dead
// hold, while others wait for it, and makes what they had reserved free.
TEST(Processes, LoseNoTaskWithKilledWorkers)
{
    folder f;
    std::vector<pid_t> rounds;
    for (unsigned round = 0; round < 20; ++round)
        rounds.push_back(start([&] {
            shared_list list(40, f.path("list" + std::to_string(round)), round % 2 ? 500 : 20000);
            list.start_workers(2);
            usleep(5000 * round);
            expect_killed(std::exchange(list.workers, {}));
            bool const stale = access(list.held.str, F_OK) == 0;
            tasks t;
            t.list.readtxt((stale ? list.held : list.name).str, 0, 1, 1, 1, '\t', 1);
            std::vector<int> expected;
            for (int i = 1; i <= list.n; ++i)
                expected.push_back(list.counts[i - 1] + (t.list(i, 2) != "finished"));
            list.start_workers(2);
            if (stale) std::rename(list.held.str, list.name.str);
            list.wait_for_workers();
            t.changename(list.name);
            t.lock();
            t.repair();
            t.save();
            t.unlock();
            list.start_workers(1);
            list.wait_for_workers();
            list.expect_done(expected);
            if (testing::Test::HasFailure()) _exit(1);
        }));
    for (pid_t p : rounds) EXPECT_EQ(ended(p), done);
}

TEST(Processes, LeaveNoHalfFileUnderTheFinalNameWhenKilledInAWriter)
{
    folder f;
    std::string const path = f.path("numbers");
    auto write = [&](matrix const& m) { m.ulwritetxt(path.c_str(), 0, 1, 1, 0, '\t', ',', 1); };
    write(zeros(300, 50));
    for (unsigned round = 0; round < 20; ++round) {
        pid_t const child = start([&] {
            for (matrix m = ones(300, 50);; m += 1) write(m);
        });
        usleep(2000 * round);
        expect_killed({child});
        matrix m;
        m.readtxt(path.c_str(), 0, 1, 1, 1, '\t', 1);
        ASSERT_EQ(m.rows, 300);
        EXPECT_EQ(sum(vect(m) == m(1, 1)), 300 * 50);
    }
}

TEST(ProcessesDeathTest, KeepTheHeldContentWhenNoneCanBeWritten)
{
    folder f;
    Text const list = f.path("list").c_str();
    tasks t(200, 1, list);
    t.startall();
    t.save();
    std::string const before = f.bytes("list"),
                      said = "\nTABLE: int writetxt(char *)\nnieudane otwarcie pliku do zapisu\n"
                             "plik: " +
                             f.path("list") + "_\n";
    t.lock();
    // No file grows beyond a thousand bytes, as on a full disk.
    auto fill_disk = [] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit const none = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &none);
    };
    auto in_full_disk = [&] {
        fill_disk();
        t.reserve(1);
    };
    auto in_protected_folder = [&] {
        chmod(f.path("").c_str(), 0555);
        if (geteuid() == 0 && setuid(65534) != 0) _exit(1);
        t.finish(1);
    };
    // what waits says so once
    auto data_in_full_disk = [&] {
        fill_disk();
        alarm(2);
        unlock(t.list, list);
    };
    EXPECT_EXIT(in_full_disk(), testing::ExitedWithCode(0), testing::Eq(said));
    EXPECT_EXIT(in_protected_folder(), testing::ExitedWithCode(0), testing::Eq(said));
    chmod(f.path("").c_str(), 0755);
    EXPECT_EXIT(data_in_full_disk(), testing::KilledBySignal(SIGALRM), testing::Eq(said));
    EXPECT_EQ(f.bytes("list_"), before);
}

#endif
