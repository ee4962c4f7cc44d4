#include <kvx/zelvo/femap.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/memory_guard.h"
#include "io/grouped_elements.h"
#include "io/number_text.h"
#include "io/open_files.h"
#include "io/text_reader.h"
#include "io/text_writer.h"

namespace kvx::zelvo {

namespace {

constexpr std::size_t slot_count = 20;
constexpr std::size_t slots_per_line = 10;

/// How elements of a kind are held. Nodes fill the slots of the set bits in ascending order:
/// triangles, tetrahedra and wedges leave out those that fall together when a brick collapses.
struct femap_kind {
    element_type kind;
    unsigned topology;
    unsigned type; ///< 1 rod; 17, 18 plate; 25, 26 solid; 27 mass
    std::uint32_t slots;
};
constexpr std::array<femap_kind, 12> femap_kinds = {{
    {ET_NODE1, 9, 27, 0x1},
    {ET_BAR2, 0, 1, 0x3},
    {ET_TRIA3, 2, 17, 0x7},
    {ET_QUAD4, 4, 17, 0xF},
    {ET_TRIA6, 3, 18, 0x77},
    {ET_QUAD8, 5, 18, 0xFF},
    {ET_TETRA4, 6, 25, 0x17},
    {ET_TETRA10, 10, 26, 0x7717},
    {ET_PYRAMID5, 18, 25, 0x1F},
    {ET_PENTA6, 7, 25, 0x77},
    {ET_HEXA8, 8, 25, 0xFF},
    {ET_HEXA20, 12, 26, 0xFFFFF},
}};
/// Some programs write pyramids with this code.
constexpr unsigned other_pyramid_topology = 14;

static_assert(std::all_of(femap_kinds.begin(), femap_kinds.end(), [](const femap_kind& k) {
    return static_cast<unsigned>(std::popcount(k.slots)) == node_count(k.kind);
}));

/// nullptr for a kind that has no topology code.
const femap_kind* find_kind(element_type kind) {
    const auto* const found = std::find_if(femap_kinds.begin(), femap_kinds.end(),
                                           [kind](const femap_kind& k) { return k.kind == kind; });
    return found == femap_kinds.end() ? nullptr : found;
}

/// ET_NODE_MIX for a code that is not known.
element_type kind_of_topology(std::int64_t topology) {
    if (topology == other_pyramid_topology) return ET_PYRAMID5;
    const auto* const found =
        std::find_if(femap_kinds.begin(), femap_kinds.end(),
                     [topology](const femap_kind& k) { return k.topology == topology; });
    return found == femap_kinds.end() ? ET_NODE_MIX : found->kind;
}

// ---- writing

constexpr std::string_view delimiter = "   -1\n";

/// Calls visit(j, the kind of column j) for the elements that can be written.
template <class Visit>
void for_each_element(const grouped_elements& all, Visit&& visit) {
    for (std::uint64_t g = 0; g < all.FEs.size(); ++g) {
        const auto group_kind = static_cast<element_type>(all.FEs[g]);
        for (std::uint64_t j = all.offsets[g]; j < all.offsets[g + 1]; ++j) {
            const element_type kind =
                kind_in_group(group_kind, &all.connectM(0, j), all.connectM.rows());
            if (const femap_kind* const k = find_kind(kind)) visit(j, *k);
        }
    }
}

/// A property number, and the element type that first uses it.
using property = std::pair<unsigned int, unsigned>;

std::vector<property> properties_in_use(const grouped_elements& all) {
    std::vector<property> used;
    for_each_element(all, [&](std::uint64_t j, const femap_kind& k) {
        if (used.empty() || used.back().first != all.props[j])
            used.emplace_back(all.props[j], k.type);
    });
    std::stable_sort(used.begin(), used.end(),
                     [](const property& a, const property& b) { return a.first < b.first; });
    const auto equal = [](const property& a, const property& b) { return a.first == b.first; };
    used.erase(std::unique(used.begin(), used.end(), equal), used.end());
    return used;
}

void write_properties(text_writer& out, const std::vector<property>& properties) {
    out.text(delimiter);
    out.text("   402\n");
    for (const auto& [number, type] : properties) {
        out.number(number);
        out.text(",110,0,"); // colour, no material
        out.number(type);
        out.text(",1,0,\n" // layer, coordinate system
                 "<NULL>\n"
                 "0,0,0,0,\n"
                 "0,\n"
                 "0,\n"
                 "0,\n");
    }
    out.text(delimiter);
}

void write_nodes(text_writer& out, const dense2D<double>& pos) {
    out.text(delimiter);
    out.text("   403\n");
    for (std::uint64_t j = 0; j < pos.cols() && !out.failed(); ++j) {
        out.number(j + 1);
        out.text(",0,0,1,46,0,0,0,0,0,0,"); // coordinate systems, layer, colour, constraints
        for (std::uint64_t i = 0; i < pos.rows(); ++i) {
            out.shortest(pos(i, j));
            out.text(",");
        }
        out.text(pos.rows() == 2 ? "0,\n" : "\n");
    }
    out.text(delimiter);
}

void write_element(text_writer& out, std::uint64_t number, unsigned int prop, const femap_kind& k,
                   const unsigned int* nodes) {
    out.number(number);
    out.text(",124,"); // colour
    out.number(prop);
    out.text(",");
    out.number(k.type);
    out.text(",");
    out.number(k.topology);
    out.text(",1,0,0,\n"); // layer, orientation node, flag
    for (std::size_t slot = 0; slot < slot_count; ++slot) {
        if ((k.slots >> slot & 1) != 0) {
            out.number(std::uint64_t{*nodes++} + 1);
            out.text(",");
        } else {
            out.text("0,");
        }
        if ((slot + 1) % slots_per_line == 0) out.text("\n");
    }
    out.text("0.,0.,0.,\n"
             "0.,0.,0.,\n"
             "0.,0.,0.,\n"
             "0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,\n");
}

void write_file(text_writer& out, const dense2D<double>& pos, const grouped_elements& all,
                const std::vector<property>& properties) {
    out.text(delimiter);
    out.text("   100\n"
             "<NULL>\n"
             "4.41,\n");
    out.text(delimiter);
    write_properties(out, properties);
    write_nodes(out, pos);
    out.text(delimiter);
    out.text("   404\n");
    for_each_element(all, [&](std::uint64_t j, const femap_kind& k) {
        if (!out.failed()) write_element(out, j + 1, all.props[j], k, &all.connectM(0, j));
    });
    out.text(delimiter);
}

int output(const char* filename, const dense2D<double>& pos, const grouped_elements& all) {
    closing_file file(open_file(filename, "wb"));
    if (all.connectM.empty()) return 0;
    if (!file) return -1;
    if (pos.rows() != 2 && pos.rows() != 3) return -2;
    const int code = check_groups(all.connectM, all.offsets, all.FEs, all.props);
    if (code < 0) return code;

    const std::vector<property> properties = properties_in_use(all);
    text_writer out(file.get());
    write_file(out, pos, all, properties);
    return end_writing(out, std::move(file));
}

// ---- reading

std::string_view without_blanks_around(std::string_view line) {
    while (!line.empty() && is_blank(line.front()))
        line.remove_prefix(1);
    while (!line.empty() && is_blank(line.back()))
        line.remove_suffix(1);
    return line;
}

/// Takes the next value of a line; false when there is none. Between two commas is an empty one,
/// behind the last comma none.
bool take_value(std::string_view& line, std::string_view& value) {
    const auto ends_value = [](char c) { return c == ',' || is_blank(c); };
    const auto* at = std::find_if_not(line.begin(), line.end(), is_blank);
    const auto* const begin = at;
    at = std::find_if(at, line.end(), ends_value);
    value = {begin, at};
    at = std::find_if_not(at, line.end(), is_blank);
    const bool comma = at != line.end() && *at == ',';
    line = {at + comma, line.end()};
    return comma || !value.empty();
}

bool is_whole(std::string_view value) {
    if (value.starts_with('-') || value.starts_with('+')) value.remove_prefix(1);
    return std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The values of a line as whole numbers.
struct record {
    std::array<std::int64_t, slots_per_line> values{};
    std::size_t count = 0; ///< of all values, also those that are not kept
    bool whole = true;

    record() = default;
    /// Of a line behind which memory may be read up to readable_end.
    record(std::string_view line, const char* readable_end) {
        const char* at = line.data();
        for (const char* const end = at + line.size();; ++count) {
            const char* next = at;
            std::uint64_t size = 0;
            const std::ptrdiff_t digits = take_digits(next, readable_end, size);
            auto n = static_cast<std::int64_t>(size);
            if (digits > 0 && digits < most_whole_digits && next != end && *next == ',') {
                at = next + 1; // mostly
            } else {
                std::string_view value;
                line = {at, end};
                if (!take_value(line, value)) return;
                at = line.data();
                n = leading_integer(value);
                whole = whole && is_whole(value);
            }
            if (count < values.size()) values[count] = n;
        }
    }
};

/// The lines of an element that say what it is.
using element_lines = std::array<record, 4>;

/// Newer versions append lines to an element, so the beginning of the next is told by its shape.
bool begins_element(const element_lines& lines) {
    constexpr std::size_t fewest_head_values = 8;
    const auto holds_slots = [](const record& r) { return r.whole && r.count == slots_per_line; };
    const auto& [head, slots, more_slots, orientation] = lines;
    return head.whole && head.count >= fewest_head_values && head.values[0] > 0 &&
           holds_slots(slots) && holds_slots(more_slots) && orientation.count >= 3 &&
           orientation.count < slots_per_line;
}

/// Gathers the nodes and elements of a file as they come; elements may come before their nodes.
class femap_reader {
public:
    void read(text_reader& in) {
        std::string_view line;
        while (in.line(line)) {
            if (!is_delimiter(line)) continue;
            // a second delimiter begins a block as well: the end of the last one was missing
            while (is_delimiter(line)) {
                if (!in.line(line)) return;
            }
            read_block(in, leading_integer(line));
        }
    }

    /// What was read, nodes in increasing order of their ids.
    grouped_elements result(dense2D<double>& pos) {
        sort_nodes();
        need(nodes_.size() < no_node && pos.resize(3, nodes_.size()));
        for (std::size_t j = 0; j < nodes_.size(); ++j)
            std::copy(nodes_[j].x.begin(), nodes_[j].x.end(), &pos(0, j));

        group_collector groups;
        const std::int64_t* ids = element_nodes_.data();
        std::array<unsigned int, slot_count> nodes;
        for (const element& e : elements_) {
            const unsigned n = node_count(e.kind);
            std::transform(ids, ids + n, nodes.begin(),
                           [this](std::int64_t id) { return index_of(id); });
            ids += n;
            if (std::find(nodes.begin(), nodes.begin() + n, no_node) == nodes.begin() + n)
                groups.add(e.kind, e.prop, nodes.data());
        }
        return groups.result();
    }

private:
    struct node {
        std::int64_t id;
        std::array<double, 3> x;
    };
    struct element {
        element_type kind;
        unsigned int prop;
    };
    static bool smaller_id(const node& a, const node& b) { return a.id < b.id; }
    static bool is_delimiter(std::string_view line) { return without_blanks_around(line) == "-1"; }
    /// Reads a line of a block; false at its end.
    static bool next_record(text_reader& in, std::string_view& line) {
        return in.line(line) && !is_delimiter(line);
    }

    void read_block(text_reader& in, std::int64_t number) {
        constexpr std::int64_t nodes = 403;
        constexpr std::int64_t elements = 404;
        std::string_view line;
        if (number == elements) return read_elements(in);
        while (next_record(in, line)) {
            if (number == nodes) read_node(line);
        }
    }

    void read_node(std::string_view line) {
        constexpr std::size_t first_coordinate = 11;
        node read{};
        std::string_view value;
        for (std::size_t i = 0; i < first_coordinate + read.x.size(); ++i) {
            if (!take_value(line, value)) return;
            if (i == 0) read.id = leading_integer(value);
            if (i >= first_coordinate) read.x[i - first_coordinate] = real(value);
        }
        // longer numbers saturate, so the largest one may stand for several ids
        if (read.id > 0 && read.id < std::numeric_limits<std::int64_t>::max())
            nodes_.push_back(read);
    }

    /// A number with an exponent of any of the letters E and D.
    double real(std::string_view value) {
        double x = 0.0;
        const std::size_t length = leading_real(value, x);
        if (length < value.size() && (value[length] == 'D' || value[length] == 'd')) {
            number_ = value;
            number_[length] = 'e';
            leading_real(number_, x);
        }
        return x;
    }

    void read_elements(text_reader& in) {
        constexpr int lines_behind = 3; // two offsets and the flags
        std::string_view line;
        element_lines lines;
        while (next_record(in, line)) {
            std::move(lines.begin() + 1, lines.end(), lines.begin());
            lines.back() = record(line, in.readable_end());
            if (!begins_element(lines)) continue;
            add_element(lines);
            lines = {};
            for (int i = 0; i < lines_behind; ++i) {
                if (!next_record(in, line)) return;
            }
        }
    }

    void add_element(const element_lines& lines) {
        constexpr std::int64_t largest = std::numeric_limits<unsigned int>::max();
        const auto& [head, slots, more_slots, orientation] = lines;
        const element_type kind = kind_of_topology(head.values[4]);
        const std::size_t before = element_nodes_.size();
        for (const record* r : {&slots, &more_slots}) {
            std::copy_if(r->values.begin(), r->values.end(), std::back_inserter(element_nodes_),
                         [](std::int64_t id) { return id != 0; });
        }
        if (kind == ET_NODE_MIX || element_nodes_.size() - before != node_count(kind)) {
            element_nodes_.resize(before);
            return;
        }
        const std::int64_t prop = std::clamp<std::int64_t>(head.values[2], 0, largest);
        elements_.push_back({kind, static_cast<unsigned int>(prop)});
    }

    /// Sorts the nodes by their ids and keeps the last one of each.
    void sort_nodes() {
        if (!std::is_sorted(nodes_.begin(), nodes_.end(), smaller_id))
            std::stable_sort(nodes_.begin(), nodes_.end(), smaller_id);
        std::size_t kept = 0;
        for (std::size_t j = 0; j < nodes_.size(); ++j) {
            if (j + 1 < nodes_.size() && nodes_[j].id == nodes_[j + 1].id) continue;
            nodes_[kept++] = nodes_[j];
        }
        nodes_.resize(kept);
    }

    /// Column of a node; no_node for one that is not there.
    unsigned int index_of(std::int64_t id) const {
        if (nodes_.empty() || id < nodes_.front().id || id > nodes_.back().id) return no_node;
        auto place = static_cast<std::uint64_t>(id - nodes_.front().id);
        if (place >= nodes_.size() || nodes_[place].id != id) {
            const auto found =
                std::lower_bound(nodes_.begin(), nodes_.end(), node{id, {}}, smaller_id);
            if (found->id != id) return no_node;
            place = static_cast<std::uint64_t>(found - nodes_.begin());
        }
        return static_cast<unsigned int>(place);
    }

    std::vector<node> nodes_;
    std::vector<element> elements_;
    std::vector<std::int64_t> element_nodes_; ///< ids, of each element as many as its kind has
    std::string number_;
};

int input(const char* filename, dense2D<double>& pos, grouped_elements& all) {
    const closing_file file = open_to_read(filename);
    if (!file) return -1;
    text_reader in(file.get());
    femap_reader reader;
    reader.read(in);
    if (std::ferror(file.get())) return -1;
    all = reader.result(pos);
    return pos.empty() || all.connectM.empty() ? -1 : 0;
}

/// Leaves everything empty when memory runs out.
int guarded_input(const char* filename, dense2D<double>& pos, grouped_elements& all) noexcept {
    pos.clear_hard();
    const int code = guarded([&] { return input(filename, pos, all); });
    if (code == out_of_memory) {
        pos.clear_hard();
        all.clear();
    }
    return code;
}

} // namespace

int FEMAP_output(const char* filename, const dense2D<double>& pos,
                 const dense2D<unsigned int>& connectM, const dense1D<unsigned int>& offsets,
                 const dense1D<int>& FEs, const dense1D<unsigned int>& props) noexcept {
    return guarded([&] { return output(filename, pos, {connectM, offsets, FEs, props}); });
}

int FEMAP_output(const char* filename, const dense2D<double>& pos,
                 const dense2D<unsigned int>& connectM, element_type FE) noexcept {
    return guarded([&] {
        grouped_elements all = as_groups({&connectM, 1}, {&FE, 1});
        need(all.props.resize(all.offsets[1], 1));
        return output(filename, pos, all);
    });
}

int FEMAP_output(const char* filename, const dense2D<double>& pos,
                 const dense2D<unsigned int>& connectM1, const dense2D<unsigned int>& connectM2,
                 element_type FE1, element_type FE2) noexcept {
    return guarded([&] {
        const std::array matrices = {connectM1, connectM2};
        const std::array FEs = {FE1, FE2};
        grouped_elements all = as_groups(matrices, FEs);
        need(all.props.resize(all.offsets[1], 1) && all.props.resize(all.offsets[2], 2));
        return output(filename, pos, all);
    });
}

int FEMAP_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
                dense1D<unsigned int>& offsets, dense1D<int>& FEs,
                dense1D<unsigned int>& props) noexcept {
    grouped_elements all;
    const int code = guarded_input(filename, pos, all);
    connectM = all.connectM;
    offsets = all.offsets;
    FEs = all.FEs;
    props = all.props;
    return code;
}

int FEMAP_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM,
                element_type& FE) noexcept {
    grouped_elements all;
    const int code = guarded_input(filename, pos, all);
    connectM = all.connectM;
    if (code >= 0) FE = static_cast<element_type>(all.FEs[0]);
    return code;
}

int FEMAP_input(const char* filename, dense2D<double>& pos, dense2D<unsigned int>& connectM1,
                dense2D<unsigned int>& connectM2, element_type& FE1, element_type& FE2) noexcept {
    const auto read = [&](grouped_elements& all) { return guarded_input(filename, pos, all); };
    return read_two_groups(read, pos, connectM1, connectM2, FE1, FE2);
}

} // namespace kvx::zelvo
