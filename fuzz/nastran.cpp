#include "fuzzing.h"

#include <sstream>

namespace {

/// No grid point of a deck has a larger number: the largest number below 2^32 - 1 that stands second
/// in a line of which the first word begins with GRID.
std::uint64_t largest_grid_number(const std::uint8_t* data, std::size_t size) {
    std::istringstream deck(std::string(reinterpret_cast<const char*>(data), size));
    std::uint64_t largest = 0;
    for (std::string line; std::getline(deck, line);) {
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c == ',' || c == '\t' || c == '\r'; },
            ' ');
        const std::size_t first = line.find_first_not_of(' ');
        const std::size_t behind = line.find(' ', first);
        if (first == line.npos || line.compare(first, 4, "GRID") != 0 || behind == line.npos)
            continue;
        const std::uint64_t number = std::strtoull(line.c_str() + behind, nullptr, 10);
        if (number < kvx::no_node) largest = std::max(largest, number);
    }
    return largest;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx;
    using namespace kvx::zelvo;
    using namespace kvx::zelvo::fuzzing;
    const auto read = [](auto&&... arguments) { return NASTRAN_input(arguments...); };
    grouped_mesh mesh, again;
    const std::uint64_t numbers = largest_grid_number(data, size) + 1;
    const int code = read_groups(data, size, read, mesh, numbers);
    demand(code != -199 || numbers * bytes_per_node > largest_block,
           "memory is lacking for large numbers only");
    demand(code != -199 || (mesh.pos.empty() && mesh.connectM.empty()), "-199 leaves nothing");
    demand(mesh.pos.cols() <= numbers, "there are no nodes beyond the largest number");
    // Decks with few of many numbers would become huge: every grid point is written.
    if (code != 0 || mesh.pos.cols() > size) return 0;
    demand(NASTRAN_output(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs,
                          mesh.props) == 0,
           "what was read is written");
    read(output_file.path(), again.pos, again.connectM, again.offsets, again.FEs, again.props);
    demand(mesh.pos.cols() == again.pos.cols(), "grid points come back");
    demand(mesh.has(ET_TETRA4) || mesh.has(ET_PYRAMID5) || mesh.same_elements(again),
           "elements other than tetrahedra and pyramids come back as they were");
    return 0;
}
