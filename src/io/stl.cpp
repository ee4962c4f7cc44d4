#include <kvx/zelvo/stl.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <numeric>
#include <string_view>

#include <kvx/zelvo/degenerate_elements.h>
#include <kvx/zelvo/node_indices.h>
#include <kvx/zelvo/node_merging.h>
#include <kvx/zelvo/simplification.h>

#include "foundation/large_blocks.h"
#include "foundation/memory_guard.h"
#include "io/distinct_nodes.h"
#include "io/nearest_rounding.h"
#include "io/number_text.h"
#include "io/open_files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo {

namespace {

using point = std::array<double, 3>;
using triangle = std::array<point, 3>;

// The binary form, little-endian: header, number of facets, facets of a normal, three vertices
// (32-bit floats) and a 16-bit attribute.
constexpr std::size_t header_size = 80;
constexpr std::size_t preamble_size = header_size + 4;
constexpr std::size_t facet_size = 50;
constexpr std::size_t vertices_offset = 12;

/// Part of the smallest height up to which nodes are taken for one.
constexpr double merging_part = 0.05;

// ---- geometry

point difference(const point& a, const point& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

point cross(const point& a, const point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double squared_length(const point& a) {
    return a[0] * a[0] + a[1] * a[1] + a[2] * a[2];
}

double length(const point& a) {
    return std::sqrt(squared_length(a));
}

/// The vector times the power of two that brings its largest component near 1, so that products of
/// very long or short vectors stay numbers. Exact.
point scaled(const point& a) {
    const double largest = std::max({std::abs(a[0]), std::abs(a[1]), std::abs(a[2])});
    if (!(largest > 0.0) || !std::isfinite(largest)) return a;
    const auto biased = static_cast<unsigned>(std::bit_cast<std::uint64_t>(largest) >> 52);
    if (biased > 0 && biased < 2046) { // the power of two is a normal number
        const auto factor = std::bit_cast<double>(std::uint64_t{2046 - biased} << 52);
        return {factor * a[0], factor * a[1], factor * a[2]};
    }
    const int exponent = -std::ilogb(largest);
    return {std::ldexp(a[0], exponent), std::ldexp(a[1], exponent), std::ldexp(a[2], exponent)};
}

/// 0 where the corners have no plane or are no finite numbers.
point unit_normal(const triangle& t) {
    const point n = cross(scaled(difference(t[1], t[0])), scaled(difference(t[2], t[0])));
    const double size = length(n);
    if (!(size > 0.0) || !std::isfinite(size)) return {0.0, 0.0, 0.0};
    return {n[0] / size, n[1] / size, n[2] / size};
}

/// Distance of p to the line through a and b; 0 where these are one point.
double height(const point& p, const point& a, const point& b) {
    const point base = difference(b, a);
    const double base_length = length(base);
    return base_length == 0.0 ? 0.0 : length(cross(difference(p, a), base)) / base_length;
}

/// Smallest height of a triangle; 0 unless all three are positive, as they are not where a
/// coordinate is no finite number.
double smallest_height(const triangle& t) {
    const double h0 = height(t[0], t[1], t[2]);
    const double h1 = height(t[1], t[2], t[0]);
    const double h2 = height(t[2], t[0], t[1]);
    return h0 > 0.0 && h1 > 0.0 && h2 > 0.0 ? std::min({h0, h1, h2}) : 0.0;
}

/// Smallest positive height of all triangles; the largest double where there is none.
class smallest_positive_height {
public:
    void add(const triangle& t) {
        if (is_surely_higher(t)) return;
        const double h = smallest_height(t);
        if (h > 0.0 && h < smallest_) smallest_ = h;
    }
    double value() const { return smallest_; }

private:
    /// Tells for most triangles, from squares, that none of their heights as computed is smaller:
    /// twice the area over the longest side is larger by more than rounding does to it.
    bool is_surely_higher(const triangle& t) const {
        constexpr double margin = 1 + 1e-6;
        constexpr double least_part = 1e-12; // of area: below, rounding may do more to it
        constexpr double least = 1e-280;     // squares have all their digits
        const point a = difference(t[1], t[0]);
        const point b = difference(t[2], t[0]);
        const point c = difference(t[2], t[1]);
        const double longest = std::max({squared_length(a), squared_length(b), squared_length(c)});
        const double area = squared_length(cross(a, b));
        return area > least && area > least_part * longest * longest &&
               area > smallest_ * smallest_ * margin * longest;
    }

    double smallest_ = std::numeric_limits<double>::max();
};

triangle corners_of(const dense2D<double>& pos, const unsigned int* nodes) {
    triangle t;
    for (unsigned k = 0; k < 3; ++k) {
        const double* const x = &pos(0, nodes[k]);
        t[k] = {x[0], x[1], pos.rows() == 3 ? x[2] : 0.0};
    }
    return t;
}

// ---- writing

/// Three numbers of the ASCII form, each with a blank before it, and the end of their line.
class vector_text {
public:
    void assign(const point& x) noexcept {
        char* at = text_.data();
        for (const double component : x) {
            *at++ = ' ';
            at = write_scientific(at, component);
        }
        *at++ = '\n';
        length_ = static_cast<std::uint8_t>(at - text_.data());
    }
    operator std::string_view() const noexcept { return {text_.data(), length_}; }

private:
    static constexpr std::size_t longest = 3 * std::string_view(" -1.234567e+308").size() + 1;
    std::array<char, longest> text_;
    std::uint8_t length_ = 0;
};

/// The texts of the nodes written last, since facets of one neighbourhood share their nodes. A node
/// has one place, which it may have to leave to another.
class node_texts {
public:
    /// The text of a node at x; valid until the next one.
    std::string_view operator()(unsigned int node, const point& x) noexcept {
        place& p = places_[node % places_.size()];
        if (p.node != node) {
            p.node = node;
            p.text.assign(x);
        }
        return p.text;
    }

private:
    struct place {
        vector_text text;
        unsigned int node = no_node;
    };

    std::array<place, 1024> places_;
};

class ascii_writer {
public:
    explicit ascii_writer(text_writer& out) noexcept
        : out_(out) {}

    void operator()(const triangle& t, const unsigned int* nodes) noexcept {
        vector_text normal;
        normal.assign(unit_normal(t));
        out_.text("   facet normal");
        out_.text(normal);
        out_.text("      outer loop\n");
        for (unsigned k = 0; k < 3; ++k) {
            out_.text("         vertex");
            out_.text(texts_(nodes[k], t[k]));
        }
        out_.text("      endloop\n"
                  "   endfacet\n");
    }

private:
    text_writer& out_;
    node_texts texts_;
};

char* put_bytes(char* out, std::uint32_t value) {
    if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
    std::memcpy(out, &value, sizeof value);
    return out + sizeof value;
}

/// The nearest float; beyond its range infinity, where a plain conversion is undefined.
float to_float(double x) {
    constexpr double largest = std::numeric_limits<float>::max();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    if (std::abs(x) > largest) return x > 0.0 ? infinity : -infinity;
    return static_cast<float>(x);
}

char* put_point(char* out, const point& x) {
    for (const double component : x)
        out = put_bytes(out, std::bit_cast<std::uint32_t>(to_float(component)));
    return out;
}

void write_binary_facet(text_writer& out, const triangle& t) {
    char* at = put_point(out.room(), unit_normal(t));
    for (const point& vertex : t)
        at = put_point(at, vertex);
    *at++ = 0; // attribute
    *at++ = 0;
    out.end(at);
}

/// Calls write(corners, nodes) for each facet until the file refuses something.
template <class WriteFacet>
void write_facets(const text_writer& out, const dense2D<double>& pos,
                  const dense2D<unsigned int>& connectM, WriteFacet&& write) {
    if (connectM.empty()) return;       // columns without rows hold no facet
    constexpr std::uint64_t ahead = 16; // facets of shuffled meshes wait for memory otherwise
    for (std::uint64_t j = 0; j < connectM.cols() && !out.failed(); ++j) {
        const unsigned int* const later = &connectM(0, std::min(j + ahead, connectM.cols() - 1));
        for (unsigned k = 0; k < 3; ++k)
            prefetch(&pos(0, later[k]));
        const unsigned int* const nodes = &connectM(0, j);
        write(corners_of(pos, nodes), nodes);
    }
}

void write_ascii(text_writer& out, const dense2D<double>& pos,
                 const dense2D<unsigned int>& connectM) {
    out.text("solid KVX\n");
    write_facets(out, pos, connectM, ascii_writer(out));
    out.text("endsolid KVX\n");
}

/// Whether the 32-bit count of the binary form tells the number of triangles.
bool is_countable(const dense2D<unsigned int>& connectM) {
    return connectM.empty() || connectM.cols() <= std::numeric_limits<std::uint32_t>::max();
}

void write_binary(text_writer& out, const dense2D<double>& pos,
                  const dense2D<unsigned int>& connectM) {
    constexpr std::string_view title = "KVX STL Binary";
    std::array<char, preamble_size> preamble{};
    std::copy(title.begin(), title.end(), preamble.begin());
    put_bytes(preamble.data() + header_size,
              connectM.empty() ? 0 : static_cast<std::uint32_t>(connectM.cols()));
    out.text({preamble.data(), preamble.size()});
    write_facets(out, pos, connectM,
                 [&out](const triangle& t, const unsigned int*) { write_binary_facet(out, t); });
}

// ---- reading

std::uint32_t get_bytes(const char* bytes) {
    std::uint32_t value = 0;
    for (int k = 3; k >= 0; --k)
        value = value << 8 | static_cast<unsigned char>(bytes[k]);
    return value;
}

/// Size of a regular file, 0 for anything else.
std::uint64_t regular_file_size(const char* filename) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(filename, error);
    return error ? 0 : size;
}

std::uint64_t whole_facets(std::uint64_t file_size) {
    return file_size < preamble_size ? 0 : (file_size - preamble_size) / facet_size;
}

/// A source of facets: start() reads what comes before them and tells whether it is there, next()
/// the vertices of one, skip_ending() what a well-formed file has behind them. position() is the
/// end of what was understood.
class ascii_facets {
public:
    explicit ascii_facets(text_reader& in)
        : in_(in) {}

    bool start() { return in_.skip_line(); }
    std::uint64_t announced() const { return 0; }
    bool next(triangle& t) {
        point normal;
        in_.skip_blanks();
        understood_ = in_.position();
        return vector(" facet normal ", normal) && in_.skip_line() && vector(" vertex ", t[0]) &&
               vector(" vertex ", t[1]) && vector(" vertex ", t[2]) && in_.skip_line() &&
               in_.skip_line();
    }
    void skip_ending() {
        if (in_.position() != understood_ || !in_.literal("endsolid")) return;
        in_.skip_line();
        in_.skip_blanks();
        understood_ = in_.position();
    }
    std::uint64_t understood() const { return understood_; }

private:
    /// Keyword, three numbers and the white space behind them.
    bool vector(std::string_view keyword, point& x) {
        const bool complete =
            in_.literal(keyword) && in_.number(x[0]) && in_.number(x[1]) && in_.number(x[2]);
        in_.skip_blanks();
        return complete;
    }

    text_reader& in_;
    std::uint64_t understood_ = 0;
};

class binary_facets {
public:
    explicit binary_facets(text_reader& in)
        : in_(in) {}

    bool start() {
        const char* const preamble = in_.bytes(preamble_size);
        if (preamble) left_ = announced_ = get_bytes(preamble + header_size);
        return preamble != nullptr;
    }
    std::uint64_t announced() const { return announced_; }
    bool next(triangle& t) {
        const char* at = left_ > 0 ? in_.bytes(facet_size) : nullptr;
        if (!at) return false;
        --left_;
        at += vertices_offset;
        for (point& vertex : t) {
            for (double& x : vertex) {
                x = std::bit_cast<float>(get_bytes(at));
                at += sizeof(float);
            }
        }
        return true;
    }
    void skip_ending() {}
    std::uint64_t understood() const { return in_.position(); }

private:
    text_reader& in_;
    std::uint64_t announced_ = 0;
    std::uint64_t left_ = 0;
};

/// Gathers facets, as many at a time as are numbered at once, and finds their smallest height.
class facet_nodes {
public:
    /// A closed surface has half as many nodes as facets.
    facet_nodes(dense2D<double>& pos, dense2D<unsigned int>& connectM, std::uint64_t expected)
        : nodes_(pos, countable(expected) / 2 + expected / 16)
        , connectM_(connectM) {
        need(connectM.reserve(3, expected));
    }

    void push(const triangle& t) {
        smallest_height_.add(t);
        std::copy(t.begin(), t.end(), block_.begin() + 3 * static_cast<std::ptrdiff_t>(held_));
        if (++held_ == facets_at_once) number();
    }

    /// To be called behind the last facet; returns the number of distinct nodes.
    std::uint64_t finish() {
        number();
        if (facets_ == 0) {
            connectM_.clear();
        } else {
            connectM_.resize(3, facets_);
        }
        return nodes_.finish();
    }

    std::uint64_t facets() const { return facets_; }
    /// Whether a facet has a node twice.
    bool has_repeated() const { return has_repeated_; }
    double smallest_height() const { return smallest_height_.value(); }

private:
    static constexpr std::size_t facets_at_once = distinct_nodes::most_at_once / 3;

    /// The number of facets, when three nodes each have 32-bit numbers.
    static std::uint64_t countable(std::uint64_t facets) {
        need_numbers_for(3 * facets);
        return facets;
    }
    void number() {
        if (countable(facets_ + held_) > connectM_.cols()) make_room();
        unsigned int* const numbers = connectM_.data() + 3 * facets_;
        nodes_.number({block_.data(), 3 * held_}, numbers);
        for (const unsigned int* n = numbers; n != numbers + 3 * held_; n += 3)
            has_repeated_ |= n[0] == n[1] || n[1] == n[2] || n[2] == n[0];
        facets_ += held_;
        held_ = 0;
    }
    void make_room() {
        constexpr std::uint64_t step = 1024;
        const std::uint64_t wanted = facets_ + held_;
        if (wanted > connectM_.col_capacity()) need(connectM_.reserve(3, 2 * wanted + step));
        need(connectM_.resize(3, std::min(wanted + step, connectM_.col_capacity())));
    }

    std::array<point, 3 * facets_at_once> block_;
    std::size_t held_ = 0;
    distinct_nodes nodes_;
    dense2D<unsigned int>& connectM_;
    std::uint64_t facets_ = 0;
    bool has_repeated_ = false;
    smallest_positive_height smallest_height_;
};

/// What reading found, besides the surface itself with nodes of equal coordinates taken for one.
struct surface_read {
    std::uint64_t nodes = 0;
    bool has_repeated = false; ///< a facet has a node twice
    double smallest_height = 0.0;
    std::uint64_t understood = 0; ///< bytes
};

/// Reads facets; false when what comes before them is not there.
template <class Source>
bool read_facets(Source source, std::uint64_t most_expected, dense2D<double>& pos,
                 dense2D<unsigned int>& connectM, STL_report& report, surface_read& found) {
    if (!source.start()) return false;
    report.announced_facets = source.announced();
    facet_nodes nodes(pos, connectM, std::min(source.announced(), most_expected));
    for (triangle t; source.next(t);)
        nodes.push(t);
    found.nodes = nodes.finish();
    found.has_repeated = nodes.has_repeated();
    found.smallest_height = nodes.smallest_height();
    report.facets = nodes.facets();
    source.skip_ending();
    found.understood = source.understood();
    return true;
}

bool read_file(std::FILE* file, bool ascii, std::uint64_t file_size, bool to_the_end,
               dense2D<double>& pos, dense2D<unsigned int>& connectM, STL_report& report,
               surface_read& found) {
    text_reader in(file);
    const std::uint64_t most = whole_facets(file_size);
    const bool started = ascii ? read_facets(ascii_facets(in), most, pos, connectM, report, found)
                               : read_facets(binary_facets(in), most, pos, connectM, report, found);
    if (started && to_the_end) {
        in.skip_rest();
        report.unread_bytes = in.position() - found.understood;
    }
    return started;
}

/// Gives every facet three nodes of its own again, in order.
void take_apart(dense2D<double>& pos, dense2D<unsigned int>& connectM) {
    dense2D<double> apart;
    const std::uint64_t nodes = 3 * connectM.cols();
    need(apart.make_zeros(3, nodes));
    for (std::uint64_t k = 0; k < nodes; ++k)
        std::copy_n(&pos(0, connectM.data()[k]), 3, &apart(0, k));
    std::iota(connectM.data(), connectM.data() + nodes, 0u);
    pos.swap(apart);
}

/// Gives back the room of columns that are gone; without memory it stays.
template <class T>
void trim(dense2D<T>& m) {
    if (m.col_capacity() > m.cols() + m.cols() / 4) m.copy(m);
}

int clean(dense2D<double>& pos, dense2D<unsigned int>& connectM, const surface_read& found,
          STL_report& report) {
    if (connectM.cols() > 0 && !(report.tolerance >= 0)) return -5;
    dense1D<unsigned int> nodes(found.nodes);
    std::iota(nodes.begin(), nodes.end(), 0u);
    dense1D<unsigned int> new_IDs;
    const int merged = merge(pos, nodes, new_IDs, report.tolerance);
    if (merged < 0) return merged;
    nodes.clear_hard();
    int removed = 0;
    int dropped = 0;
    if (merged > 0) change_indices(connectM, new_IDs);
    if (merged > 0 || found.has_repeated) {
        removed = remove_degenerated(connectM, new_IDs, true);
        if (removed < 0) return removed;
        new_IDs.clear_hard();
        dropped = simplify(pos, connectM, 0);
        if (dropped < 0) return dropped;
    }
    trim(pos);
    trim(connectM);
    const auto sum = [](std::uint64_t a, int b) {
        return static_cast<std::uint64_t>(count_result(a + static_cast<std::uint64_t>(b)));
    };
    const std::uint64_t gathered = 3 * report.facets - found.nodes;
    report.merged_nodes = sum(gathered, merged);
    report.removed_elements = static_cast<std::uint64_t>(removed);
    report.removed_nodes = sum(gathered, dropped);
    return 0;
}

/// STL_input; counts the bytes that were not understood when it reads to the end, for which a pipe
/// may keep it waiting. The result is that of reading three nodes a facet, which merge,
/// remove_degenerated and simplify then clean.
int input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM, bool ascii,
          double tolerance, bool to_the_end, STL_report& report) {
    const nearest_rounding rounding; // also for the nodes that are taken for one
    const closing_file file = open_to_read(filename);
    if (!file) return -1;
    const std::uint64_t size = regular_file_size(filename);
    surface_read found;
    if (!read_file(file.get(), ascii, size, to_the_end, pos, connectM, report, found)) return -1;
    if (std::ferror(file.get())) return -1; // what was read may be part of the surface only
    if (std::isnan(tolerance)) {
        if (found.smallest_height == std::numeric_limits<double>::max()) {
            take_apart(pos, connectM);
            return count_result(connectM.cols());
        }
        tolerance = merging_part * found.smallest_height;
    }
    report.tolerance = tolerance;
    const int code = clean(pos, connectM, found, report);
    return code < 0 ? code : count_result(connectM.cols());
}

int guarded_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
                  bool ascii, double tolerance, bool to_the_end, STL_report& report) noexcept {
    pos.clear();
    connectM.clear();
    report = {};
    const int code = guarded(
        [&] { return input(filename, pos, connectM, ascii, tolerance, to_the_end, report); });
    if (code < 0) {
        pos.clear_hard();
        connectM.clear_hard();
    }
    return code;
}

// ---- telling the form

bool is_control(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

bool is_text(std::string_view bytes) {
    return std::none_of(bytes.begin(), bytes.end(),
                        [](char c) { return is_control(c) && !is_blank(c); });
}

/// Whether text begins with "solid" in any case, after a byte-order mark and white space.
bool begins_solid(std::string_view text) {
    constexpr std::string_view keyword = "solid";
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
    text.remove_prefix(static_cast<std::size_t>(
        std::find_if_not(text.begin(), text.end(), is_blank) - text.begin()));
    return text.size() >= keyword.size() &&
           std::equal(keyword.begin(), keyword.end(), text.begin(),
                      [](char lower, char c) { return c == lower || c == lower - 'a' + 'A'; });
}

/// Whether a header is printable text padded with NULs or blanks.
bool is_title(std::string_view header) {
    header = header.substr(0, header.find_last_not_of(std::string_view("\0 ", 2)) + 1);
    return std::none_of(header.begin(), header.end(), is_control);
}

STL_format format_of(std::string_view beginning, std::uint64_t size) {
    const bool has_preamble = beginning.size() >= preamble_size;
    const std::uint64_t announced = has_preamble ? get_bytes(beginning.data() + header_size) : 0;
    if (has_preamble && size == preamble_size + announced * facet_size) return STL_format::binary;
    if (is_text(beginning)) // so no other text passes for a cut binary file
        return begins_solid(beginning) ? STL_format::ascii : STL_format::unknown;
    const bool facets_as_announced = announced == 0 || whole_facets(size) > 0;
    if (has_preamble && is_title(beginning.substr(0, header_size)) && facets_as_announced)
        return STL_format::binary;
    return STL_format::unknown;
}

} // namespace

int STL_output(const char* filename, const dense2D<double>& pos,
               const dense2D<unsigned int>& connectM, bool ascii) noexcept {
    std::FILE* const file = open_file(filename, "wb");
    if (!file) return -1;
    if (pos.rows() != 2 && pos.rows() != 3) return leave_open(file, -2);
    if (!ascii && !is_countable(connectM)) return leave_open(file, -3);
    if (!check_IDs(connectM, ET_TRIA3, index_bound(pos.cols()))) return leave_open(file, -3);
    text_writer out(file);
    if (ascii) {
        write_ascii(out, pos, connectM);
    } else {
        write_binary(out, pos, connectM);
    }
    return end_writing(out, closing_file(file));
}

int STL_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
              bool ascii) noexcept {
    STL_report report;
    constexpr double derived = std::numeric_limits<double>::quiet_NaN();
    return guarded_input(filename, pos, connectM, ascii, derived, false, report);
}

int STL_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
              bool ascii, double tolerance, STL_report& report) noexcept {
    return guarded_input(filename, pos, connectM, ascii, tolerance, true, report);
}

STL_format STL_detect(const char* filename) noexcept {
    constexpr std::size_t sample_size = 4096;
    STL_format format = STL_format::unreadable;
    guarded([&] {
        std::error_code error;
        if (!filename || !std::filesystem::is_regular_file(filename, error)) return 0;
        const closing_file file(open_file(filename, "rb"));
        if (!file) return 0;
        std::array<char, sample_size> sample;
        const std::size_t n = std::fread(sample.data(), 1, sample.size(), file.get());
        if (!std::ferror(file.get()))
            format = format_of({sample.data(), n}, regular_file_size(filename));
        return 0;
    });
    return format;
}

} // namespace kvx::zelvo
