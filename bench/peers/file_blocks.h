#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

/// Files as the floors read and write them: block by block.
namespace kvx::zelvo::bench {

constexpr std::size_t block_size = 256 * 1024;

class block_reader {
public:
    explicit block_reader(const std::string& name)
        : file_(std::fopen(name.c_str(), "rb"))
        , block_(block_size + 1) {
        if (!file_) throw std::runtime_error("cannot read " + name);
        (void)std::setvbuf(file_, nullptr, _IONBF, 0);
    }
    block_reader(const block_reader&) = delete;
    block_reader& operator=(const block_reader&) = delete;
    ~block_reader() { (void)std::fclose(file_); }

    const char* at() const { return block_.data() + begin_; }
    const char* end() const { return block_.data() + end_; }
    void skip_to(const char* p) { begin_ = static_cast<std::size_t>(p - block_.data()); }
    /// Has at least n bytes at hand (n <= block_size), unless the file ends; 0 stands behind them.
    bool have(std::size_t n) {
        if (end_ - begin_ >= n) return true;
        std::memmove(block_.data(), at(), end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        end_ += std::fread(block_.data() + end_, 1, block_size - end_, file_);
        block_[end_] = 0;
        return end_ >= n;
    }

private:
    std::FILE* file_;
    std::vector<char> block_;
    std::size_t begin_ = 0, end_ = 0;
};

class block_writer {
public:
    explicit block_writer(const std::string& name)
        : file_(std::fopen(name.c_str(), "wb"))
        , block_(block_size) {
        if (!file_) throw std::runtime_error("cannot write " + name);
        (void)std::setvbuf(file_, nullptr, _IONBF, 0);
    }
    block_writer(const block_writer&) = delete;
    block_writer& operator=(const block_writer&) = delete;
    ~block_writer() {
        flush();
        (void)std::fclose(file_);
    }

    /// Room for n bytes, of which `wrote` tells the end.
    char* room(std::size_t n) {
        if (block_.size() - used_ < n) flush();
        return block_.data() + used_;
    }
    void wrote(const char* p) { used_ = static_cast<std::size_t>(p - block_.data()); }

private:
    void flush() {
        if (std::fwrite(block_.data(), 1, used_, file_) != used_)
            std::fputs("a floor cannot write its file\n", stderr);
        used_ = 0;
    }

    std::FILE* file_;
    std::vector<char> block_;
    std::size_t used_ = 0;
};

inline char* put(char* to, const char* text, std::size_t n) {
    std::memcpy(to, text, n);
    return to + n;
}

template <std::size_t N>
char* put(char* to, const char (&text)[N]) {
    return put(to, text, N - 1);
}

} // namespace kvx::zelvo::bench
