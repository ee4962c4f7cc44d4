#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// Contests between this library, the tools that people would otherwise use (peers), and a plain
/// hand-written lower bound (floor): one job, one input, one process, one thread, round by round.
namespace kvx::zelvo::bench {

/// One way to do a job. Only `run` is timed.
struct contestant {
    std::string name;
    std::function<void()> prepare; ///< makes what a run uses up; may be empty
    std::function<void()> run;
    std::function<std::vector<double>()> answer; ///< what the last run found
    std::function<void()> discard;               ///< lets go of what the last run made
    std::string remark;                          ///< where it does less or more than this library
    bool rival = true; ///< false: shown, but no measure for us, as it does too little

    contestant&& but(std::string how) && {
        remark = std::move(how);
        return std::move(*this);
    }
    contestant&& out_of_contest() && {
        rival = false;
        return std::move(*this);
    }
    contestant&& before(std::function<void()> step) && {
        prepare = std::move(step);
        return std::move(*this);
    }
};

/// A contestant whose run returns what it made, so that every run makes it anew and none pays for
/// letting go of it. `answer` turns that into numbers in the order of `contest_row::answers`, of
/// which it may give the first few only; -1 stands for one that it does not know.
template <class Run, class Answer>
contestant entrant(std::string name, Run run, Answer answer) {
    const auto made = std::make_shared<std::optional<std::invoke_result_t<Run>>>();
    contestant c;
    c.name = std::move(name);
    c.run = [=] { made->emplace(run()); };
    c.answer = [=] { return answer(**made); };
    c.discard = [=] { made->reset(); };
    return c;
}

/// What this library has to reach in a row.
enum class goal {
    /// 1.5 times as fast as the fastest peer, and at most 1.5 times the floor.
    ahead,
    /// As fast as the fastest peer, where the contract makes the row dearer than what peers do.
    level
};

struct contest_row {
    std::string job;
    std::string input;
    std::string item; ///< what times are divided by
    std::uint64_t items = 0;
    goal wanted = goal::ahead;
    std::vector<std::string> answers; ///< what the numbers of `contestant::answer` count
    std::optional<contestant> ours;
    std::vector<contestant> peers;
    std::optional<contestant> floor;
    std::vector<std::string> absent; ///< peers that could not take part, and why
};

struct contest_options {
    double scale = 1.0;    ///< of all sizes
    unsigned rounds = 7;   ///< timed, after one whose answers are compared
    std::string only;      ///< rows whose job or input contains this; empty: all
    std::string folder;    ///< for files that contestants read and write; empty: the system's
    bool cpu_time = false; ///< the process's, for a machine that others use too; else the clock's
    std::string json;      ///< file for all times; empty: none
    std::string markdown;  ///< file for the table; empty: none
};

class contest {
public:
    explicit contest(contest_options options);
    contest(const contest&) = delete;
    contest& operator=(const contest&) = delete;
    ~contest();

    std::uint64_t size(std::uint64_t full) const;
    /// Whether the row is asked for: its input need not be made otherwise.
    bool wants(const std::string& job, const std::string& input) const;
    /// A file of the contest, removed at its end.
    std::string file(const std::string& name) const;

    /// Runs a row and prints it. The answers of the first round are compared with ours.
    void hold(contest_row row);

    /// Writes the files asked for. False when an answer differed that no remark explains, or a
    /// file could not be written.
    bool finish() const;

private:
    struct results;
    contest_options options_;
    std::string folder_;
    std::unique_ptr<results> results_;
};

/// The rows, by family.
void hold_stl_rows(contest& c);
void hold_search_rows(contest& c);
void hold_topology_rows(contest& c);
void hold_metric_rows(contest& c);
void hold_text_rows(contest& c);

} // namespace kvx::zelvo::bench
