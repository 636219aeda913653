#include <varnow/containers/temporary_file.h>

#include <varnow/core/platform.h>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <set>
#include <utility>

namespace varnow::detail {

namespace {

// A refusal ends the process by exit, which destroys this but no object on the stack.
struct live_files
{
    std::mutex lock;
    std::multiset<std::string> names;

    ~live_files()
    {
        for (std::string const& name : names) std::remove(name.c_str());
    }
};

live_files& live()
{
    static live_files files;
    return files;
}

} // namespace

temporary_file::temporary_file(std::string name) : name_(std::move(name))
{
    std::lock_guard<std::mutex> guard(live().lock);
    live().names.insert(name_);
}

temporary_file::~temporary_file()
{
    remove();
    std::lock_guard<std::mutex> guard(live().lock);
    live().names.erase(live().names.find(name_));
}

void temporary_file::remove() const
{
    std::remove(name_.c_str());
}

std::string draft_name(std::string const& file)
{
    static std::atomic<unsigned> count{0};
    return file + "." + platform::process_name() + "." + std::to_string(++count);
}

} // namespace varnow::detail
