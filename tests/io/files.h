#pragma once

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

/// Files for the tests of readers and writers.
namespace kvx::zelvo::tests {

/// A file that is there while a test runs, or a name for one that is to be written.
class scratch_file {
public:
    explicit scratch_file(const std::string& content = {})
        : path_(std::filesystem::temp_directory_path() /
                ("kvx_zelvo_" + std::to_string(getpid()) + "_" + std::to_string(made_++))) {
        std::ofstream(path_, std::ios::binary) << content;
    }
    ~scratch_file() { std::filesystem::remove(path_); }
    scratch_file(const scratch_file&) = delete;
    scratch_file& operator=(const scratch_file&) = delete;

    operator const char*() const { return path_.c_str(); }
    std::string content() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

private:
    inline static int made_ = 0;
    std::filesystem::path path_;
};

/// What an open file holds, whatever was read or written before.
inline std::string content_of(std::FILE* file) {
    std::fflush(file);
    std::rewind(file);
    std::string text;
    char block[4096];
    while (const std::size_t n = std::fread(block, 1, sizeof block, file))
        text.append(block, n);
    return text;
}

/// Descriptors that this process holds open.
inline std::vector<int> open_descriptors() {
    std::vector<int> open;
    for (int fd = 0; fd < 1024; ++fd) {
        if (fcntl(fd, F_GETFD) != -1) open.push_back(fd);
    }
    return open;
}

/// Closes what was opened since `before`; how many that were.
inline std::ptrdiff_t close_descriptors_since(const std::vector<int>& before) {
    std::ptrdiff_t surplus = 0;
    for (const int fd : open_descriptors()) {
        if (std::find(before.begin(), before.end(), fd) != before.end()) continue;
        close(fd);
        ++surplus;
    }
    return surplus;
}

/// A decimal comma and grouped digits, in the C library where such a locale is installed and in
/// the streams always.
class comma_locale {
public:
    comma_locale() {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
            if (std::setlocale(LC_NUMERIC, name)) break;
        }
    }
    ~comma_locale() {
        std::locale::global(before_);
        std::setlocale(LC_NUMERIC, "C");
    }

private:
    struct punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale before_ = std::locale::global(std::locale(std::locale(), new punctuation));
};

} // namespace kvx::zelvo::tests
