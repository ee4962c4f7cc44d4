#pragma once

#include <string>

#include "messages.h"

/// Notes the grid points of a NASTRAN deck that the library reads otherwise than they are meant: it
/// separates fields at blanks and commas only, takes a coordinate system that is written as 0 for a
/// coordinate, and knows no exponent without an E.
void check_grid_points(const std::string& file, warnings& notes);
