// A refusal ends the process; under a fuzzer it ends the one run.
#pragma once

#include <varnow/core/messages.h>
#include <varnow/core/platform.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

struct refusal
{
};

namespace varnow {

// Stands in place of the library's own.
__attribute__((visibility("default"))) void errormessage(Text const&, Text const&, Text const&,
                                                         Text const&)
{
    throw refusal();
}

} // namespace varnow

// The input's first bytes choose the options of a run.
class choices
{
public:
    choices(std::uint8_t const* data, std::size_t size) : data_(data), size_(size) {}
    unsigned next()
    {
        if (size_ == 0) return 0;
        --size_;
        return *data_++;
    }
    std::string rest() const { return {reinterpret_cast<char const*>(data_), size_}; }

private:
    std::uint8_t const* data_;
    std::size_t size_;
};

// One file for all runs, removed at the end.
class scratch_file
{
public:
    scratch_file() : name_("fuzz_" + varnow::platform::process_name()) {}
    ~scratch_file() { std::remove(name_.c_str()); }
    char const* with(std::string const& bytes) const
    {
        std::FILE* const f = std::fopen(name_.c_str(), "wb");
        if (!f) return name_.c_str();
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
        return name_.c_str();
    }

private:
    std::string name_;
};
