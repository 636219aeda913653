// Real processes on one folder, and what kills and full disks leave of their files.
#if defined(__unix__)

#include "tests/support/folder.h"
#include "tests/support/refusal.h"

#include <varnow/containers/compare.h>
#include <varnow/containers/matrix_special.h>
#include <varnow/coordination/tasks.h>
#include <varnow/core/console.h>

#include <csignal>
#include <random>
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

void rest(unsigned most_microseconds)
{
    static std::mt19937 generator(1);
    usleep(static_cast<useconds_t>(generator() % most_microseconds));
}

// How often each task was done, seen by all processes and safe from their deaths.
int* shared_counts(int n)
{
    return static_cast<int*>(
        mmap(nullptr, sizeof(int) * n, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

void work_through(Text const& list, int* counts)
{
    tasks t;
    t.changename(list);
    for (;;) {
        t.lock();
        int const row = t.find();
        if (row > 0) t.reserve(row);
        t.unlock();
        if (row == 0) return;
        usleep(20000);
        __atomic_add_fetch(&counts[row - 1], 1, __ATOMIC_SEQ_CST);
        t.lock();
        t.finish(row);
        t.unlock();
    }
}

tasks new_list(Text const& name, int n)
{
    tasks t(n, 1, name);
    for (int i = 1; i <= n; ++i) t(i, 1) = itot(i);
    t.startall();
    t.save();
    return t;
}

bool holds_all(Text const& list, int n)
{
    tasks const t(list);
    bool sound = t.n_tasks == n && t.n_params == 1;
    for (int i = 1; sound && i <= n; ++i) sound = t(i, 1) == itot(i);
    return sound;
}

enum moment { between_reserve_and_finish, holding_the_lock, any_for_all, moments };

// One list, two workers and, unless all are killed, one that is to die at the moment.
struct batch
{
    static constexpr int n = 12;
    moment when;
    Text list, held;
    int* counts = shared_counts(n);
    std::vector<int> at_recovery = std::vector<int>(n), to_do = std::vector<int>(n, 1);
    std::vector<pid_t> workers;
    pid_t victim = 0;

    void start_workers()
    {
        int told[2];
        ASSERT_EQ(pipe(told), 0);
        if (when != any_for_all) {
            victim = start([&] {
                tasks t(list);
                t.lock();
                t.reserve(1);
                if (when == between_reserve_and_finish) t.unlock();
                bool const said = write(told[1], "", 1) == 1;
                while (said && when == holding_the_lock) t.reserve(1);
                pause();
            });
            char none;
            ASSERT_EQ(read(told[0], &none, 1), 1);
        }
        close(told[0]);
        close(told[1]);
        for (int k = 0; k < 2; ++k) workers.push_back(start([&] { work_through(list, counts); }));
    }

    void kill_victims()
    {
        std::vector<pid_t> dying = {victim};
        if (when == any_for_all) dying = std::exchange(workers, {});
        for (pid_t p : dying) kill(p, SIGKILL);
        for (pid_t p : dying) EXPECT_EQ(ended(p), -SIGKILL);
    }

    // The operator: puts back what a dead process holds, then makes what it had reserved free.
    void recover()
    {
        if (when == between_reserve_and_finish) wait_for_workers();
        bool const stale = access(held.str, F_OK) == 0;
        EXPECT_TRUE(when == any_for_all || stale == (when == holding_the_lock));
        tasks t;
        if (stale) t.list.readtxt(held.str, 0, 1, 1, 1, '\t', 1);
        if (!stale) t = tasks(list);
        for (int i = 0; i < n; ++i) {
            at_recovery[i] = counts[i];
            to_do[i] = t.list(i + 1, 2) != "finished";
        }
        if (stale) {
            ASSERT_EQ(std::rename(held.str, list.str), 0);
        }
        wait_for_workers();
        EXPECT_TRUE(holds_all(list, n));
        t.changename(list);
        t.lock();
        t.repair();
        t.save();
        t.unlock();
        workers.push_back(start([&] { work_through(list, counts); }));
    }

    void wait_for_workers()
    {
        for (pid_t p : workers) EXPECT_EQ(ended(p), done);
        workers.clear();
    }

    void check()
    {
        wait_for_workers();
        EXPECT_TRUE(holds_all(list, n));
        tasks t(list);
        t.synchronize();
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(t.list(i + 1, 2), "finished");
            EXPECT_GE(counts[i], 1);
            EXPECT_EQ(counts[i], at_recovery[i] + to_do[i]) << "task " << i + 1;
        }
    }
};

} // namespace

TEST(Processes, DoEveryTaskOfOneListOnce)
{
    constexpr int workers = 8, n = 200;
    folder f;
    Text const list = f.path("list").c_str();
    int* const counts = shared_counts(n);
    new_list(list, n);
    std::vector<pid_t> children;
    for (int k = 0; k < workers; ++k)
        children.push_back(start([&] { work_through(list, counts); }));
    tasks coordinator(list);
    coordinator.synchronize();
    for (pid_t child : children) EXPECT_EQ(ended(child), done);
    EXPECT_EQ(coordinator.find(), 0);
    EXPECT_TRUE(holds_all(list, n));
    EXPECT_EQ(std::vector<int>(counts, counts + n), std::vector<int>(n, 1));
    EXPECT_EQ(f.names(), std::vector<std::string>{"list"});
}

TEST(Processes, LoseNoTaskWithAKilledWorker)
{
    folder f;
    std::vector<batch> batches(20);
    for (std::size_t k = 0; k < batches.size(); ++k) {
        batch& b = batches[k];
        b.when = static_cast<moment>(k % moments);
        b.list = f.path("list" + std::to_string(k)).c_str();
        b.held = b.list + "_";
        new_list(b.list, batch::n);
        b.start_workers();
        rest(100000);
        b.kill_victims();
    }
    for (batch& b : batches) b.recover();
    for (batch& b : batches) b.check();
}

TEST(Processes, LeaveNoHalfFileUnderTheFinalNameWhenKilledInAWriter)
{
    void (*const writers[])(matrix&, Text const&) = {
        [](matrix& m, Text const& path) { m.ulwritetxt(path.str, 0, 1, 1, 0, '\t', ',', 1); },
        [](matrix& m, Text const& path) {
            lock(m, path);
            m += 1;
            unlock(m, path);
        },
    };
    folder f;
    for (auto write : writers) {
        Text const path = f.path("numbers").c_str(), held = path + "_";
        zeros(300, 50).writetxt(path.str, 0, 1, 1, 0, '\t', ',', 1);
        for (int round = 0; round < 20; ++round) {
            pid_t const child = start([&] {
                for (matrix m = ones(300, 50);; m += 1) write(m, path);
            });
            rest(40000);
            kill(child, SIGKILL);
            EXPECT_EQ(ended(child), -SIGKILL);
            if (access(path.str, F_OK) != 0) std::rename(held.str, path.str);
            matrix m;
            m.readtxt(path.str, 0, 1, 1, 1, '\t', 1);
            ASSERT_EQ(m.rows, 300);
            EXPECT_EQ(sum(vect(m) == m(1, 1)), 300 * 50);
        }
    }
}

namespace {

// No file grows beyond a thousand bytes, as on a full disk.
void fill_disk()
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit const none = {1000, 1000};
    setrlimit(RLIMIT_FSIZE, &none);
}

// Nobody can make files in the folder.
void protect(std::string const& path)
{
    chmod(path.c_str(), 0555);
    if (geteuid() == 0 && setuid(65534) != 0) _exit(1);
}

} // namespace

TEST(ProcessesDeathTest, KeepTheHeldContentWhenNoneCanBeWritten)
{
    folder f;
    Text const list = f.path("list").c_str();
    tasks t = new_list(list, 200);
    std::string const before = f.bytes("list"),
                      message = "TABLE: int writetxt(char *)\n"
                                "nieudane otwarcie pliku do zapisu\n",
                      detail = "plik: " + f.path("list") + "_\n";
    t.lock();
    auto in_full_disk = [&] {
        fill_disk();
        t.reserve(1);
    };
    auto in_protected_folder = [&] {
        protect(f.path(""));
        t.finish(1);
    };
    // what waits says so once
    auto data_in_full_disk = [&] {
        fill_disk();
        alarm(2);
        unlock(t.list, list);
    };
    auto const said = testing::StrEq("\n" + message + detail);
    EXPECT_EXIT(in_full_disk(), testing::ExitedWithCode(0), said);
    EXPECT_EXIT(in_protected_folder(), testing::ExitedWithCode(0), said);
    chmod(f.path("").c_str(), 0755);
    EXPECT_EXIT(data_in_full_disk(), testing::KilledBySignal(SIGALRM), said);
    EXPECT_EQ(f.bytes("list_"), before);
}

#endif
