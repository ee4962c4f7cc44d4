#pragma once

#include <functional>
#include <string>

#include "file_formats.h"
#include "mesh.h"

/// Writes a mesh whose elements the format can hold, whole or not at all. Returns 0, or the errno
/// value that says why it was not written.
int write_mesh(const std::string& file, const mesh& m, format form);

/// Writes what a writer of the library gives to the file of the name that it is called with, whole
/// or not at all. Returns as write_mesh does.
int write_file(const std::string& file, const std::function<int(const char*)>& writer);

/// Whether the property numbers become references of a MEDIT file, which it has for the elements of
/// one kind only; else the number of the group is the reference.
bool medit_holds_properties(const mesh& m);
