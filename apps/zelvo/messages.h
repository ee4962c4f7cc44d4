#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

/// What the command ends with.
enum exit_code { done = 0, wrong_usage = 2, bad_input = 3, not_written = 4 };

/// A file that cannot be read, with the reason.
struct unreadable_file : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A file's name for a line of text: control characters are written as \xNN.
std::string printable(const std::string& name);

/// Writes one line to the standard error.
void say(const std::string& what);

/// Says why the command fails; returns the code.
int fail(exit_code code, const std::string& what);

/// What the system calls an error of this number.
std::string reason_of(int error);

/// Does the work on a file, and says why when it cannot be read or memory runs out. Returns the
/// exit code.
int work_on(const std::string& file, const std::function<int()>& work);

/// Prints a result; returns `done`, or `not_written` with the reason said.
int print(const std::string& text);

/// What is worth knowing about a file though the work goes on.
class warnings {
public:
    void add(std::string what) { lines_.push_back(std::move(what)); }
    /// "what: count", unless the count is 0.
    void add(const std::string& what, std::uint64_t count);
    void add(const warnings& others);
    /// All of them behind a blank and in brackets; empty when there is none.
    std::string in_brackets() const;
    /// Says each in a line that names the file.
    void say_all(const std::string& file) const;

private:
    std::vector<std::string> lines_;
};

/// Whether both names lead to one regular file.
bool are_same_file(const std::string& a, const std::string& b);
/// Whether results on the standard output would go to that regular file.
bool is_standard_output(const std::string& file);
