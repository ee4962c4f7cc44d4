#include "messages.h"

#include <cerrno>
#include <cstdio>
#include <new>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace {

bool same_file(const struct stat& a, const struct stat& b) {
    return S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

std::string printable(const std::string& name) {
    std::string text;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        char escaped[8] = {c};
        if (byte < 0x20 || byte == 0x7F) std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
        text += escaped;
    }
    return text;
}

void say(const std::string& what) {
    std::fprintf(stderr, "zelvo: %s\n", printable(what).c_str());
}

int fail(exit_code code, const std::string& what) {
    say(what);
    return code;
}

std::string reason_of(int error) {
    return std::generic_category().message(error);
}

int work_on(const std::string& file, const std::function<int()>& work) {
    try {
        return work();
    } catch (const unreadable_file& reason) {
        return fail(bad_input, file + ": " + reason.what());
    } catch (const std::bad_alloc&) {
        return fail(bad_input, file + ": " + reason_of(ENOMEM));
    }
}

int print(const std::string& text) {
    errno = 0;
    const bool taken = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (taken && std::fflush(stdout) == 0) return done;
    return fail(not_written, "standard output: " + reason_of(errno));
}

void warnings::add(const std::string& what, std::uint64_t count) {
    if (count > 0) add(what + ": " + std::to_string(count));
}

void warnings::add(const warnings& others) {
    lines_.insert(lines_.end(), others.lines_.begin(), others.lines_.end());
}

std::string warnings::in_brackets() const {
    std::string text;
    for (const std::string& line : lines_)
        text += (text.empty() ? " (" : "; ") + line;
    return text.empty() ? text : text + ')';
}

void warnings::say_all(const std::string& file) const {
    const std::string heading = file + ": warning: ";
    for (const std::string& line : lines_)
        say(heading + line);
}

bool are_same_file(const std::string& a, const std::string& b) {
    struct stat of_a = {}, of_b = {};
    return stat(a.c_str(), &of_a) == 0 && stat(b.c_str(), &of_b) == 0 && same_file(of_a, of_b);
}

bool is_standard_output(const std::string& file) {
    struct stat of_file = {}, of_results = {};
    return stat(file.c_str(), &of_file) == 0 && fstat(STDOUT_FILENO, &of_results) == 0 &&
           same_file(of_file, of_results);
}
