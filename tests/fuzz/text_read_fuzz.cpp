// Text::read until the file ends, and a matrix dump, of any bytes.
#include <tests/fuzz/refusing.h>

#include <varnow/containers/matrix.h>

#include <cstring>
#include <memory>

using namespace varnow;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    struct closer
    {
        void operator()(std::FILE* f) const { std::fclose(f); }
    };
    static scratch_file const file;
    std::unique_ptr<std::FILE, closer> const f(
        std::fopen(file.with(std::string(reinterpret_cast<char const*>(data), size)), "rb"));
    if (!f) return 0;
    Text t;
    for (std::size_t i = 0; i <= size && !std::feof(f.get()); ++i) {
        t.read(f.get());
        if (t.str[t.len] != 0 || std::strlen(t.str) > static_cast<std::size_t>(t.len))
            __builtin_trap();
    }
    std::rewind(f.get());
    try {
        matrix m;
        m.readbin(f.get());
    } catch (refusal const&) {
    }
    return 0;
}
