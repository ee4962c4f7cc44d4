#include "nastran_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using field_list = std::vector<std::string>;
constexpr std::size_t grid_fields = 6; // name, number, coordinate system, x, y, z

std::string without_blanks_around(const std::string& text) {
    constexpr const char* blanks = " \t\r";
    const std::size_t first = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

/// The fields that a line begins with: what is between commas, else of fixed width.
field_list fields_of(std::string line) {
    constexpr std::size_t small = 8, large = 16;
    line.resize(std::min(line.find('$'), line.size()));
    const bool has_commas = line.find(',') != line.npos;
    const std::size_t width = line.find('*') < small ? large : small;
    field_list fields;
    for (std::size_t at = 0; at < line.size() && fields.size() < grid_fields;) {
        const std::size_t end =
            has_commas ? std::min(line.find(',', at), line.size()) : at + (at == 0 ? small : width);
        fields.push_back(without_blanks_around(line.substr(at, end - at)));
        at = has_commas ? end + 1 : end;
    }
    return fields;
}

/// The whole field as a number; 0 where it is empty.
template <class Number>
std::optional<Number> number_in(const std::string& field) {
    if (field.empty()) return Number{};
    Number x{};
    const char* const begin = field.data() + (field[0] == '+');
    const char* const end = field.data() + field.size();
    const auto [behind, error] = std::from_chars(begin, end, x);
    if (error != std::errc() || behind != end) return {};
    return x;
}

/// A real number, whose exponent may begin with E, D or its sign alone.
std::optional<double> real_in(std::string field) {
    const std::size_t exponent = field.find_first_of("EeDd+-", 1);
    if (exponent != field.npos) {
        if (field[exponent] == '+' || field[exponent] == '-') field.insert(exponent, 1, 'e');
        field[exponent] = 'e';
        if (field[exponent + 1] == '+') field.erase(exponent + 1, 1);
    }
    return number_in<double>(field);
}

/// Whether a line begins a card of an element that the library knows.
bool is_element_card(std::string_view line) {
    constexpr std::array<std::string_view, 10> names = {"CBAR",   "CBEAM",  "CROD",   "CTRIA3",
                                                        "CTRIA6", "CQUAD4", "CQUAD8", "CTETRA",
                                                        "CPENTA", "CHEXA"};
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    line = line.substr(0, line.find_first_of(" ,*\t\r"));
    return std::find(names.begin(), names.end(), line) != names.end();
}

struct grid_card {
    std::uint64_t number;
    std::uint64_t system; ///< 0: that of the deck
    std::array<double, 3> x;
};

/// What the fields of a grid card say. None where they are not these: in decks that separate fields
/// by blanks, or leave out the coordinate system.
std::optional<grid_card> grid_card_in(field_list fields) {
    fields.resize(grid_fields);
    const auto number = number_in<std::uint64_t>(fields[1]);
    const auto system = number_in<std::uint64_t>(fields[2]);
    const auto x = real_in(fields[3]), y = real_in(fields[4]), z = real_in(fields[5]);
    if (!number || !system || !x || !y || !z) return {};
    return grid_card{*number, *system, {*x, *y, *z}};
}

} // namespace

void check_deck(const std::string& file, const mesh& read, warnings& notes) {
    std::ifstream stream(file);
    std::uint64_t misread = 0, elsewhere = 0, elements = 0;
    std::string line;
    while (std::getline(stream, line) && line.find("BEGIN BULK") == line.npos) {
    }
    while (std::getline(stream, line) && line.find("ENDDATA") == line.npos) {
        if (is_element_card(line)) ++elements;
        if (!line.starts_with("GRID")) continue;
        field_list fields = fields_of(line);
        if (fields[0] == "GRID*" && std::getline(stream, line)) { // which has z
            const field_list rest = fields_of(line);
            fields.resize(grid_fields);
            fields.back() = rest.size() > 1 ? rest[1] : std::string();
        } else if (fields[0] != "GRID") {
            continue;
        }
        const std::optional<grid_card> card = grid_card_in(fields);
        if (!card) continue;
        if (card->system != 0) ++elsewhere;
        if (card->number >= read.pos.cols() ||
            !std::equal(card->x.begin(), card->x.end(), &read.pos(0, card->number)))
            ++misread;
    }
    notes.add("grid points in a coordinate system of their own, taken as they stand", elsewhere);
    notes.add("grid points with a coordinate that is lost or misread (a coordinate system written "
              "as 0, an exponent without E, fields that touch)",
              misread);
    notes.add("elements whose card is not understood (fields that touch or are missing), left out",
              elements - std::min(elements, element_count(read)));
}
