#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <vector>

#include "messages.h"
#include "node_field.h"

using namespace kvx;

namespace {

/// Takes numbers off the front of a text.
class number_text {
public:
    explicit number_text(const std::string& text)
        : at_(text.data())
        , end_(text.data() + text.size()) {}

    template <class Number>
    bool next(Number& x) {
        skip_blanks();
        if (at_ != end_ && *at_ == '+') ++at_;
        const auto [behind, error] = std::from_chars(at_, end_, x);
        if (error != std::errc() || (behind != end_ && !is_blank(*behind))) return false;
        at_ = behind;
        return true;
    }
    bool at_end() {
        skip_blanks();
        return at_ == end_;
    }

private:
    static bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    void skip_blanks() {
        while (at_ != end_ && is_blank(*at_))
            ++at_;
    }

    const char* at_;
    const char* end_;
};

std::string content_of(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The four whole numbers before the values.
struct header {
    unsigned int dimension = 0, rows = 0;
    std::uint64_t nodes = 0;
    unsigned int place = 0;
};

header read_header(number_text& text) {
    constexpr unsigned int at_nodes = 2;
    header head;
    if (!text.next(head.dimension) || !text.next(head.rows) || !text.next(head.nodes) ||
        !text.next(head.place) || head.dimension < 1 || head.dimension > 3)
        throw unreadable_file("no solution: it has to begin with the whole numbers dimension, "
                              "values per node, nodes and 2");
    if (head.place != at_nodes) throw unreadable_file("not a field at the nodes");
    const bool metrics =
        (head.dimension == 2 && head.rows == 3) || (head.dimension == 3 && head.rows == 6);
    if (head.rows != 1 && !metrics)
        throw unreadable_file(
            "neither sizes (1 value per node) nor metrics (3 values in the plane, "
            "6 in space)");
    return head;
}

} // namespace

solution read_solution(const std::string& file) {
    const std::string content = content_of(file);
    number_text text(content);
    const header head = read_header(text);
    std::vector<double> numbers;
    for (double x = 0.0; text.next(x);)
        numbers.push_back(x);
    if (!text.at_end()) throw unreadable_file("holds something that is no number");
    if (numbers.size() / head.rows != head.nodes || numbers.size() % head.rows != 0)
        throw unreadable_file("announces " + std::to_string(head.nodes) + " nodes with " +
                              std::to_string(head.rows) + " values each, holds " +
                              std::to_string(numbers.size()) + " values");
    solution result{head.dimension, {}};
    if (head.rows == 1) {
        dense1D<double> sizes(head.nodes);
        std::copy(numbers.begin(), numbers.end(), sizes.begin());
        result.values = sizes;
    } else {
        dense2D<double> metrics(head.rows, head.nodes);
        std::copy(numbers.begin(), numbers.end(), metrics.as_vector().begin());
        result.values = metrics;
    }
    return result;
}
