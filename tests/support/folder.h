// Files that tests make and look at.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// A folder of the running test's own, removed with the object. Its name is the same in the process
// that runs a death test.
class folder
{
public:
    folder()
    {
        auto const* test = testing::UnitTest::GetInstance()->current_test_info();
        root_ = std::string(test->test_suite_name()) + "." + test->name();
        std::replace(root_.begin(), root_.end(), '/', '.');
        std::filesystem::create_directories(root_);
    }
    ~folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    folder(folder const&) = delete;
    folder& operator=(folder const&) = delete;

    std::string path(std::string const& name) const { return root_ + "/" + name; }

    // The file's path, once it holds these bytes.
    std::string put(std::string const& name, std::string const& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    std::string make_folder(std::string const& name) const
    {
        std::filesystem::create_directories(path(name));
        return path(name);
    }
    std::string bytes(std::string const& name) const
    {
        std::ifstream f(path(name), std::ios::binary);
        EXPECT_TRUE(f.is_open()) << name;
        return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
    }
    // What a file written in text mode holds, its line ends made LF.
    std::string text(std::string const& name) const
    {
        std::string s = bytes(name);
#if defined(_WIN32)
        for (std::size_t at; (at = s.find("\r\n")) != s.npos;) s.erase(at, 1);
#endif
        return s;
    }
    bool holds(std::string const& name) const
    {
        return std::filesystem::exists(path(name));
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> r;
        for (auto const& entry : std::filesystem::directory_iterator(root_))
            r.push_back(entry.path().filename().string());
        std::sort(r.begin(), r.end());
        return r;
    }

private:
    std::string root_;
};
