// One work list for many processes, and locks of data files, by nothing but a rename.
#pragma once

#include <varnow/containers/table.h>

namespace varnow {

/// A list of parameter sets in a text file, through which processes that share a directory work
/// together. A row is a task: columns "param1", "param2", ... and "state", which is "waiting", "in
/// progress" or "finished"; no routine here takes up a task in any other state.
///
/// The lock of the list f is its name: a process that renames f to f + "_" holds it until it
/// renames the file back. Nothing breaks the lock of a process that died: the operator renames the
/// file back. Every new content is written whole into a file beside and renamed into place, so that
/// neither a kill nor a full disk loses the one that was there.
///
/// A worker's life: `lock`; `find`, and if that gives 0 `unlock` and end; `reserve`, `unlock`;
/// work; `lock`, `finish`, `unlock`; and again.
///
/// - the file: as `writetxt` writes it with row names, header, tabs and decimal commas: a point in
///   a parameter is a comma afterwards, and a parameter holds no tab, line end or double quote and
///   at most 255 characters. A last line without its line end is no task.
/// - waits: those marked "waits" try again every second, for ever; a file that is held and one that
///   was never there look the same
/// - refuse: a file that lines of different length or a field above 255 characters damage, as
///   `readtxt` does, also while the lock is held; a file without any column; rows outside the list
/// - an object belongs to one thread; all partners use the same path
class VARNOW_API tasks
{
public:
    Text filename;
    int n_tasks;
    int n_params;
    table list; ///< n_tasks by n_params + 1

    tasks() : n_tasks(0), n_params(0) {}
    /// `load` of that file.
    tasks(Text name);
    /// A list with empty cells and states, which is not written.
    tasks(int number, int params, Text name);

    void resize(int number, int params);
    /// Empties all cells, states included.
    void clear() { list.clear(0); }
    /// The file is not touched.
    void changename(Text name) { filename = std::move(name); }
    /// A parameter; the state cannot be reached. Refuses a position out of range.
    Text& operator()(int row, int col);
    Text const& operator()(int row, int col) const;

    /// Reads the file, without the lock. Waits.
    /// A reader without the lock that opened the file before it was renamed goes on with the
    /// content of that moment, which the list may have left behind since; where somebody rewrites
    /// that file in place, by an editor for one, it can see half of it.
    void load();
    /// Writes the file; does not take the lock. Warns at the first failure, and waits. An object
    /// that holds the lock writes through it and so gives it back with the new content; the
    /// `unlock` that follows has nothing left to do (`lock`, `repair`, `save`, `unlock`).
    void save();

    /// Takes the lock and reads the newest list. Waits.
    void lock();
    /// Gives the lock back; writes nothing. Waits, also when it was not held.
    void unlock();
    /// The first row in state "waiting" of the list in memory, 0 if there is none.
    int find() const;
    /// Put the row into state "in progress" and "finished" and write the list into the file of the
    /// lock. Whether this process holds it is not checked.
    /// - refuse: a row outside the list; a file that cannot be written, whose content stays
    void reserve(int row);
    void finish(int row);

    // In memory only.
    void startall();  ///< all rows to "waiting"
    void finishall(); ///< all rows to "finished"
    void repair();    ///< rows "in progress" to "waiting"

    /// Reads the file, without the lock, until every state is "finished" or empty. Waits, a state
    /// that no worker takes up included.
    void synchronize();
    /// Returns when the file is there and not held. Waits.
    static void waitfor(Text const& path);

private:
    enum { apart, holding, given_back } lock_ = apart;

    void take_sizes(char const* routine);
    void change(int row, char const* state, char const* routine);
    void fill_states(char const* state);
};

/// Take the lock of one data file, by renaming path to path + "_", and read it, in the form above.
/// Wait.
VARNOW_API void lock(matrix& m, Text path);
VARNOW_API void lock(table& t, Text path);
// A literal would go to std::lock where both namespaces are open.
inline void lock(matrix& m, char const* path)
{
    lock(m, Text(path));
}
inline void lock(table& t, char const* path)
{
    lock(t, Text(path));
}
/// Write the object whole into the file of the lock and give it back. Warn at the first failure of
/// writing, and wait. Cells of a matrix have six decimals.
VARNOW_API void unlock(matrix const& m, Text path);
VARNOW_API void unlock(table const& t, Text path);

} // namespace varnow
