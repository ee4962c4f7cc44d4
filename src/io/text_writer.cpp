#include "io/text_writer.h"

#include <cassert>
#include <cstring>
#include <limits>

namespace kvx::zelvo {

namespace {

constexpr int most_digits = 32;
/// Room for any number: sign, the digits before the point of the largest double, point, digits.
constexpr std::size_t longest_number =
    1 + (std::numeric_limits<double>::max_exponent10 + 1) + 1 + most_digits;

} // namespace

void text_writer::text(std::string_view bytes) noexcept {
    if (bytes.size() > buffer_.size() - size_) flush();
    if (bytes.size() > buffer_.size()) {
        failed_ |= std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size();
        return;
    }
    std::memcpy(buffer_.data() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
}

void text_writer::number(std::uint64_t n) noexcept {
    if (buffer_.size() - size_ < longest_number) flush();
    char* const first = buffer_.data() + size_;
    size_ += static_cast<std::size_t>(std::to_chars(first, first + longest_number, n).ptr - first);
}

void text_writer::formatted(double x, std::chars_format format, int digits) noexcept {
    assert(digits >= 0 && digits <= most_digits);
    if (buffer_.size() - size_ < longest_number) flush();
    char* const first = buffer_.data() + size_;
    const auto end = std::to_chars(first, first + longest_number, x, format, digits);
    assert(end.ec == std::errc());
    size_ += static_cast<std::size_t>(end.ptr - first);
}

bool text_writer::flush() noexcept {
    if (size_ > 0) failed_ |= std::fwrite(buffer_.data(), 1, size_, file_) != size_;
    size_ = 0;
    return !failed_;
}

} // namespace kvx::zelvo
