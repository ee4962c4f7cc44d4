#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <string>

#include <unistd.h>

#include "io/open_files.h"

/// Files for the tests of readers and writers.
namespace kvx::zelvo::tests {

inline std::string content_of(const char* name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A file that is there while a test runs.
class scratch_file {
public:
    explicit scratch_file(const std::string& content = {})
        : path_(std::filesystem::temp_directory_path() /
                ("kvx_zelvo_" + std::to_string(getpid()) + "_" + std::to_string(made_++))) {
        std::ofstream(path_, std::ios::binary) << content;
    }
    ~scratch_file() { std::filesystem::remove(path_); }

    operator const char*() const { return path_.c_str(); }
    closing_file open(const char* mode) const { return closing_file(open_file(*this, mode)); }
    std::string content() const { return content_of(*this); }

private:
    inline static int made_ = 0;
    std::filesystem::path path_;
};

/// Names to which nothing can be written and from which no file can be read.
constexpr const char* no_files[] = {nullptr, "/nowhere/file", "/tmp", "/dev/full"};

inline auto open_descriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

/// The tests run with a decimal comma and grouped digits, which must not get into any file.
struct comma_punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};
inline const std::locale usual_locale =
    std::locale::global(std::locale(std::locale(), new comma_punctuation));

} // namespace kvx::zelvo::tests
