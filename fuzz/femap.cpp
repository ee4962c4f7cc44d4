#include "fuzzing.h"

#include <sstream>
#include <vector>

namespace {

/// The number that a node has in a file whose numbers have gaps.
std::string with_gaps(const std::string& number) {
    return number == "0" ? number : std::to_string(10 * std::stoull(number) + 3);
}

/// A file of the writer with other numbers of nodes, and these in descending order: the mesh is the
/// same.
std::string renumbered(const std::string& file) {
    std::istringstream in(file);
    std::string out, block;
    std::vector<std::string> nodes;
    std::size_t line_of_element = 0;
    for (std::string line; std::getline(in, line);) {
        if (line == "   -1") {
            for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
                out += *node;
            nodes.clear();
            block.clear();
            line_of_element = 0;
        } else if (block.empty()) {
            block = line;
        } else if (block == "   403") {
            const std::size_t comma = line.find(',');
            nodes.push_back(with_gaps(line.substr(0, comma)) + line.substr(comma) + "\n");
            continue;
        } else if (block == "   404") {
            const std::size_t at = line_of_element++ % 7;
            if (at == 1 || at == 2) {
                std::istringstream slots(std::exchange(line, {}));
                for (std::string slot; std::getline(slots, slot, ',');)
                    line += with_gaps(slot) + ",";
            }
        }
        out += line + "\n";
    }
    return out;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kvx::zelvo;
    using namespace kvx::zelvo::fuzzing;
    const auto read = [](auto&&... arguments) { return FEMAP_input(arguments...); };
    grouped_mesh mesh, again;
    const int code = read_groups(data, size, read, mesh);
    demand(code != -199, "no memory is lacking");
    demand(check_IDs(mesh.connectM, bound(mesh.pos.cols())), "elements name nodes of the file");
    if (code != 0) return 0;
    demand(FEMAP_output(output_file.path(), mesh.pos, mesh.connectM, mesh.offsets, mesh.FEs,
                        mesh.props) == 0,
           "what was read is written");
    demand(read(output_file.path(), again.pos, again.connectM, again.offsets, again.FEs,
                again.props) == 0,
           "what was written is read");
    demand(equal(mesh.pos, again.pos) && mesh.same_elements(again), "a mesh comes back as it was");
    const std::string text = renumbered(output_file.text());
    demand(read(input_file.fill(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()),
                again.pos, again.connectM, again.offsets, again.FEs, again.props) == 0,
           "a file with other numbers is read");
    demand(equal(mesh.pos, again.pos) && mesh.same_elements(again), "numbers find their nodes");
    return 0;
}
