#include "file_formats.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

#include <sys/stat.h>

#include <kvx/zelvo/stl.h>

namespace {

using kvx::zelvo::STL_format;

/// In the order of the enumeration.
constexpr std::array<format_facts, 8> formats = {{
    {"stl-ascii", "STL, ASCII", {".stl"}, true, true},
    {"stl-binary", "STL, binary", {".stlb"}, true, true},
    {"vtk", "legacy VTK", {".vtk"}, false, true},
    {"medit", "MEDIT", {".mesh"}, false, true},
    {"nastran", "NASTRAN bulk data", {".bdf", ".nas", ".dat"}, true, true},
    {"obj", "Wavefront OBJ", {".obj"}, true, true},
    {"ensight", "EnSight geometry", {".geo"}, false, true},
    {"femap", "FEMAP neutral", {".neu"}, true, true},
}};

std::string names_of(bool format_facts::*able) {
    std::string names;
    for (const format_facts& entry : formats)
        if (entry.*able) names += (names.empty() ? "" : ", ") + std::string(entry.name);
    return names;
}

/// Why the file cannot be read; empty when it can.
std::string obstacle(const std::string& file) {
    struct stat found = {};
    if (stat(file.c_str(), &found) != 0) return reason_of(errno);
    if (S_ISDIR(found.st_mode)) return reason_of(EISDIR);
    if (!S_ISREG(found.st_mode)) return "Not a regular file";
    std::FILE* const stream = std::fopen(file.c_str(), "rb");
    if (!stream) return reason_of(errno);
    errno = 0;
    const bool failed = std::getc(stream) == EOF && std::ferror(stream);
    std::string reason = failed ? reason_of(errno) : "";
    (void)std::fclose(stream); // was only read
    return reason;
}

/// The beginning of a file, enough to tell its format.
std::string head_of(const std::string& file) {
    constexpr std::size_t longest = 1 << 20; // a deck may begin with many lines of case control
    std::string head(longest, '\0');
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(std::fopen(file.c_str(), "rb"),
                                                                 std::fclose);
    head.resize(stream ? std::fread(head.data(), 1, longest, stream.get()) : 0);
    return head;
}

/// Takes the first line off the text, without blanks around it.
std::string_view next_line(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    constexpr const char* blanks = " \t\r\v\f";
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

bool is_number(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A line "-1" and a block number.
bool looks_like_femap(std::string_view text) {
    while (!text.empty())
        if (next_line(text) == "-1" && is_number(next_line(text))) return true;
    return false;
}

/// A line "v x y z", as far as its first number.
bool looks_like_obj(std::string_view text) {
    while (!text.empty()) {
        std::string_view line = next_line(text);
        if (line.size() < 3 || line[0] != 'v' || (line[1] != ' ' && line[1] != '\t')) continue;
        line.remove_prefix(std::min(line.find_first_not_of(" \t", 1), line.size()));
        if (line.find_first_of("0123456789") < 3) return true; // behind a sign and a point
    }
    return false;
}

std::optional<format> format_by_content(const std::string& file) {
    const std::optional<format> stl = stl_form(file);
    if (stl == format::stl_ascii) return stl;
    // Text comes before binary STL, whose cut files are told by little more than a printable line.
    const std::string head = head_of(file);
    if (head.find('\0') == std::string::npos) {
        if (head.find("BEGIN BULK") != std::string::npos) return format::nastran;
        if (looks_like_femap(head)) return format::femap;
        if (looks_like_obj(head)) return format::obj;
    }
    return stl;
}

} // namespace

const format_facts& facts(format form) {
    return formats[static_cast<unsigned>(form)];
}

std::string names_of_readable_formats() {
    return names_of(&format_facts::readable);
}

std::string names_of_writable_formats() {
    return names_of(&format_facts::writable);
}

std::optional<format> format_named(const std::string& name) {
    for (unsigned k = 0; k < formats.size(); ++k)
        if (formats[k].name == name) return static_cast<format>(k);
    return {};
}

std::optional<format> format_by_extension(const std::string& file) {
    std::string extension = std::filesystem::path(file).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (unsigned k = 0; k < formats.size() && !extension.empty(); ++k)
        for (const char* const known : formats[k].extensions)
            if (known && extension == known) return static_cast<format>(k);
    return {};
}

void need_readable(const std::string& file) {
    const std::string reason = obstacle(file);
    if (!reason.empty()) throw unreadable_file(reason);
}

std::optional<format> stl_form(const std::string& file) {
    switch (kvx::zelvo::STL_detect(file.c_str())) {
    case STL_format::ascii:
        return format::stl_ascii;
    case STL_format::binary:
        return format::stl_binary;
    case STL_format::unreadable:
        throw unreadable_file("cannot be read");
    default:
        return {};
    }
}

format detect_format(const std::string& file) {
    need_readable(file);
    if (const auto found = format_by_content(file)) return *found;
    const auto named = format_by_extension(file);
    if (named && *named != format::stl_ascii && facts(*named).readable) return *named;
    throw unreadable_file("not a mesh in a format that can be read");
}
