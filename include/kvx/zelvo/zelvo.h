#pragma once

/// Everything a caller of kvx::zelvo needs.
///
/// Numbers of 32 bits. Rows and columns are counted in 64 bits, nodes and elements numbered in 32,
/// from 0 to 4294967294, as 4294967295 is no_node. A call that would have to number or to count
/// more than that in a result is answered with -199, as one that finds no memory, before anything
/// is walked or taken where the sizes of its arguments tell it. Nodes that no call has to number
/// may lie beyond, where no index reaches them. A returned count stops at 2147483647. Positions
/// and sizes of files have 64 bits.

#include <kvx/dense_array.h>
#include <kvx/element_type.h>
#include <kvx/fixed_size.h>
#include <kvx/lapack.h>
#include <kvx/misc/histogram.h>
#include <kvx/ref_counted.h>
#include <kvx/zelvo/boundaries.h>
#include <kvx/zelvo/bounding_box.h>
#include <kvx/zelvo/clipping.h>
#include <kvx/zelvo/degenerate_elements.h>
#include <kvx/zelvo/edge_lengths.h>
#include <kvx/zelvo/edge_qualities.h>
#include <kvx/zelvo/edges.h>
#include <kvx/zelvo/element_sorting.h>
#include <kvx/zelvo/ensight.h>
#include <kvx/zelvo/femap.h>
#include <kvx/zelvo/id_matching.h>
#include <kvx/zelvo/medit.h>
#include <kvx/zelvo/mesh_copies.h>
#include <kvx/zelvo/metric_combination.h>
#include <kvx/zelvo/metric_conversion.h>
#include <kvx/zelvo/metric_validity.h>
#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/neighbors.h>
#include <kvx/zelvo/node_detector.h>
#include <kvx/zelvo/node_graph.h>
#include <kvx/zelvo/node_indices.h>
#include <kvx/zelvo/node_merging.h>
#include <kvx/zelvo/shape_qualities.h>
#include <kvx/zelvo/simplification.h>
#include <kvx/zelvo/size_gradation.h>
#include <kvx/zelvo/stl.h>
#include <kvx/zelvo/subdomains.h>
#include <kvx/zelvo/transforms.h>
#include <kvx/zelvo/vtk.h>
#include <kvx/zelvo/wavefront_obj.h>
