#include <varnow/core/messages.h>

#include <varnow/core/platform.h>

#include <cstdlib>
#include <iostream>
#include <mutex>

namespace varnow {

namespace {

Text message_text(Text const& cls, Text const& routine, Text const& message, Text const& detail)
{
    std::string text = "\n";
    text.append(cls.str).append(": ").append(routine.str).append("\n");
    text.append(message.str).append("\n").append(detail.str).append("\n");
    return text;
}

// Taken for good by the first thread to refuse, since a process leaves once. An exit handler of
// that thread may still refuse.
std::recursive_mutex leaving;

} // namespace

void errormessage(Text const& cls, Text const& routine, Text const& message, Text const& detail)
{
    leaving.lock();
    warningmessage(cls, routine, message, detail);
    platform::pause();
    std::exit(0);
}

void warningmessage(Text const& cls, Text const& routine, Text const& message, Text const& detail)
{
    // One write, so that messages of several processes on one terminal stay whole.
    std::cerr << message_text(cls, routine, message, detail);
}

namespace detail {

Text fill_routine(Text const& routine, char const* t_word, char const* u_word,
                  char const* container)
{
    Text r = replace(routine, "_T_", t_word);
    if (u_word) r = replace(r, "_U_", u_word);
    return replace(r, "_data_", container);
}

Text index_detail(int rows, int cols, Text const& i)
{
    return itot(rows) + " x " + itot(cols) + " : ( " + i + " )";
}

Text index_detail(int rows, int cols, Text const& i, Text const& j)
{
    return itot(rows) + " x " + itot(cols) + " : ( " + i + " , " + j + " )";
}

} // namespace detail

} // namespace varnow
