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

/// Text of a line. What comes next is memory that may be read as well, but no number goes on there.
struct line_text {
    const char* end;
    const char* readable_end;

    const char* behind_blanks(const char* at) const {
        while (at != end && is_blank(*at))
            ++at;
        return at;
    }
    const char* behind_word(const char* at) const {
        while (at != end && !is_blank(*at))
            ++at;
        return at;
    }
};

/// Reads numbers in the manner of stream extraction, which knows neither "inf" nor numbers beyond
/// the range of double nor a cut exponent. Returns their count.
unsigned read_numbers(const line_text& line, const char* at, std::span<double> numbers) {
    unsigned count = 0;
    for (; count < numbers.size(); ++count) {
        at = line.behind_blanks(at);
        if (at == line.end) break;
        double& x = numbers[count];
        if (const char* const end = quick_real(at, line.readable_end, x)) {
            at = end;
            continue;
        }
        const std::string_view rest(at, line.end);
        const std::size_t length = leading_real(rest, x);
        at += length;
        const bool cut = at != line.end && (*at | 0x20) == 'e' &&
                         rest.substr(0, length).find_first_of("eE") == rest.npos;
        if (length == 0 || cut || !std::isfinite(x)) break;
    }
    return count;
}

/// Reads a whole number without a sign; its end, or nullptr when there is none that fits.
const char* read_index(const line_text& line, const char* at, unsigned int& n) {
    constexpr std::uint64_t largest = 0xFFFFFFFF;
    const char* const begin = at;
    std::uint64_t value = 0;
    std::ptrdiff_t count = take_digits(at, line.readable_end, value);
    if (count > most_whole_digits) { // unless they begin with zeros
        value = 0;
        at = std::find_if(begin, at, [](char c) { return c != '0'; });
        count = std::max<std::ptrdiff_t>(1, take_digits(at, line.readable_end, value));
    }
    if (count == 0 || count > most_whole_digits || value > largest) return nullptr;
    n = static_cast<unsigned int>(value);
    return at;
}

/// Reads a corner, n, n/t, n//m or n/t/m, as the node index of its n; its end, or nullptr.
const char* read_corner(const line_text& line, const char* at, unsigned int& node) {
    const auto ends = [&line](const char* place) { return place == line.end || is_blank(*place); };
    unsigned int unused = 0;
    at = read_index(line, at, node);
    if (!at) return nullptr;
    if (node > 0) --node;
    if (ends(at)) return at; // mostly
    if (*at++ != '/') return nullptr;
    const bool without_texcoords = at != line.end && *at == '/';
    if (!without_texcoords) {
        at = read_index(line, at, unused);
        if (!at || ends(at)) return at;
        if (*at != '/') return nullptr;
    }
    at = read_index(line, at + 1, unused);
    return at && ends(at) ? at : nullptr;
}

/// Columns on their way into a matrix of as many rows, which takes many at a time.
template <class T, std::size_t Rows>
class column_buffer {
public:
    explicit column_buffer(dense2D<T>& m)
        : m_(m) {}

    void add(const T* column) {
        std::copy_n(column, Rows, &values_[Rows * count_]);
        if (++count_ == most) flush();
    }
    void flush() {
        if (count_ == 0) return;
        append_columns(m_, Rows, count_, T{});
        for (std::size_t k = 0; k < count_; ++k)
            std::copy_n(&values_[Rows * k], Rows, &m_(0, m_.cols() - count_ + k));
        count_ = 0;
    }

private:
    static constexpr std::size_t most = 64;

    dense2D<T>& m_;
    std::size_t count_ = 0;
    std::array<T, Rows * most> values_;
};

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

/// Takes what lines say.
class obj_lines {
public:
    explicit obj_lines(const obj_arrays& out)
        : pos_(out.pos)
        , normals_(out.normals)
        , texcoords_(out.texcoords)
        , triangles_(out.triangles)
        , quads_(out.quads) {}

    void read(std::string_view text, const char* readable_end) {
        const line_text line{text.data() + text.size(), readable_end};
        const char* const begin = line.behind_blanks(text.data());
        const char* const at = line.behind_word(begin);
        const std::string_view keyword(begin, at);
        if (keyword == "f") return read_face(line, at);
        if (keyword != "v" && keyword != "vt" && keyword != "vn") return;
        std::array<double, 4> numbers{};
        const unsigned count = read_numbers(line, at, numbers);
        if (keyword == "v" && count >= 3) pos_.add(numbers.data());
        if (keyword == "vn" && count == 3) normals_.add(numbers.data());
        if (keyword == "vt" && count >= 1 && count <= 3) {
            if (count == 1) numbers[1] = 0.0; // what followed may have been no finite number
            texcoords_.add(numbers.data());
        }
    }
    /// Has the matrices hold everything.
    void flush() {
        pos_.flush();
        normals_.flush();
        texcoords_.flush();
        triangles_.flush();
        quads_.flush();
    }

private:
    void read_face(const line_text& line, const char* at) {
        std::array<unsigned int, 4> nodes;
        unsigned count = 0;
        for (at = line.behind_blanks(at); at != line.end; at = line.behind_blanks(at)) {
            if (count == nodes.size()) return;
            at = read_corner(line, at, nodes[count++]);
            if (!at) return;
        }
        if (count == 3) triangles_.add(nodes.data());
        if (count == 4) quads_.add(nodes.data());
    }

    column_buffer<double, 3> pos_;
    column_buffer<double, 3> normals_;
    column_buffer<double, 2> texcoords_;
    column_buffer<unsigned int, 3> triangles_;
    column_buffer<unsigned int, 4> quads_;
};

int input(const char* filename, const obj_arrays& out) {
    const closing_file file = open_to_read(filename);
    if (!file) return -1;
    need(out.pos.resize(3, 0));
    text_reader in(file.get());
    obj_lines lines(out);
    for (std::string_view line; in.line(line);)
        lines.read(line, in.readable_end());
    lines.flush();
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
