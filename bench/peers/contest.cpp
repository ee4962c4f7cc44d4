#include "contest.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include <malloc.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "../resident_memory.h"

namespace kvx::zelvo::bench {

namespace {

struct timed {
    std::string name;
    std::string remark;
    std::string differences;
    std::vector<double> nanoseconds; // per item, by round
    double median = 0.0;
    double peak_bytes = 0.0; // per item
    bool rival = true;
};

/// A row that was held; ours first, the floor last.
struct held_row {
    std::string job, input, item;
    std::uint64_t items = 0;
    goal wanted = goal::ahead;
    timed ours;
    std::vector<timed> peers;
    std::optional<timed> floor;
    std::vector<std::string> absent;

    /// nullptr without rivals.
    const timed* fastest_peer() const {
        const timed* fastest = nullptr;
        for (const timed& peer : peers) {
            if (peer.rival && (!fastest || peer.median < fastest->median)) fastest = &peer;
        }
        return fastest;
    }
    double lead() const { return fastest_peer() ? fastest_peer()->median / ours.median : 0.0; }
    double over_floor() const { return floor ? ours.median / floor->median : 0.0; }
    std::string verdict() const {
        std::string missed;
        if (fastest_peer() && lead() < (wanted == goal::ahead ? 1.5 : 1.0)) missed = "peer";
        if (floor && wanted == goal::ahead && over_floor() > 1.5)
            missed += missed.empty() ? "floor" : ", floor";
        return missed.empty() ? "met" : "missed: " + missed;
    }
};

/// Nanoseconds since some moment.
double now(bool cpu_time) {
    timespec t{};
    clock_gettime(cpu_time ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &t);
    return 1e9 * double(t.tv_sec) + double(t.tv_nsec);
}

double run_once(contestant& c, bool cpu_time) {
    if (c.prepare) c.prepare();
    malloc_trim(0); // nobody gets memory that another contestant has warmed
    const double start = now(cpu_time);
    c.run();
    return now(cpu_time) - start;
}

/// Where an answer is not ours, in words.
std::string differences(const std::vector<std::string>& names, const std::vector<double>& ours,
                        const std::vector<double>& theirs) {
    std::string text;
    for (std::size_t i = 0; i < std::min(ours.size(), theirs.size()); ++i) {
        if (theirs[i] == -1 || std::abs(theirs[i] - ours[i]) <= 1e-9 * std::abs(ours[i])) continue;
        char entry[200];
        std::snprintf(entry, sizeof entry, "%s%s %.12g instead of %.12g", text.empty() ? "" : ", ",
                      names.at(i).c_str(), theirs[i], ours[i]);
        text += entry;
    }
    return text;
}

std::string number(double value, const char* format = nullptr) {
    if (!format) format = value < 10 ? "%.1f" : "%.0f";
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string grouped(std::uint64_t n) {
    std::string digits = std::to_string(n);
    for (std::size_t i = digits.size(); i > 3; i -= 3)
        digits.insert(i - 3, " ");
    return digits;
}

void print(const held_row& r) {
    std::printf("\n%s, %s: ns and peak bytes per %s, of %s\n", r.job.c_str(), r.input.c_str(),
                r.item.c_str(), grouped(r.items).c_str());
    const auto line = [](const timed& t, const char* prefix) {
        const auto [low, high] = std::minmax_element(t.nanoseconds.begin(), t.nanoseconds.end());
        std::printf("  %-44s %9.1f  (%.1f to %.1f)  %.0f B", (prefix + t.name).c_str(), t.median,
                    *low, *high, t.peak_bytes);
        if (!t.rival) std::printf("  not counted:");
        if (!t.remark.empty()) std::printf("  %s", t.remark.c_str());
        if (!t.differences.empty()) std::printf("  DIFFERS: %s", t.differences.c_str());
        std::printf("\n");
    };
    line(r.ours, "");
    for (const timed& peer : r.peers)
        line(peer, "");
    for (const std::string& why : r.absent)
        std::printf("  %s\n", why.c_str());
    if (r.floor) line(*r.floor, "floor: ");
    std::printf("  %s", r.verdict().c_str());
    if (r.fastest_peer())
        std::printf("; %.2f times as fast as %s", r.lead(), r.fastest_peer()->name.c_str());
    if (r.floor) std::printf("; %.2f times the floor", r.over_floor());
    std::printf("\n");
    (void)std::fflush(stdout); // rows show as they are held
}

std::string markdown_line(const held_row& r) {
    std::string peers;
    for (const timed& peer : r.peers) {
        const std::string entry = peer.name + " " + number(peer.median);
        peers += (peers.empty() ? "" : ", ") + (peer.rival ? entry : "(" + entry + ")");
        if (!peer.differences.empty()) peers += " (" + peer.differences + ")";
    }
    for (const std::string& why : r.absent)
        peers += (peers.empty() ? "" : ", ") + why;
    const timed* const fastest = r.fastest_peer();
    return "| " + r.job + ", ns per " + r.item + " | " + r.input + " | " + number(r.ours.median) +
           " | " + peers + " | " +
           (fastest ? fastest->name + " " + number(fastest->median) : std::string("-")) + " | " +
           (r.floor ? number(r.floor->median) : std::string("-")) + " | " +
           (fastest ? number(r.lead(), "%.2f") : std::string("-")) + " | " +
           (r.floor ? number(r.over_floor(), "%.2f") : std::string("-")) + " | " +
           number(r.ours.peak_bytes, "%.0f") + " / " +
           (fastest ? number(fastest->peak_bytes, "%.0f") : std::string("-")) + " | " +
           (r.wanted == goal::ahead ? "1.5" : "level") + ": " + r.verdict() + " |\n";
}

std::string markdown_table(const std::vector<held_row>& rows) {
    std::string text = "| row | input | ours | peers | fastest peer | floor | peer / ours | "
                       "ours / floor | peak bytes, ours / fastest peer | goal |\n"
                       "|---|---|---|---|---|---|---|---|---|---|\n";
    for (const held_row& r : rows)
        text += markdown_line(r);
    std::vector<std::string> notes;
    for (const held_row& r : rows) {
        std::vector<timed> all = r.peers;
        all.insert(all.begin(), r.ours);
        if (r.floor) all.push_back(*r.floor);
        for (const timed& t : all) {
            if (!t.remark.empty()) notes.push_back("- " + r.job + ", " + t.name + ": " + t.remark);
        }
    }
    text +=
        "\nWhere a contestant does less or more (those in brackets do too little to count):\n\n";
    for (std::size_t i = 0; i < notes.size(); ++i) {
        if (std::find(notes.begin(), notes.begin() + std::ptrdiff_t(i), notes[i]) ==
            notes.begin() + std::ptrdiff_t(i))
            text += notes[i] + "\n";
    }
    return text;
}

nlohmann::json as_json(const timed& t) {
    return {{"name", t.name},   {"remark", t.remark},    {"differences", t.differences},
            {"rival", t.rival}, {"median_ns", t.median}, {"ns", t.nanoseconds}};
}

nlohmann::json as_json(const held_row& r) {
    nlohmann::json peers = nlohmann::json::array();
    for (const timed& peer : r.peers)
        peers.push_back(as_json(peer));
    return {{"job", r.job},
            {"input", r.input},
            {"item", r.item},
            {"items", r.items},
            {"ours", as_json(r.ours)},
            {"peers", peers},
            {"absent", r.absent},
            {"floor", r.floor ? as_json(*r.floor) : nlohmann::json()},
            {"peer_over_ours", r.lead()},
            {"ours_over_floor", r.over_floor()},
            {"goal", r.wanted == goal::ahead ? "ahead" : "level"},
            {"verdict", r.verdict()}};
}

bool write_file(const std::string& name, const std::string& text) {
    if (name.empty()) return true;
    std::ofstream out(name);
    out << text;
    out.close();
    if (!out) std::fprintf(stderr, "cannot write %s\n", name.c_str());
    return bool(out);
}

} // namespace

struct contest::results {
    std::vector<held_row> rows;
    bool unexplained = false;
};

contest::contest(contest_options options)
    : options_(std::move(options))
    , results_(std::make_unique<results>()) {
    const std::filesystem::path parent = options_.folder.empty()
                                             ? std::filesystem::temp_directory_path()
                                             : std::filesystem::path(options_.folder);
    folder_ = parent / ("kvx_zelvo_peers_" + std::to_string(getpid()));
    std::filesystem::create_directory(folder_);
}

contest::~contest() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::uint64_t contest::size(std::uint64_t full) const {
    return std::max<std::uint64_t>(1000, static_cast<std::uint64_t>(double(full) * options_.scale));
}

bool contest::wants(const std::string& job, const std::string& input) const {
    return (job + ", " + input).find(options_.only) != std::string::npos;
}

std::string contest::file(const std::string& name) const {
    return std::filesystem::path(folder_) / name;
}

void contest::hold(contest_row row) {
    std::vector<contestant*> all = {&*row.ours};
    for (contestant& peer : row.peers)
        all.push_back(&peer);
    if (row.floor) all.push_back(&*row.floor);

    std::vector<timed> times(all.size());
    std::vector<double> our_answer;
    for (std::size_t i = 0; i < all.size(); ++i) {
        contestant& c = *all[i];
        times[i].name = c.name;
        times[i].remark = c.remark;
        times[i].rival = c.rival;
        if (c.prepare) c.prepare();
        times[i].peak_bytes = peak_of(c.run) / double(row.items);
        const std::vector<double> answer = c.answer();
        c.discard();
        if (i == 0) our_answer = answer;
        times[i].differences = differences(row.answers, our_answer, answer);
        if (!times[i].differences.empty() && c.remark.empty()) results_->unexplained = true;
    }
    for (unsigned round = 0; round < options_.rounds; ++round) {
        for (std::size_t turn = 0; turn < all.size(); ++turn) {
            const std::size_t i = (round + turn) % all.size(); // each goes first now and then
            times[i].nanoseconds.push_back(run_once(*all[i], options_.cpu_time) /
                                           double(row.items));
            all[i]->discard();
        }
    }
    for (timed& t : times) {
        std::vector<double> sorted = t.nanoseconds;
        std::nth_element(sorted.begin(), sorted.begin() + std::ptrdiff_t(sorted.size() / 2),
                         sorted.end());
        t.median = sorted[sorted.size() / 2];
    }

    held_row held;
    held.job = row.job;
    held.input = row.input;
    held.item = row.item;
    held.items = row.items;
    held.wanted = row.wanted;
    held.absent = row.absent;
    if (row.floor) {
        held.floor = times.back();
        times.pop_back();
    }
    held.ours = times.front();
    held.peers.assign(times.begin() + 1, times.end());
    print(held);
    results_->rows.push_back(std::move(held));
}

bool contest::finish() const {
    nlohmann::json rows = nlohmann::json::array();
    for (const held_row& r : results_->rows)
        rows.push_back(as_json(r));
    const nlohmann::json all = {{"scale", options_.scale},
                                {"rounds", options_.rounds},
                                {"clock", options_.cpu_time ? "cpu" : "wall"},
                                {"rows", rows}};
    const bool written = write_file(options_.json, all.dump(1) + "\n") &&
                         write_file(options_.markdown, markdown_table(results_->rows));
    if (results_->unexplained) std::fprintf(stderr, "answers differ without a remark\n");
    return written && !results_->unexplained;
}

} // namespace kvx::zelvo::bench
