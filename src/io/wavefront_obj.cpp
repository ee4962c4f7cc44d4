#include <kvx/zelvo/wavefront_obj.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "foundation/appending.h"
#include "foundation/memory_guard.h"
#include "io/number_text.h"
#include "io/open_files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo {

namespace {

// ---- writing

constexpr int digits = 8;
constexpr std::string_view zero = "0.00000000e+00 ";

/// One line for each column: keyword and numbers, at least `count` of them.
void write_vectors(text_writer& out, std::string_view keyword, const dense2D<double>& m,
                   std::uint64_t count) {
    if (m.empty()) return;
    for (std::uint64_t j = 0; j < m.cols() && !out.failed(); ++j) {
        out.text(keyword);
        for (std::uint64_t i = 0; i < m.rows(); ++i) {
            out.scientific(m(i, j), digits);
            out.text(" ");
        }
        for (std::uint64_t i = m.rows(); i < count; ++i)
            out.text(zero);
        out.text("\n");
    }
}

void write_faces(text_writer& out, const dense2D<unsigned int>& connectM, unsigned corners,
                 bool with_texcoords, bool with_normals) {
    if (connectM.empty()) return;
    for (std::uint64_t j = 0; j < connectM.cols() && !out.failed(); ++j) {
        out.text(" f ");
        for (unsigned i = 0; i < corners; ++i) {
            const std::uint64_t n = std::uint64_t{connectM(i, j)} + 1;
            out.number(n);
            out.text("/");
            if (with_texcoords) out.number(n);
            out.text("/");
            if (with_normals) out.number(n);
        }
        out.text(" \n");
    }
}

bool empty_or(const dense2D<double>& m, std::uint64_t rows, std::uint64_t cols) {
    return m.empty() || (m.rows() == rows && m.cols() == cols);
}

// ---- reading

/// Skips white space; whether anything follows.
bool skip_blanks(std::string_view& line) {
    while (!line.empty() && is_blank(line.front()))
        line.remove_prefix(1);
    return !line.empty();
}

std::string_view next_word(std::string_view& line) {
    skip_blanks(line);
    const auto* const end = std::find_if(line.begin(), line.end(), is_blank);
    const std::string_view word(line.begin(), end);
    line = {end, line.end()};
    return word;
}

/// Reads numbers in the manner of stream extraction, which knows neither "inf" nor numbers beyond
/// the range of double nor a cut exponent. Returns their count.
unsigned leading_numbers(std::string_view line, std::span<double> numbers) {
    unsigned count = 0;
    while (count < numbers.size()) {
        skip_blanks(line);
        const std::size_t length = leading_real(line, numbers[count]);
        const std::string_view number = line.substr(0, length);
        line.remove_prefix(length);
        const bool cut = (line.starts_with('e') || line.starts_with('E')) &&
                         number.find_first_of("eE") == number.npos;
        if (length == 0 || cut || !std::isfinite(numbers[count])) break;
        ++count;
    }
    return count;
}

/// Takes a whole number without a sign; whether there is one that fits.
bool take_index(std::string_view& text, unsigned int& n) {
    constexpr std::uint64_t largest = 0xFFFFFFFF;
    std::uint64_t value = 0;
    const char* at = text.begin();
    for (; at != text.end() && is_digit(*at); ++at) {
        if (value <= largest) value = 10 * value + digit(*at);
    }
    if (at == text.begin() || value > largest) return false;
    n = static_cast<unsigned int>(value);
    text.remove_prefix(static_cast<std::size_t>(at - text.begin()));
    return true;
}

bool take_slash(std::string_view& text) {
    const bool slash = text.starts_with('/');
    text.remove_prefix(slash);
    return slash;
}

/// Reads a corner, n, n/t, n//m or n/t/m, as the node index of its n.
bool read_corner(std::string_view word, unsigned int& node) {
    unsigned int unused = 0;
    if (!take_index(word, node)) return false;
    if (node > 0) --node;
    if (word.empty()) return true;
    if (!take_slash(word)) return false;
    const bool with_texcoords = take_index(word, unused);
    if (word.empty()) return with_texcoords;
    return take_slash(word) && take_index(word, unused) && word.empty();
}

template <class T>
void append_column(dense2D<T>& m, std::span<const T> column) {
    append_columns(m, column.size(), 1, T{});
    std::copy(column.begin(), column.end(), &m(0, m.cols() - 1));
}

struct obj_arrays {
    dense2D<double>& pos;
    dense2D<double>& normals;
    dense2D<double>& texcoords;
    dense2D<unsigned int>& triangles;
    dense2D<unsigned int>& quads;

    void clear_hard() const noexcept {
        pos.clear_hard();
        normals.clear_hard();
        texcoords.clear_hard();
        triangles.clear_hard();
        quads.clear_hard();
    }
};

void read_face(std::string_view corners, const obj_arrays& out) {
    std::array<unsigned int, 4> nodes;
    unsigned count = 0;
    for (std::string_view word; skip_blanks(corners); ++count) {
        if (count == nodes.size()) return;
        word = corners;
        unsigned int& node = nodes[count];
        if (take_index(word, node) && (word.empty() || is_blank(word.front()))) {
            corners = word; // mostly
            if (node > 0) --node;
        } else if (!read_corner(next_word(corners), node)) {
            return;
        }
    }
    const std::span<const unsigned int> face(nodes.data(), count);
    if (count == 3) append_column(out.triangles, face);
    if (count == 4) append_column(out.quads, face);
}

void read_line(std::string_view line, const obj_arrays& out) {
    const std::string_view keyword = next_word(line);
    if (keyword == "f") return read_face(line, out);
    if (keyword != "v" && keyword != "vt" && keyword != "vn") return;
    std::array<double, 4> numbers{};
    const unsigned count = leading_numbers(line, numbers);
    const std::span<const double> first(numbers);
    if (keyword == "v" && count >= 3) append_column(out.pos, first.first(3));
    if (keyword == "vn" && count == 3) append_column(out.normals, first.first(3));
    if (keyword == "vt" && count >= 1 && count <= 3) {
        if (count == 1) numbers[1] = 0.0; // what followed may have been no finite number
        append_column(out.texcoords, first.first(2));
    }
}

int input(const char* filename, const obj_arrays& out) {
    const closing_file file = open_to_read(filename);
    if (!file) return -1;
    need(out.pos.resize(3, 0));
    text_reader in(file.get());
    for (std::string_view line; in.line(line);)
        read_line(line, out);
    return std::ferror(file.get()) ? -1 : 0;
}

} // namespace

int WavefrontOBJ_output(const char* filename, const dense2D<double>& pos,
                        const dense2D<double>& normals, const dense2D<double>& texcoords,
                        const dense2D<unsigned int>& triangles,
                        const dense2D<unsigned int>& quads) noexcept {
    closing_file file(open_file(filename, "wb"));
    if (!file) return -1;
    if (pos.rows() != 2 && pos.rows() != 3) return -2;
    if (!empty_or(normals, 3, pos.cols())) return -3;
    if (!empty_or(texcoords, 2, pos.cols())) return -4;
    if (!triangles.empty() && triangles.rows() < 3) return -5;
    if (!quads.empty() && quads.rows() < 4) return -6;

    text_writer out(file.get());
    write_vectors(out, " v ", pos, 3);
    write_vectors(out, " vt ", texcoords, 2);
    write_vectors(out, " vn ", normals, 3);
    write_faces(out, triangles, 3, !texcoords.empty(), !normals.empty());
    write_faces(out, quads, 4, !texcoords.empty(), !normals.empty());
    return end_writing(out, std::move(file));
}

int WavefrontOBJ_input(const char* filename, dense2D<double>& pos, dense2D<double>& normals,
                       dense2D<double>& texcoords, dense2D<unsigned int>& triangles,
                       dense2D<unsigned int>& quads) noexcept {
    const obj_arrays out{pos, normals, texcoords, triangles, quads};
    out.clear_hard();
    const int code = guarded([&] { return input(filename, out); });
    if (code < 0) out.clear_hard();
    return code;
}

} // namespace kvx::zelvo
