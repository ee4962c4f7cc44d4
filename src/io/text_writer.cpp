#include "io/text_writer.h"

#include <cassert>
#include <charconv>

namespace kvx::zelvo {

void text_writer::long_text(std::string_view bytes) noexcept {
    flush();
    if (bytes.size() > buffer_.size()) {
        failed_ |= std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size();
        return;
    }
    std::memcpy(buffer_.data(), bytes.data(), bytes.size());
    size_ = bytes.size();
}

void text_writer::end_padded(const char* end, int width) noexcept {
    assert(width >= -widest && width <= widest);
    char* const first = buffer_.data() + size_;
    const auto length = static_cast<std::size_t>(end - first);
    const auto wanted = static_cast<std::size_t>(width < 0 ? -width : width);
    const std::size_t blanks = wanted > length ? wanted - length : 0;
    if (blanks > 0 && width > 0) std::memmove(first + blanks, first, length);
    std::memset(width > 0 ? first : first + length, ' ', blanks);
    size_ += length + blanks;
}

void text_writer::shortest(double x) noexcept {
    char* const first = room();
    end_number(std::to_chars(first, first + longest_number, x).ptr);
}

bool text_writer::flush() noexcept {
    if (size_ > 0) failed_ |= std::fwrite(buffer_.data(), 1, size_, file_) != size_;
    size_ = 0;
    return !failed_;
}

} // namespace kvx::zelvo
