#include "report.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <vector>

#include <sys/stat.h>

#include <kvx/zelvo/boundaries.h>
#include <kvx/zelvo/shape_qualities.h>
#include <kvx/zelvo/stl.h>
#include <kvx/zelvo/subdomains.h>

namespace {

using namespace kvx;

/// Flatter elements have no area to the precision of the 32-bit numbers in STL files.
constexpr double least_quality = 1e-6;

/// Results of library calls that can fail only when memory runs out.
void need(int result) {
    if (result < 0) throw std::bad_alloc();
}

/// Why the file cannot be read; empty when it can.
std::string obstacle(const std::string& file) {
    struct stat found = {};
    if (stat(file.c_str(), &found) != 0) return std::strerror(errno);
    if (S_ISDIR(found.st_mode)) return std::strerror(EISDIR);
    if (!S_ISREG(found.st_mode)) return "Not a regular file";
    std::FILE* const stream = std::fopen(file.c_str(), "rb");
    if (!stream) return std::strerror(errno);
    errno = 0;
    const bool failed = std::getc(stream) == EOF && std::ferror(stream);
    std::string reason = failed ? std::strerror(errno) : "";
    std::fclose(stream);
    return reason;
}

zelvo::STL_format format_of(const std::string& file) {
    const std::string reason = obstacle(file);
    if (!reason.empty()) throw unreadable_file(reason);
    const zelvo::STL_format format = zelvo::STL_detect(file.c_str());
    if (format == zelvo::STL_format::unreadable) throw unreadable_file("cannot be read");
    if (format == zelvo::STL_format::unknown) throw unreadable_file("not an STL file");
    return format;
}

void read(double tolerance, surface& mesh, surface_report& report) {
    const zelvo::STL_format format = format_of(report.file);
    report.ascii = format == zelvo::STL_format::ascii;
    zelvo::STL_report account;
    const int result = zelvo::STL_input(report.file.c_str(), mesh.pos, mesh.triangles, report.ascii,
                                        tolerance, account);
    if (result == -1) throw unreadable_file("cannot be read");
    need(result);
    if (account.facets == 0) throw unreadable_file("no facet could be read");
    report.facets = account.facets;
    report.announced_facets = account.announced_facets;
    report.unread_bytes = account.unread_bytes;
    report.tolerance = account.tolerance;
    report.merged_nodes = account.merged_nodes;
    report.removed_elements = account.removed_elements;
    report.nodes = mesh.pos.cols();
    report.elements = mesh.triangles.cols();
}

/// Spread of finite numbers; the others are left out.
class spread_of {
public:
    void add(double value) {
        if (!std::isfinite(value)) return;
        min_ = std::min(min_, value);
        max_ = std::max(max_, value);
        sum_ += value;
        ++count_;
    }
    spread result() const {
        if (count_ == 0) return {};
        return {min_, sum_ / static_cast<double>(count_), max_};
    }

private:
    double min_ = std::numeric_limits<double>::infinity();
    double max_ = -std::numeric_limits<double>::infinity();
    double sum_ = 0.0;
    std::uint64_t count_ = 0;
};

void measure_nodes(const surface& mesh, surface_report& report) {
    std::array<spread_of, 3> box;
    for (std::uint64_t j = 0; j < mesh.pos.cols(); ++j) {
        const double* const x = &mesh.pos(0, j);
        for (unsigned i = 0; i < 3; ++i)
            box[i].add(x[i]);
        if (!std::all_of(x, x + 3, [](double c) { return std::isfinite(c); }))
            ++report.non_finite_nodes;
    }
    for (unsigned i = 0; i < 3; ++i)
        report.box[i] = box[i].result();
}

double distance(const double* a, const double* b) {
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// The sides of all elements as (smaller node, larger node) in one number, equal ones together.
std::vector<std::uint64_t> sorted_sides(const dense2D<unsigned int>& triangles) {
    dense2D<unsigned int> sides;
    need(zelvo::get_element_boundaries(triangles, ET_TRIA3, sides));
    std::vector<std::uint64_t> keys(sides.cols());
    for (std::uint64_t j = 0; j < keys.size(); ++j) {
        const auto [low, high] = std::minmax(sides(0, j), sides(1, j));
        keys[j] = std::uint64_t{low} << 32 | high;
    }
    std::sort(keys.begin(), keys.end());
    return keys;
}

void measure_edges(const surface& mesh, surface_report& report) {
    const std::vector<std::uint64_t> sides = sorted_sides(mesh.triangles);
    spread_of lengths;
    for (auto side = sides.begin(); side != sides.end();) {
        const auto next = std::find_if(side, sides.end(), [&](auto key) { return key != *side; });
        const auto elements = next - side;
        if (elements == 1) ++report.free_edges;
        if (elements > 2) ++report.non_manifold_edges;
        lengths.add(distance(&mesh.pos(0, *side >> 32), &mesh.pos(0, *side & 0xFFFFFFFFu)));
        side = next;
    }
    report.edge_length = lengths.result();
}

void count_subdomains(const surface& mesh, surface_report& report) {
    dense1D<unsigned int> elements, offsets;
    need(zelvo::get_subdomains(mesh.triangles, elements, offsets));
    report.subdomains = offsets.size() - 1;
}

void measure_shapes(const surface& mesh, surface_report& report) {
    dense1D<double> qualities;
    need(zelvo::shape_qualities(mesh.pos, mesh.triangles, ET_TRIA3, qualities));
    report.degenerate_elements = static_cast<std::uint64_t>(std::count_if(
        qualities.begin(), qualities.end(), [](double q) { return q < least_quality; }));
    report.shape_quality.process(qualities);
}

} // namespace

surface_report report_on(const std::string& file, double tolerance, surface& mesh) {
    surface_report report;
    report.file = file;
    read(tolerance, mesh, report);
    measure_nodes(mesh, report);
    measure_edges(mesh, report);
    count_subdomains(mesh, report);
    measure_shapes(mesh, report);
    return report;
}
