// The library's single error path: a refusal prints four pieces and ends the process.
#pragma once

#include <varnow/core/text.h>

namespace varnow {

class date;

/// Prints a line end, class token, ": ", routine, and then message and detail, each on a line, to
/// standard error; waits for a key where a person sits at the terminal; ends the process by
/// exit(0). Callers still return a value behind it: a program may link an `errormessage` of its own
/// that throws.
VARNOW_API void errormessage(Text const& cls, Text const& routine, Text const& message,
                             Text const& detail);
/// Prints the same text and returns.
VARNOW_API void warningmessage(Text const& cls, Text const& routine, Text const& message,
                               Text const& detail);

namespace detail {

/// The words that stand for a cell type in the routine text of a message.
template <class T> struct type_words;
template <> struct type_words<double>
{
    static constexpr char const* word = "double";
    static constexpr char const* container = "matrix";
    static constexpr char const* token = "MATRIX";
};
template <> struct type_words<Text>
{
    static constexpr char const* word = "Text";
    static constexpr char const* container = "table";
    static constexpr char const* token = "TABLE";
};
template <> struct type_words<int>
{
    static constexpr char const* word = "int";
};
template <> struct type_words<char const*>
{
    static constexpr char const* word = "const char *";
};
template <> struct type_words<date>
{
    static constexpr char const* word = "date";
};

/// The routine text with _T_, then _U_ (when a word is given), then _data_ replaced.
VARNOW_API Text fill_routine(Text const& routine, char const* t_word, char const* u_word,
                             char const* container);

/// `rows x cols : ( i , j )`, the detail of a bad index; the names stand as they were given.
VARNOW_API Text index_detail(int rows, int cols, Text const& i);
VARNOW_API Text index_detail(int rows, int cols, Text const& i, Text const& j);

} // namespace detail

/// The forms for routines on templates: `_T_`, `_U_` and `_data_` in the routine text become the
/// names of the cell types and of the container, which also gives the class token.
// clang-format off
#define VARNOW_MESSAGE(name)                                                                           \
    template <class T> void name(Text const& routine, Text const& message, Text const& detail_text)   \
    {                                                                                                  \
        using words = detail::type_words<T>;                                                           \
        name(words::token, detail::fill_routine(routine, words::word, nullptr, words::container),      \
             message, detail_text);                                                                    \
    }                                                                                                  \
    template <class T, class U>                                                                        \
    void name(Text const& routine, Text const& message, Text const& detail_text)                      \
    {                                                                                                  \
        using words = detail::type_words<T>;                                                           \
        name(words::token,                                                                             \
             detail::fill_routine(routine, words::word, detail::type_words<U>::word,                   \
                                  words::container),                                                   \
             message, detail_text);                                                                    \
    }
VARNOW_MESSAGE(errormessage) VARNOW_MESSAGE(warningmessage)
#undef VARNOW_MESSAGE
// clang-format on

} // namespace varnow
