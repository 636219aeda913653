// Lists of short texts, as one text.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace varnow::test {

/// The pieces of a text between separators; "a|" is "a" and nothing behind it.
inline std::vector<std::string> split(std::string const& text, char separator)
{
    std::vector<std::string> r;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, separator);) r.push_back(piece);
    return r;
}

} // namespace varnow::test
