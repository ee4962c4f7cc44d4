#include <kvx/zelvo/nastran.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/memory_guard.h"
#include "io/grouped_elements.h"
#include "io/large_vector.h"
#include "io/number_text.h"
#include "io/open_files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo {

namespace {

// ---- cards by kind of element

constexpr std::size_t most_card_nodes = 20;
using node_order = std::array<std::uint8_t, most_card_nodes>;

constexpr node_order stored = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,
                               10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
/// Entry of an order that stands for the number 0 instead of a node.
constexpr std::uint8_t zero_field = 0xFF;
/// Entry of an order that stands for no_node instead of a field.
constexpr std::uint8_t absent = 0xFE;

/// Card that an element is written as: its name, and the node of each of its fields. The names that
/// are missing, the pyramid as CPENTA and the fourth field of CTETRA are what decks of this writer
/// have always looked like, and their readers count on it.
struct written_card {
    bool written = false;
    std::string_view name;
    node_order nodes = stored;
};

constexpr written_card skipped;
constexpr std::array<written_card, 21> written_cards = {{
    skipped,                                    // ET_NODE_MIX
    {true, ""},                                 // ET_NODE1
    skipped,                                    // ET_EDGE_MIX
    {true, "CBAR"},                             // ET_BAR2
    skipped,                                    // ET_BAR3
    skipped,                                    // ET_FACE_MIX
    {true, "CTRIA3"},                           // ET_TRIA3
    {true, "CQUAD4"},                           // ET_QUAD4
    {true, "CTRIA6", {0, 1, 2, 5, 3, 4}},       // ET_TRIA6
    {true, "CQUAD8"},                           // ET_QUAD8
    skipped,                                    // ET_QUAD9
    skipped,                                    // ET_SOLID_MIX
    {true, "CTETRA", {1, 0, 2, zero_field}},    // ET_TETRA4
    {true, "", {0, 2, 1, 3, 5, 4, 6, 7, 9, 8}}, // ET_TETRA10
    {true, "CPENTA"},                           // ET_PYRAMID5, in mixed groups
    skipped,                                    // ET_PYRAMID14
    {true, ""},                                 // ET_PENTA6
    skipped,                                    // ET_PENTA18
    {true, "CHEXA"},                            // ET_HEXA8
    {true, "", {0, 1, 2, 3, 4, 5, 6, 7, 16, 15, 19, 12, 8, 9, 10, 11, 17, 14, 18, 13}}, // ET_HEXA20
    skipped,                                                                            // ET_HEXA27
}};

/// Card that is understood, by its name without a leading 'C': the kind it gives, with as many node
/// fields as the kind has nodes, and the field of each node.
struct known_card {
    std::string_view name;
    element_type kind;
    node_order fields = stored;
};

constexpr std::array<known_card, 10> known_cards = {{
    {"QUAD4", ET_QUAD4},
    {"TRIA3", ET_TRIA3},
    {"TETRA", ET_TETRA4, {0, 2, 1, 3}},
    {"HEXA", ET_HEXA8},
    {"PENTA", ET_PYRAMID5, {absent, absent, absent, absent, absent}},
    {"BAR", ET_BAR2},
    {"BEAM", ET_BAR2},
    {"ROD", ET_BAR2},
    {"TRIA6", ET_TRIA6, {0, 1, 2, 4, 5, 3}},
    {"QUAD8", ET_QUAD8},
}};

/// Most node fields of a card that is understood.
constexpr std::size_t most_fields = 8;

const known_card* find_card(std::string_view name) {
    if (name.starts_with('C')) name.remove_prefix(1);
    const auto found = std::find_if(known_cards.begin(), known_cards.end(),
                                    [name](const known_card& card) { return card.name == name; });
    return found == known_cards.end() ? nullptr : &*found;
}

// ---- writing

/// A comment of three lines between rules.
void write_banner(text_writer& out, std::string_view title) {
    out.text("$----------------------------------------\n"
             "$                                        \n");
    out.text(title);
    out.text("$                                        \n"
             "$----------------------------------------\n");
}

void write_element(text_writer& out, const written_card& card, unsigned int node_fields,
                   std::uint64_t number, unsigned int property, const unsigned int* nodes) {
    out.text(card.name);
    out.text(",");
    out.number(number);
    out.text(",");
    out.number(property);
    out.text(",");
    for (unsigned int i = 0; i < node_fields; ++i) {
        out.number(card.nodes[i] == zero_field ? 0 : nodes[card.nodes[i]]);
        out.text(",");
    }
    out.text("\n");
}

void write_group(text_writer& out, const dense2D<unsigned int>& connectM, std::uint64_t begin,
                 std::uint64_t end, element_type group_kind, const dense1D<unsigned int>& props) {
    if (group_kind == ET_PYRAMID5) return; // written in mixed groups only
    for (std::uint64_t j = begin; j < end; ++j) {
        const unsigned int* const nodes = &connectM(0, j);
        const element_type kind = kind_in_group(group_kind, nodes, connectM.rows());
        const written_card& card = written_cards[static_cast<unsigned>(kind)];
        if (card.written) write_element(out, card, node_count(kind), j, props[j], nodes);
    }
}

void write_grid_points(text_writer& out, const dense2D<double>& pos) {
    constexpr int field = -16; // filled up behind the number
    for (std::uint64_t j = 0; j < pos.cols(); ++j) {
        const double* const x = &pos(0, j);
        out.text("GRID*   ");
        out.number(j, field);
        out.general_pointed(x[0], field);
        out.general_pointed(x[1], field);
        out.text("\n*       ");
        out.general_pointed(x[2]);
        out.text("\n");
    }
}

void write_deck(text_writer& out, const dense2D<double>& pos, const dense2D<unsigned int>& connectM,
                const dense1D<unsigned int>& offsets, const dense1D<int>& FEs,
                const dense1D<unsigned int>& props) {
    out.text("$ KVX Zelvo Nastran exporter\n"
             "BEGIN BULK\n");
    write_banner(out, "$                 ELEMENTS               \n");
    for (std::uint64_t g = 0; g < FEs.size(); ++g)
        write_group(out, connectM, offsets[g], offsets[g + 1], static_cast<element_type>(FEs[g]),
                    props);
    out.text("$----------------------------------------\n"
             "$ Referenced Material Records -----------\n"
             "$ Material Record :    ------------------\n"
             "$ Description of Material :   -----------\n"
             "MAT1     1      1100.           .35 1.1E-6\n");
    write_banner(out, "$                GRID POINTS             \n");
    write_grid_points(out, pos);
    out.text("ENDDATA\n");
}

int output_groups(const char* filename, const dense2D<double>& pos,
                  std::span<const dense2D<unsigned int>> matrices,
                  std::span<const element_type> FEs) noexcept {
    return guarded([&] {
        grouped_elements all = as_groups(matrices, FEs);
        need(all.props.resize(matrices.size())); // one a matrix, not one an element
        for (std::uint64_t g = 0; g < matrices.size(); ++g)
            all.props[g] = static_cast<unsigned int>(g + 1);
        return NASTRAN_output(filename, pos, all.connectM, all.offsets, all.FEs, all.props);
    });
}

// ---- reading: lines and their fields

/// Whether a field is the mark that ties a card to its continuation.
bool is_mark(std::string_view field) {
    return field.starts_with('+');
}

/// A line split at blanks, and the pieces at commas; a comma at the end of a piece begins no field.
/// A line whose first field begins with '$' is a comment, which has none.
struct card_line {
    /// Fields that are looked at: name, number, property, nodes.
    std::array<std::string_view, 3 + most_fields> fields;
    std::size_t count = 0; ///< of all fields, also of those that are not looked at
    std::string_view last;
    bool indented = false; ///< begins with a blank or a comma

    /// The i-th field; empty when there is none.
    std::string_view operator[](std::size_t i) const {
        return i < count && i < fields.size() ? fields[i] : std::string_view();
    }
    /// Number of fields that are looked at, up to the mark at the end of the line.
    std::size_t end() const { return std::min(is_mark(last) ? count - 1 : count, fields.size()); }
};

constexpr bool is_separator(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

/// Whether a character ends a field.
constexpr auto ends_field = [] {
    std::array<bool, 256> ends{};
    for (const char c : std::string_view(", \t\r"))
        ends[static_cast<unsigned char>(c)] = true;
    return ends;
}();

void split(std::string_view text, card_line& line) {
    line.count = 0;
    line.last = {};
    line.indented = !text.empty() && (is_separator(text.front()) || text.front() == ',');
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        while (at != end && is_separator(*at))
            ++at;
        if (at == end) return;
        while (at != end && !is_separator(*at)) {
            const char* const first = at;
            while (at != end && !ends_field[static_cast<unsigned char>(*at)])
                ++at;
            if (line.count == 0 && *first == '$') return;
            line.last = {first, static_cast<std::size_t>(at - first)};
            if (line.count < line.fields.size()) line.fields[line.count] = line.last;
            ++line.count;
            if (at != end && *at == ',') ++at;
        }
    }
}

/// The lines of a deck that say something.
class deck_lines {
public:
    explicit deck_lines(std::FILE* file)
        : in_(file) {}

    /// Skips the lines up to that which begins the bulk data; false when there is none.
    bool skip_to_bulk_data() {
        for (std::string_view text; in_.line(text);) {
            if (text.find("BEGIN BULK") != text.npos) return true;
        }
        return false;
    }
    /// Goes to the next line that has fields and that take(its text, the end of what may be read
    /// behind it) does not take; false at the end of the deck. The fields stay valid until the next
    /// call.
    template <class Take>
    bool next(Take&& take) {
        if (std::exchange(put_back_, false)) return true;
        line_.count = 0;
        for (std::string_view text; !ended_ && in_.line(text);) {
            if (take(text, in_.readable_end())) continue;
            split(text, line_);
            if (line_.count == 0) continue;
            ended_ = text.find("ENDDATA") != text.npos;
            if (!ended_) return true;
        }
        ended_ = true;
        line_ = {};
        return false;
    }
    bool next() {
        return next([](std::string_view, const char*) { return false; });
    }
    /// The line that next() went to; without fields at the end of the deck.
    const card_line& line() const { return line_; }
    /// Has next() go to the same line again.
    void put_back() { put_back_ = true; }

private:
    text_reader in_;
    card_line line_;
    bool put_back_ = false;
    bool ended_ = false;
};

// ---- reading: what cards say

struct grid_point {
    unsigned int number;
    std::array<double, 3> x;
};

struct deck_content {
    group_collector elements;
    large_vector<grid_point> points;
};

/// A node or property number; no_node for what is no number below it.
unsigned int index_of(std::string_view field) {
    const std::int64_t n = leading_integer(field);
    return n < 0 || n > no_node ? no_node : static_cast<unsigned int>(n);
}

/// Fields of an element card, which come line by line.
class element_fields {
public:
    explicit element_fields(unsigned int nodes)
        : needed_(2 + nodes) {}

    bool complete() const { return count_ == needed_; }
    /// Takes the fields of a line from one on.
    void take(const card_line& line, std::size_t from) {
        for (std::size_t i = from; i < line.end() && !complete(); ++i)
            values_[count_++] = index_of(line[i]);
    }
    unsigned int property() const { return values_[1]; }
    unsigned int node(std::size_t i) const { return values_[2 + i]; }

private:
    std::array<unsigned int, 2 + most_fields> values_{}; ///< element number, property, nodes
    std::size_t needed_;
    std::size_t count_ = 0;
};

/// Reads the element whose first line is the current one.
void read_element(deck_lines& lines, const known_card& card, bool large, group_collector& out) {
    element_fields fields(node_count(card.kind));
    fields.take(lines.line(), 1);
    if (large && lines.next()) fields.take(lines.line(), 1);
    while (!fields.complete() && lines.next()) {
        const card_line& line = lines.line();
        const bool marked = is_mark(line[0]) || (large && line[0].starts_with('*'));
        if (!marked && !line.indented) {
            lines.put_back();
            return;
        }
        fields.take(line, marked || line[0].empty() ? 1 : 0);
    }
    if (!fields.complete()) return;
    std::array<unsigned int, most_fields> nodes{};
    for (std::size_t i = 0; i < node_count(card.kind); ++i)
        nodes[i] = card.fields[i] == absent ? no_node : fields.node(card.fields[i]);
    out.add(card.kind, fields.property(), nodes.data());
}

/// Coordinates of a grid card, which come field by field from that behind the number on. Three
/// values are looked at, those without a point for nothing: so a coordinate system that is stated
/// as 0 costs the last coordinate.
class grid_coordinates {
public:
    void take(std::string_view field) {
        const auto points = turns_ < 3 ? std::count(field.begin(), field.end(), '.') : 0;
        if (std::exchange(first_, false) && points == 0 && leading_integer(field) != 0)
            return; // a coordinate system
        if (points < 2) return take_value(field, points == 1);
        // numbers of a fixed width that touch
        constexpr std::size_t width = 8;
        for (; !field.empty() && turns_ < 3; field.remove_prefix(std::min(width, field.size())))
            take_value(field.substr(0, width), true);
    }
    const std::array<double, 3>& values() const { return x_; }

private:
    void take_value(std::string_view field, bool has_coordinate) {
        if (turns_ == 3) return;
        ++turns_;
        if (has_coordinate) leading_real(field, x_[count_++]);
    }

    std::array<double, 3> x_{};
    std::size_t count_ = 0;
    int turns_ = 0;
    bool first_ = true;
};

/// Reads the grid point whose first line is the current one.
void read_grid_point(deck_lines& lines, bool large, large_vector<grid_point>& out) {
    const card_line& line = lines.line();
    if (line.count < 2) {
        if (large) lines.next();
        return;
    }
    const std::int64_t number = leading_integer(line[1]);
    const std::string number_text(large ? line[1] : std::string_view());
    std::size_t end = std::min(line.count, line.fields.size());
    // the mark of the continuation may be the number again
    if (large && end == line.count && end > 2 && line.last == number_text) --end;
    grid_coordinates coordinates;
    for (std::size_t i = 2; i < end; ++i)
        coordinates.take(line[i]);
    if (large && lines.next()) {
        const std::size_t third = line[1] == number_text ? 2 : 1;
        if (third < line.count) coordinates.take(line[third]);
    }
    if (number >= 0 && number < no_node)
        out.push_back({static_cast<unsigned int>(number), coordinates.values()});
}

/// Reads the card whose first line is the current one.
void read_card(deck_lines& lines, deck_content& out) {
    const std::string_view name = lines.line()[0];
    if (name.starts_with("GRID"))
        return read_grid_point(lines, name.starts_with("GRID*"), out.points);
    const std::size_t star = name.find('*');
    const bool large = star != name.npos;
    const known_card* const card = find_card(name.substr(0, star));
    if (card) return read_element(lines, *card, large, out.elements);
    if (large) lines.next(); // also behind a continuation that no card took
}

// ---- reading: cards as most are

/// The fields of a line one by one, as long as they are plain.
class plain_fields {
public:
    plain_fields(std::string_view line, const char* readable_end)
        : at_(line.data())
        , end_(line.data() + line.size())
        , readable_end_(readable_end) {}

    std::string_view name() {
        const char* const begin = at_;
        while (at_ != end_ && !ends_field[static_cast<unsigned char>(*at_)])
            ++at_;
        const std::string_view text(begin, at_);
        pass_end();
        return text;
    }
    /// Reads a number of few digits; false for any other field.
    bool whole(unsigned int& n) {
        constexpr std::ptrdiff_t few_digits = 9; // which 32 bits hold
        pass_separators();
        std::uint64_t value = 0;
        const std::ptrdiff_t count = take_digits(at_, readable_end_, value);
        n = static_cast<unsigned int>(value);
        return count > 0 && count <= few_digits && pass_end();
    }
    /// Reads a number with a point, see quick_real; false for any other field.
    bool pointed(double& x) {
        pass_separators();
        const char* const begin = at_;
        const char* const end = quick_real(begin, readable_end_, x);
        if (!end || std::find(begin, end, '.') == end) return false;
        at_ = end;
        return pass_end();
    }
    std::string_view rest() const { return {at_, end_}; }

private:
    void pass_separators() {
        while (at_ != end_ && is_separator(*at_))
            ++at_;
    }
    /// Whether the field ends here.
    bool pass_end() {
        if (at_ == end_) return true;
        if (!ends_field[static_cast<unsigned char>(*at_)]) return false;
        at_ += *at_ == ',';
        return true;
    }

    const char* at_;
    const char* end_;
    const char* readable_end_;
};

bool take_plain_element(plain_fields fields, const known_card& card, group_collector& out) {
    std::array<unsigned int, most_fields> read;
    std::array<unsigned int, most_fields> nodes;
    unsigned int number = 0;
    unsigned int property = 0;
    if (!fields.whole(number) || !fields.whole(property)) return false;
    const unsigned int count = node_count(card.kind);
    for (unsigned int i = 0; i < count; ++i) {
        if (!fields.whole(read[i])) return false;
    }
    if (fields.rest().find("ENDDATA") != std::string_view::npos) return false;
    for (unsigned int i = 0; i < count; ++i)
        nodes[i] = card.fields[i] == absent ? no_node : read[card.fields[i]];
    out.add(card.kind, property, nodes.data());
    return true;
}

bool take_plain_grid_point(plain_fields fields, large_vector<grid_point>& out) {
    grid_point point;
    if (!fields.whole(point.number)) return false;
    for (double& x : point.x) {
        if (!fields.pointed(x)) return false;
    }
    if (fields.rest().find("ENDDATA") != std::string_view::npos) return false;
    out.push_back(point);
    return true;
}

/// Reads a card of one line that has all its numbers, each in a field of its own, without splitting
/// the line first; false, and nothing done, for any other line.
bool take_plain_card(std::string_view line, const char* readable_end, deck_content& out) {
    plain_fields fields(line, readable_end);
    const std::string_view name = fields.name();
    if (name == "GRID") return take_plain_grid_point(fields, out.points);
    const known_card* const card = find_card(name);
    return card && take_plain_element(fields, *card, out.elements);
}

// ---- reading: the deck

void place(const large_vector<grid_point>& points, dense2D<double>& pos) {
    if (points.empty()) return;
    unsigned int largest = 0;
    for (const grid_point& point : points)
        largest = std::max(largest, point.number);
    need(pos.make_zeros(3, std::uint64_t{largest} + 1));
    if (points.size() > largest / 2) // else most columns may stay untouched
        prefer_large_pages(pos.data(), 3 * sizeof(double) * pos.cols());
    for (const grid_point& point : points)
        std::copy(point.x.begin(), point.x.end(), &pos(0, point.number));
}

int read_deck(const char* filename, dense2D<double>& pos, grouped_elements& all) {
    const closing_file file = open_to_read(filename);
    if (!file) return -1;
    deck_lines lines(file.get());
    if (!lines.skip_to_bulk_data()) return -1;
    deck_content read;
    const auto take = [&read](std::string_view line, const char* readable_end) {
        return take_plain_card(line, readable_end, read);
    };
    while (lines.next(take))
        read_card(lines, read);
    if (std::ferror(file.get())) return -1; // what was read may be part of the deck only
    all = read.elements.result();
    place(read.points, pos);
    return all.connectM.empty() || pos.empty() ? -1 : 0;
}

int input_groups(const char* filename, dense2D<double>& pos, grouped_elements& all) noexcept {
    pos.clear_hard();
    all.clear();
    const int code = guarded([&] { return read_deck(filename, pos, all); });
    if (code == out_of_memory) {
        pos.clear_hard();
        all.clear();
    }
    return code;
}

} // namespace

int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                   const dense2D<unsigned int>& connectM, const dense1D<unsigned int>& offsets,
                   const dense1D<int>& FEs, const dense1D<unsigned int>& props) noexcept {
    const closing_file file(open_file(filename, "wb"));
    if (connectM.empty()) return 0;
    if (!file) return -1;
    if (pos.rows() != 3) return -2;
    const int rejection = check_groups(connectM, offsets, FEs, props);
    if (rejection != 0) return rejection;
    text_writer out(file.get());
    write_deck(out, pos, connectM, offsets, FEs, props);
    return 0;
}

int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                   const dense2D<unsigned int>& connectM, element_type FE) noexcept {
    return output_groups(filename, pos, {&connectM, 1}, {&FE, 1});
}

int NASTRAN_output(const char* filename, const dense2D<double>& pos,
                   const dense2D<unsigned int>& connectM1, const dense2D<unsigned int>& connectM2,
                   element_type FE1, element_type FE2) noexcept {
    const std::array matrices = {connectM1, connectM2};
    const std::array kinds_in_order = {FE1, FE2};
    return output_groups(filename, pos, matrices, kinds_in_order);
}

int NASTRAN_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
                  dense1D<unsigned int>& offsets, dense1D<int>& FEs,
                  dense1D<unsigned int>& props) noexcept {
    grouped_elements all;
    const int code = input_groups(filename, pos, all);
    connectM = std::move(all.connectM);
    offsets = std::move(all.offsets);
    FEs = std::move(all.FEs);
    props = std::move(all.props);
    return code;
}

int NASTRAN_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
                  element_type& FE) noexcept {
    grouped_elements all;
    const int code = input_groups(filename, pos, all);
    connectM = std::move(all.connectM);
    if (code >= 0) FE = ET_NODE_MIX;
    return code;
}

int NASTRAN_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                  dense2D<unsigned int>& connectM2, element_type& FE1, element_type& FE2) noexcept {
    const auto read = [&](grouped_elements& all) { return input_groups(filename, pos, all); };
    return read_two_groups(read, pos, connectM1, connectM2, FE1, FE2);
}

} // namespace kvx::zelvo
