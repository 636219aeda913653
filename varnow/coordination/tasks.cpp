#include <varnow/containers/temporary_file.h>
#include <varnow/coordination/tasks.h>
#include <varnow/core/console.h>
#include <varnow/core/platform.h>

#include <filesystem>

namespace varnow {

namespace {

char const waiting[] = "waiting", in_progress[] = "in progress", finished[] = "finished";

Text lock_file(Text const& path)
{
    return path + "_";
}

template <class F> void until(F succeeds)
{
    while (!succeeds()) sleep(1);
}

void move(Text const& from, Text const& to)
{
    until([&] { return platform::replace_file(from.str, to.str) == 0; });
}

template <class T> void read(data<T>& a, Text const& path)
{
    a.sreadtxt(path.str, 0, 1, 1, 1, 9, 1);
}

// Writes the file beside and puts it in its place, so that the older content stays until the new
// one is whole.
template <class T> bool replace(data<T> const& a, Text const& path)
{
    detail::temporary_file const draft(detail::draft_name(path.str));
    if (a.writetxt(draft.name(), 0, 1, 1, 0, 9, 44, 0) != 0) return false;
    // Partners under other users keep their access.
    std::error_code ignored;
    auto const older = std::filesystem::status(path.str, ignored);
    if (std::filesystem::is_regular_file(older))
        std::filesystem::permissions(draft.name(), older.permissions(), ignored);
    // On Windows somebody who looks at the older file for a moment keeps it from being replaced.
    for (int tries = 0; platform::replace_file(draft.name(), path.str) != 0; ++tries) {
        if (tries == 5) return false;
        sleep(1);
    }
    return true;
}

char const not_written[] = "nieudane otwarcie pliku do zapisu", writer[] = "int writetxt(char *)";

// The same until it succeeds, with a word to whoever looks on.
template <class T> void replace_waiting(data<T> const& a, Text const& path)
{
    if (replace(a, path)) return;
    warningmessage<T>(writer, not_written, "plik: " + path);
    until([&] {
        sleep(1);
        return replace(a, path);
    });
}

template <class T> void lock_data(data<T>& a, Text const& path)
{
    Text const held = lock_file(path);
    move(path, held);
    read(a, held);
}

template <class T> void unlock_data(data<T> const& a, Text const& path)
{
    Text const held = lock_file(path);
    replace_waiting(a, held);
    move(held, path);
}

} // namespace

tasks::tasks(Text name) : tasks()
{
    filename = std::move(name);
    load();
}

tasks::tasks(int number, int params, Text name) : tasks()
{
    filename = std::move(name);
    resize(number, params);
}

void tasks::resize(int number, int params)
{
    list.resize(number, static_cast<int>(params + 1u));
    for (int j = 1; j <= params; ++j) list.colname(j) = "param" + itot(j);
    list.colname(params + 1) = "state";
    list.clear();
    n_tasks = number;
    n_params = params;
}

Text& tasks::operator()(int row, int col)
{
    return const_cast<Text&>(static_cast<tasks const&>(*this)(row, col));
}

Text const& tasks::operator()(int row, int col) const
{
    if (row < 1 || row > n_tasks || col < 1 || col > n_params)
        errormessage("TASKS", "Text & operator ()(int,int)", "indeks poza zakresem",
                     detail::index_detail(n_tasks, n_params, itot(row), itot(col)));
    return list(row, col);
}

void tasks::load()
{
    read(list, filename);
    take_sizes("void load()");
}

void tasks::save()
{
    if (lock_ != holding) return replace_waiting(list, filename);
    Text const held = lock_file(filename);
    replace_waiting(list, held);
    move(held, filename);
    lock_ = given_back;
}

void tasks::lock()
{
    Text const held = lock_file(filename);
    move(filename, held);
    lock_ = holding;
    list.readtxt(held.str, 0, 1, 1, 1, 9, 1);
    take_sizes("void lock()");
}

void tasks::unlock()
{
    if (lock_ != given_back) move(lock_file(filename), filename);
    lock_ = apart;
}

int tasks::find() const
{
    return list.rows > 0 ? list.find_cell(waiting, list.cols) : 0;
}

void tasks::reserve(int row)
{
    change(row, in_progress, "void reserve(int)");
}

void tasks::finish(int row)
{
    change(row, finished, "void finish(int)");
}

void tasks::startall()
{
    fill_states(waiting);
}

void tasks::finishall()
{
    fill_states(finished);
}

void tasks::repair()
{
    for (int i = 1; i <= list.rows; ++i)
        if (list(i, list.cols) == in_progress) list(i, list.cols) = waiting;
}

void tasks::synchronize()
{
    until([&] {
        load();
        for (int i = 1; i <= list.rows; ++i) {
            Text const& state = list(i, list.cols);
            if (state.len > 0 && !(state == finished)) return false;
        }
        return true;
    });
}

void tasks::waitfor(Text const& path)
{
    move(path, path);
}

// The state column is the last one, so a list has at least one.
void tasks::take_sizes(char const* routine)
{
    if (list.cols < 1) errormessage("TASKS", routine, "brak kolumn", "plik: " + filename);
    n_tasks = list.rows;
    n_params = list.cols - 1;
}

void tasks::change(int row, char const* state, char const* routine)
{
    if (row < 1 || row > list.rows || list.cols < 1)
        errormessage("TASKS", routine, "indeks poza zakresem",
                     detail::index_detail(n_tasks, n_params, itot(row)));
    list(row, list.cols) = state;
    // What is written here waits for an unlock of its own.
    if (lock_ == given_back) lock_ = apart;
    Text const held = lock_file(filename);
    if (!replace(list, held)) errormessage<Text>(writer, not_written, "plik: " + held);
}

void tasks::fill_states(char const* state)
{
    for (int i = 1; i <= list.rows; ++i) list(i, list.cols) = state;
}

void lock(matrix& m, Text path)
{
    lock_data(m, path);
}

void lock(table& t, Text path)
{
    lock_data(t, path);
}

void unlock(matrix const& m, Text path)
{
    unlock_data(m, path);
}

void unlock(table const& t, Text path)
{
    unlock_data(t, path);
}

} // namespace varnow
