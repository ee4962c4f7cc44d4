#pragma once

#include <map>
#include <string>

#include "meshes.h"

/// Edges and sides of the shapes in local nodes, written down apart from the library.
namespace kvx::zelvo::tests {

/// Of the kinds that have edges: those of their corners.
inline std::string edges_of(element_type kind) {
    if (kind == ET_BAR2 || kind == ET_BAR3) return "01";
    if (kind == ET_TRIA3 || kind == ET_TRIA6) return "01 12 20";
    if (kind >= ET_QUAD4 && kind <= ET_QUAD9) return "01 12 23 30";
    if (kind == ET_TETRA4 || kind == ET_TETRA10) return "01 12 20 03 13 23";
    if (kind == ET_PYRAMID5 || kind == ET_PYRAMID14) return "01 12 23 30 04 14 24 34";
    if (kind == ET_PENTA6 || kind == ET_PENTA18) return "01 12 20 34 45 53 03 14 25";
    if (kind != ET_HEXA8 && kind != ET_HEXA27) return "";
    return "01 12 23 30 45 56 67 74 04 15 26 37";
}

inline const std::map<element_type, std::string> sides_of = {
    {ET_BAR2, "1 0"},
    {ET_TRIA3, "12 20 01"},
    {ET_QUAD4, "01 12 23 30"},
    {ET_TETRA4, "123 203 130 210"},
    {ET_PYRAMID5, "041 142 243 340 0123"},
    {ET_PENTA6, "012 354 2145 5302 0341"},
    {ET_HEXA8, "0374 1562 0451 3267 0123 4765"}};

} // namespace kvx::zelvo::tests
