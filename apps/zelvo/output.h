#pragma once

#include <string>

#include "report.h"

/// A file's name for a line of text: control characters are written as \xNN.
std::string printable(const std::string& name);

/// The report as aligned lines for people.
std::string as_text(const surface_report& report);

/// The report as one JSON object; docs/command.md names its keys. Numbers that are not finite are
/// null, bytes of the file name that are no UTF-8 become U+FFFD.
std::string as_json(const surface_report& report);

/// Writes the mesh as a legacy VTK file, whole or not at all. Returns 0, or the errno value that
/// says why it was not written.
int write_vtk(const std::string& file, const surface& mesh);
