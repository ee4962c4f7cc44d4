#pragma once

#include <cstdint>

#include <kvx/dense_array.h>
#include <kvx/zelvo/export.h>

namespace kvx::zelvo {

/// Writes a triangle surface as an STL file. ASCII: numbers as printf's "%le", solid name "KVX".
/// Binary, little-endian: 80 header bytes ("KVX STL Binary", zeros), 32-bit number of facets, and
/// 50 bytes a facet: normal and vertices as 32-bit floats (numbers beyond their range become
/// infinite) and a 16-bit 0. The normal is the unit vector of (P1 - P0) x (P2 - P0), or 0 where
/// that has no direction. Both forms have the same bytes on every system and under every locale.
///
/// filename   created or truncated before anything is checked: a rejected call destroys what the
///            file held
/// pos        2 or 3 rows, one column per node; z is 0 where there are 2 rows
/// connectM   3 rows, one column per triangle
/// ascii      the form to write
///
/// Returns 0, or, in the order checked: -1 the file cannot be opened (or its name is null); -2 rows
/// of pos; -3 connectM is no ET_TRIA3 connectivity of pos, or has more columns than the binary form
/// counts (4294967295); -1 a write failed, the last one on closing included. With -2 and -3 the
/// empty file stays open on purpose, as callers have always found it (on Windows it also stays
/// locked). Linear.
KVX_ZELVO_API int STL_output(const char* filename, const dense2D<double>& pos,
                             const dense2D<unsigned int>& connectM, bool ascii) noexcept;

/// Reads an STL file into a triangle mesh with shared nodes.
///
/// Every facet gives three nodes and a triangle. Then, where at least one triangle has a positive
/// smallest height, the mesh is cleaned: nodes closer than 0.05 times the smallest positive height
/// are merged, triangles that use a node twice removed, nodes that no triangle uses dropped. A file
/// whose facets all have zero area is left as read. Normals and attributes are ignored.
///
/// Reading stops without an error at the first facet that is not complete. In ASCII files the first
/// line, whatever it says, is skipped; "facet normal" and "vertex" are lower case, with any white
/// space around and between the words; the lines between may hold any text. So facets behind the
/// first solid are not read. Lines have any length. Numbers are decimal, with '.' under every
/// locale, or "nan" or "inf" in any case. Binary files end after the number of facets that they
/// announce.
///
/// filename   file, or a pipe, which may keep the call waiting; memory follows what it holds, not
///            what it announces. A character device may have no end and counts as one that does
///            not open
/// pos        replaced: 3 rows, one column per node
/// connectM   replaced: 3 rows, one column per triangle
/// ascii      the form of the file (see STL_detect)
///
/// Returns the number of triangles, or, with pos and connectM empty: -1 the file cannot be opened
/// (or its name is null), the first line or the 84 bytes before the facets are not there, or reading
/// fails; the code of merge or simplify when one of them fails; -199 memory runs out, or there are
/// more nodes than indices. Never leaves the file open. Cost: that of merge.
KVX_ZELVO_API int STL_input(const char* filename, dense2D<double>& pos,
                            dense2D<unsigned int>& connectM, bool ascii) noexcept;

/// What reading an STL file did.
struct STL_report {
    std::uint64_t announced_facets = 0; ///< count field of a binary file; 0 for an ASCII file
    std::uint64_t facets = 0;           ///< facets read
    double tolerance = 0.0;             ///< nodes up to this distance were merged
    std::uint64_t merged_nodes = 0;     ///< nodes replaced by another one
    std::uint64_t removed_elements = 0; ///< triangles removed because they use a node twice
    std::uint64_t removed_nodes = 0;    ///< nodes dropped because no triangle uses them (any more)
    std::uint64_t unread_bytes = 0;     ///< bytes behind the last facet read that mean nothing to
                                        ///< the reader; white space and one line that begins with
                                        ///< "endsolid" are understood in an ASCII file
};

/// The same, with a merging distance and an account of what was done, for programs that report on a
/// file. Reads the file to its end.
///
/// tolerance   distance up to which nodes are merged, in the units of the file: the clean-up is
///             then done whatever the heights are; NaN derives it as above
/// report      replaced, also when the call fails; its tolerance is 0 when nothing was cleaned
///
/// Codes as above; -5 when the tolerance is negative and there is a facet.
KVX_ZELVO_API int STL_input(const char* filename, dense2D<double>& pos,
                            dense2D<unsigned int>& connectM, bool ascii, double tolerance,
                            STL_report& report) noexcept;

enum class STL_format {
    unreadable, ///< no regular file, or it cannot be opened or read (or memory ran out)
    unknown,    ///< not an STL file
    ascii,
    binary
};

/// Tells the form of an STL file by its size and the first few KiB of its content. Only regular
/// files are looked at: telling the form of a pipe would use up what is to be read.
/// - binary: exactly as long as its count field says, whatever the header says (many binary files
///   begin with "solid");
/// - else ascii: text (no control characters but white space) that begins with "solid", in any
///   case, after white space and perhaps a UTF-8 byte-order mark;
/// - else binary: a header of printable text padded with NULs or blanks, and at least one whole
///   facet or a count of 0. Such a file was cut, or has more behind its facets;
/// - else unknown, as are empty files.
KVX_ZELVO_API STL_format STL_detect(const char* filename) noexcept;

} // namespace kvx::zelvo
