#include "nastran_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using token_list = std::vector<std::string>;

/// The parts of a line between blanks and commas; two commas have an empty part between them.
token_list tokens_of(const std::string& line) {
    constexpr const char* blanks = " \t\r\v\f";
    token_list tokens;
    for (std::size_t at = 0; (at = line.find_first_not_of(blanks, at)) != std::string::npos;) {
        const std::size_t end = std::min(line.find_first_of(blanks, at), line.size());
        while (at < end) {
            const std::size_t comma = std::min(line.find(',', at), end);
            tokens.push_back(line.substr(at, comma - at));
            at = std::min(comma + 1, end);
        }
    }
    return tokens;
}

/// The tokens of a card in large fields: z follows in the next line.
void add_second_line(token_list& card, const token_list& next) {
    const std::string number = card[1];
    if (card.back() == number) card.pop_back();
    const std::size_t z = next.size() > 2 && next[1] == number ? 2 : 1;
    if (z < next.size()) card.push_back(next[z]);
}

/// The whole text as one number with a point.
std::optional<double> real(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double x = 0.0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, x);
    if (behind != end || error != std::errc() || std::count(text.begin(), text.end(), '.') != 1)
        return {};
    return x;
}

/// The three coordinates that a card states from a token on, 0 where it ends before; none when they
/// would be read otherwise. Several in one token are taken for fields of eight characters.
std::optional<std::array<double, 3>> coordinates(const token_list& card, std::size_t at) {
    constexpr std::size_t field = 8;
    std::array<double, 3> x = {};
    for (unsigned found = 0; at < card.size() && found < x.size(); ++at) {
        const std::string_view token = card[at];
        const bool several = std::count(token.begin(), token.end(), '.') > 1;
        std::size_t i = 0;
        do {
            const std::string_view part = several ? token.substr(i, field) : token;
            const std::optional<double> read = real(part);
            if (!read) return {};
            x[found++] = *read;
            i += part.size();
        } while (i < token.size() && found < x.size());
    }
    return x;
}

/// Whether the coordinates of a card are lost or misread. A coordinate system that is written as 0
/// or as an empty field takes the place of z.
bool is_misread(const token_list& card, bool has_system) {
    if (has_system) return !coordinates(card, 3);
    if (!card[2].empty() && card[2] != "0") return !coordinates(card, 2);
    const auto meant = coordinates(card, 3);
    return !meant || (*meant)[2] != 0.0;
}

/// Whether a card in fixed fields has a coordinate system, which may touch the next field.
bool has_system_field(const std::string& line, bool large) {
    const std::size_t width = large ? 16 : 8, first = 8 + width; // behind the name and the number
    if (line.find(',') != std::string::npos || line.size() <= first) return false;
    std::string field = line.substr(first, width);
    std::erase(field, ' ');
    return field.find_first_not_of("0123456789") == std::string::npos &&
           field.find_first_not_of('0') != std::string::npos;
}

struct grid_counts {
    std::uint64_t misread = 0;
    std::uint64_t elsewhere = 0; ///< in a coordinate system of their own
};

/// Takes a line that begins with "GRID", and the next one where the card goes on there.
void count_card(std::string line, std::ifstream& stream, grid_counts& counts) {
    token_list card = tokens_of(line);
    if (card.size() < 3) return;
    const bool large = card[0] == "GRID*";
    // As the reader sees it: where the field touches the next one, it is part of a coordinate.
    const bool has_system =
        card[2].find('.') == std::string::npos && std::atoi(card[2].c_str()) != 0;
    if (has_system || has_system_field(line, large)) ++counts.elsewhere;
    if (large && std::getline(stream, line)) add_second_line(card, tokens_of(line));
    if (is_misread(card, has_system)) ++counts.misread;
}

} // namespace

void check_grid_points(const std::string& file, warnings& notes) {
    std::ifstream stream(file);
    grid_counts counts;
    std::string line;
    while (std::getline(stream, line) && line.find("BEGIN BULK") == std::string::npos) {
    }
    while (std::getline(stream, line) && line.find("ENDDATA") == std::string::npos)
        if (line.rfind("GRID", 0) == 0) count_card(line, stream, counts);
    notes.add("grid points in a coordinate system of their own, taken as they stand",
              counts.elsewhere);
    notes.add("grid points with a coordinate that is lost or misread (a coordinate system written "
              "as 0, an exponent without E, fields that touch)",
              counts.misread);
}
