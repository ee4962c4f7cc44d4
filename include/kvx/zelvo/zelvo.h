#pragma once

/// Everything a caller of kvx::zelvo needs.

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
