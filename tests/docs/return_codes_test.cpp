#include <fstream>
#include <set>
#include <sstream>

#include "docs/exported_calls.h"

namespace kvx::zelvo::tests {

/// A row of a table: the result, and the condition by its words up to the first punctuation.
struct row {
    std::string result, condition;

    bool states(std::int64_t actual) const {
        if (result == "n") return actual > 0 && actual != no_node;
        if (result == "no_node") return actual == no_node;
        if (result == "true" || result == "false") return actual == (result == "true");
        return actual == std::stoll(result);
    }
};
using table = std::vector<row>;

bool has_row_for(const table& rows, std::int64_t result) {
    return std::any_of(rows.begin(), rows.end(), [=](const row& r) { return r.states(result); });
}

/// The tables of the document by form; the forms of a paragraph head the table that follows.
std::map<std::string, table> documented() {
    std::map<std::string, table> tables;
    std::vector<std::string> heads;
    bool in_paragraph = false;
    std::ifstream file(KVX_ZELVO_SOURCE "/docs/return-codes.md");
    for (std::string line; std::getline(file, line); in_paragraph = in_paragraph && !line.empty()) {
        if (line.starts_with("| ") && !line.starts_with("| result")) {
            const std::size_t bar = line.find(" | ");
            std::string words = line.substr(bar + 3);
            words.resize(words.find_last_not_of(' ', words.find_first_of(",:;(|") - 1) + 1);
            for (const std::string& head : heads)
                tables[head].push_back({line.substr(2, bar - 2), words});
        }
        std::istringstream parts(line);
        std::string part;
        for (bool quoted = false; std::getline(parts, part, '`'); quoted = !quoted) {
            if (!quoted || !part.ends_with(')')) continue;
            if (!in_paragraph) heads.clear();
            in_paragraph = true;
            heads.push_back(part);
            EXPECT_TRUE(tables.insert({part, {}}).second) << part << " stands twice";
        }
    }
    return tables;
}

/// The condition without a call: nobody knows a field of metrics that does not settle.
const std::string out_of_reach = "the metrics still change after 1000 sweeps";

/// The result of a call that meets two conditions; where they exclude each other, the first one.
std::int64_t result_of(const call& c, const std::string& words,
                       const std::string& other = "otherwise", std::int64_t memory = unlimited) {
    arguments a;
    prepare(a, c);
    a.memory = memory;
    a.conditions.at(other)();
    a.conditions.at(words)();
    refused = false;
    allocations_left = a.memory;
    const std::int64_t result = (a.*c.make)();
    allocations_left = unlimited;
    return result;
}

/// Calls visit(call, rows) for every function that has results.
template <class Visit>
void each_call(Visit&& visit) {
    const auto tables = documented();
    for (const call& c : calls)
        if (c.has_result && tables.contains(c.form)) visit(c, tables.at(c.form));
}

TEST(return_codes, document_names_what_the_headers_export) {
    std::set<std::string> forms, used;
    const auto tables = documented();
    const arguments a;
    for (const call& c : calls) {
        forms.insert(c.form);
        ASSERT_TRUE(tables.contains(c.form)) << c.form << " is not documented";
        EXPECT_EQ(tables.at(c.form).empty(), !c.has_result) << c.form;
    }
    for (const auto& [form, rows] : tables) {
        EXPECT_TRUE(forms.contains(form)) << form << " is not exported";
        for (const row& r : rows) {
            used.insert(r.condition);
            EXPECT_TRUE(a.conditions.contains(r.condition) || r.condition == out_of_reach)
                << r.condition << ": no call meets it";
        }
    }
    for (const auto& [words, meet] : a.conditions)
        EXPECT_TRUE(used.contains(words)) << words << " is not documented";
}

TEST(return_codes, calls_return_the_first_condition_they_meet) {
    each_call([](const call& c, const table& rows) {
        for (auto i = rows.begin(); i != rows.end(); ++i)
            for (auto j = i; j != rows.end(); ++j) {
                if (i->condition == out_of_reach || j->condition == out_of_reach) continue;
                const std::int64_t result = result_of(c, i->condition, j->condition);
                EXPECT_TRUE(i->states(result) || (result == -199 && j->states(result)))
                    << c.form << ": " << result << "; " << i->condition << "; " << j->condition;
            }
    });
}

TEST(return_codes, no_call_returns_what_its_table_lacks) {
    const arguments any;
    each_call([&](const call& c, const table& rows) {
        for (const auto& [words, meet] : any.conditions) {
            const std::int64_t result = result_of(c, words);
            EXPECT_TRUE(has_row_for(rows, result)) << c.form << ": " << result << "; " << words;
        }
    });
}

TEST(return_codes, any_allocation_may_fail) {
    each_call([](const call& c, const table& rows) {
        std::int64_t memory = 0;
        do {
            const std::int64_t result = result_of(c, "otherwise", "otherwise", memory++);
            EXPECT_TRUE(refused ? has_row_for(rows, result) : rows.back().states(result))
                << c.form << ": " << result << " with " << memory - 1 << " allocations";
        } while (refused);
    });
}

} // namespace kvx::zelvo::tests
