#pragma once

#include <kvx/dense_array.h>
#include <kvx/fixed_size.h>
#include <kvx/zelvo/export.h>

/// Copies of a part of a mesh within its coordinate matrix. What holds for every function here:
///
/// pos         in and out: rows x nodes. The distinct nodes of conn are appended, in order of first
///             appearance; nodes that were there stay as they are
/// copy_conn   out: the copied elements, naming the new nodes, no_node kept. May share storage with
///             conn
/// conn        the elements to copy, one column each, of any kind
///
/// A copy has the kind, node order and orientation of conn. Linear in what is appended, in conn and
/// in the number of nodes.
namespace kvx::zelvo {

/// Copies the elements once; copy_conn is replaced. Returns 0, or with nothing changed: -2 an entry
/// that is neither a column of pos nor no_node; -199 out of memory, or of 32-bit node indices.
KVX_ZELVO_API int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                            const dense2D<unsigned int>& conn) noexcept;

/// Copies the elements n_copies times in a linear, circular or helical pattern: copy i is turned
/// about C by i times the angle (radians, counter-clockwise) and then shifted by i T.
///
/// pos         gets 2 rows, in 3-D 3, where it has fewer, as with rotate and translate
/// copy_conn   appended to; gets as many rows as conn where it has fewer, and no_node in rows that
///             one of the two did not have
///
/// Returns 0 (an empty pos, or no copies, change nothing), or: -2 an entry that is neither a column
/// of pos nor no_node, with nothing changed; -199 out of memory, or of 32-bit node indices, with
/// the copies that were whole by then kept.
KVX_ZELVO_API int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                            const vector_fixed<double, 2>& T, const vector_fixed<double, 2>& C,
                            double angle, unsigned n_copies,
                            const dense2D<unsigned int>& conn) noexcept;
/// The same in 3-D, with a rotation vector R: its direction is the axis through C, its length the
/// angle.
KVX_ZELVO_API int copy_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                            const vector_fixed<double, 3>& T, const vector_fixed<double, 3>& C,
                            const vector_fixed<double, 3>& R, unsigned n_copies,
                            const dense2D<unsigned int>& conn) noexcept;

/// Copies the elements once and mirrors the copy about the line (in 3-D the plane) through P with
/// normal N, of any length. Node orders stay, so mirrored elements have the opposite orientation.
///
/// pos         gets 2 rows, in 3-D 3, where it has fewer
/// copy_conn   replaced
///
/// Returns 0 (an empty pos changes nothing), or, in the order checked and with nothing changed: -4
/// N is zero, or N N is NaN; -2 an entry that is neither a column of pos nor no_node; -199 out of
/// memory, or of 32-bit node indices.
KVX_ZELVO_API int copy_sym_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                                const vector_fixed<double, 2>& P, const vector_fixed<double, 2>& N,
                                const dense2D<unsigned int>& conn) noexcept;
KVX_ZELVO_API int copy_sym_mesh(dense2D<double>& pos, dense2D<unsigned int>& copy_conn,
                                const vector_fixed<double, 3>& P, const vector_fixed<double, 3>& N,
                                const dense2D<unsigned int>& conn) noexcept;

} // namespace kvx::zelvo
