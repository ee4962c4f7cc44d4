#pragma once

#include <array>
#include <optional>
#include <string>

#include "messages.h"

enum class format { stl_ascii, stl_binary, vtk, medit, nastran, obj, ensight, femap };

struct format_facts {
    const char* name;                      ///< for options and programs
    const char* title;                     ///< for people
    std::array<const char*, 3> extensions; ///< in lower case; the format that a new file gets
    bool readable;
    bool writable;
};
const format_facts& facts(format form);

/// The names of all formats that can be read, or written, for a line of help.
std::string names_of_readable_formats();
std::string names_of_writable_formats();

/// The format of that name.
std::optional<format> format_named(const std::string& name);

/// The format that a file to be written gets by the extension of its name.
std::optional<format> format_by_extension(const std::string& file);

/// Throws unreadable_file when the file cannot be opened and read or is no regular file: telling
/// the format of a pipe would use up its content.
void need_readable(const std::string& file);

/// The form of an STL file that can be read; none when it is no STL file.
std::optional<format> stl_form(const std::string& file);

/// The format of a file that can be read, by its content or else by its extension. Throws
/// unreadable_file.
format detect_format(const std::string& file);
