// Internal: a file that is removed with the object that names it.
#pragma once

#include <string>

namespace varnow::detail {

/// Removes the file, if it is there, at the end of its own life, or of the process when a refusal
/// ends that.
class temporary_file
{
public:
    explicit temporary_file(std::string name);
    ~temporary_file();
    temporary_file(temporary_file const&) = delete;
    temporary_file& operator=(temporary_file const&) = delete;

    char const* name() const { return name_.c_str(); }
    void remove() const;

private:
    std::string name_;
};

/// A name beside the file's that no other process or call uses, also on machines that share the
/// folder.
std::string draft_name(std::string const& file);

} // namespace varnow::detail
