#pragma once

#include "file_formats.h"
#include "mesh.h"
#include "messages.h"

/// Makes a mesh one that the format can hold: elements that it cannot hold are turned into what it
/// can, or left out. Notes what the file will not hold, or will hold in another form, and how many
/// are affected.
void fit_to_format(mesh& m, format form, warnings& notes);
