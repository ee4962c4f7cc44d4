#pragma once

#include <string>

#include "mesh.h"
#include "messages.h"

/// Notes what the library reads otherwise than a NASTRAN deck says: it separates fields at blanks and
/// commas only, takes a coordinate system that is written as 0 for a coordinate, and knows no
/// exponent without an E.
///
/// read   what it read, its nodes by the numbers of the grid points
void check_deck(const std::string& file, const mesh& read, warnings& notes);
