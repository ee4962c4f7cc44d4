// Shape qualities, and metrics of three dimensions.
#include "contest.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include <kvx/zelvo/metric_combination.h>
#include <kvx/zelvo/metric_validity.h>
#include <kvx/zelvo/shape_qualities.h>

#include "../generated_meshes.h"

#if PEER_EIGEN
#include <eigen3/Eigen/Cholesky>
#include <eigen3/Eigen/Eigenvalues>
#endif
#if PEER_VTK
#include <vtkCellData.h>
#include <vtkMeshQuality.h>

#include "vtk_meshes.h"

// Debian has the kernels of Verdict in VTK's library, but not the header that declares them.
extern "C" {
double vtkverdict__v_tri_shape(int nodes, double pos[][3]);
double vtkverdict__v_tet_shape(int nodes, double pos[][3]);
double vtkverdict__v_hex_shape(int nodes, double pos[][3]);
}
#endif
extern "C" void dspev_(const char* job, const char* uplo, const int* order, double* packed,
                       double* values, double* vectors, const int* ld, double* work, int* info);

namespace kvx::zelvo::bench {

namespace {

using point = std::array<double, 3>;

// Shape qualities ----------------------------------------------------------------------------

point minus(const double* a, const double* b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
point cross(const point& a, const point& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double dot(const point& a, const point& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double norm(const point& a) {
    return std::sqrt(dot(a, a));
}

/// Twice the area over perimeter and longest edge, scaled.
double plain_triangle(const double* const (&p)[3]) {
    const point a = minus(p[1], p[0]);
    const point b = minus(p[2], p[0]);
    const double edges[] = {norm(a), norm(b), norm(minus(p[2], p[1]))};
    return 2 * std::sqrt(3.0) * norm(cross(a, b)) /
           ((edges[0] + edges[1] + edges[2]) * std::max({edges[0], edges[1], edges[2]}));
}

/// Six volumes over surface and longest edge, scaled.
double plain_tetrahedron(const double* const (&p)[4]) {
    const point a = minus(p[0], p[3]);
    const point b = minus(p[1], p[3]);
    const point c = minus(p[2], p[3]);
    const point d = minus(p[1], p[0]);
    const point e = minus(p[2], p[0]);
    const point f = minus(p[2], p[1]);
    const point bc = cross(b, c);
    const double longest =
        std::sqrt(std::max({dot(a, a), dot(b, b), dot(c, c), dot(d, d), dot(e, e), dot(f, f)}));
    const double twice_the_surface =
        norm(bc) + norm(cross(a, b)) + norm(cross(c, a)) + norm(cross(d, e));
    return 2 * std::sqrt(6.0) * dot(a, bc) / (longest * twice_the_surface);
}

/// The worst corner: the volume that its edges span over the surface, over the longest edge of all.
double plain_hexahedron(const double* const (&p)[8]) {
    constexpr unsigned around[8][3] = {{1, 3, 4}, {2, 0, 5}, {3, 1, 6}, {0, 2, 7},
                                       {7, 5, 0}, {4, 6, 1}, {5, 7, 2}, {6, 4, 3}};
    double worst = 1e300;
    double longest = 0;
    for (unsigned corner = 0; corner < 8; ++corner) {
        const point a = minus(p[around[corner][0]], p[corner]);
        const point b = minus(p[around[corner][1]], p[corner]);
        const point c = minus(p[around[corner][2]], p[corner]);
        const point n = cross(b, c);
        worst =
            std::min(worst, dot(a, n) / (2 * (norm(n) + norm(cross(c, a)) + norm(cross(a, b)))));
        longest = std::max({longest, dot(a, a), dot(b, b), dot(c, c)});
    }
    return 6 * worst / std::sqrt(longest);
}

template <unsigned Nodes, class Rate>
dense1D<double> plain_qualities(const mesh& m, Rate&& rate) {
    dense1D<double> q(m.conn.cols());
    const double* const pos = m.pos.data();
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        const double* p[Nodes];
        for (unsigned k = 0; k < Nodes; ++k)
            p[k] = pos + 3 * std::size_t(m.conn(k, j));
        q[j] = rate(p);
    }
    return q;
}

#if PEER_VTK
template <unsigned Nodes>
contestant verdict(const mesh& m, double (*kernel)(int, double (*)[3])) {
    return entrant(
               "Verdict kernel",
               [=] {
                   dense1D<double> q(m.conn.cols());
                   for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
                       double p[Nodes][3];
                       for (unsigned k = 0; k < Nodes; ++k)
                           std::copy_n(&m.pos(0, m.conn(k, j)), 3, p[k]);
                       q[j] = kernel(Nodes, p);
                   }
                   return q;
               },
               [](const dense1D<double>& q) { return std::vector<double>{double(q.size())}; })
        .but("another measure (shape); called element by element");
}

contestant vtk_quality(const mesh& m) {
    const auto grid = vtk_grid(m);
    return entrant(
               "VTK filter",
               [=] {
                   const auto filter = vtkSmartPointer<vtkMeshQuality>::New();
                   filter->SetInputData(grid);
                   filter->SetTriangleQualityMeasureToShape();
                   filter->SetTetQualityMeasureToShape();
                   filter->SetHexQualityMeasureToShape();
                   filter->Update();
                   return vtkSmartPointer<vtkDataSet>(filter->GetOutput());
               },
               [](const vtkSmartPointer<vtkDataSet>& out) -> std::vector<double> {
                   return {double(out->GetCellData()->GetArray("Quality")->GetNumberOfTuples())};
               })
        .but("another measure (shape); statistics too");
}
#endif

template <unsigned Nodes, class Rate, class Kernel>
void hold_quality(contest& c, const mesh& m, const std::string& elements, Rate rate,
                  [[maybe_unused]] Kernel kernel) {
    contest_row row;
    row.job = "shape quality";
    row.input = elements;
    if (!c.wants(row.job, row.input)) return;
    row.item = "element";
    row.items = m.conn.cols();
    row.answers = {"values", "mean"};
    const auto answer = [](const dense1D<double>& q) -> std::vector<double> {
        double sum = 0;
        for (const double value : q)
            sum += value;
        return {double(q.size()), std::round(1e6 * sum / double(q.size()))};
    };
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            dense1D<double> q;
            if (shape_qualities(m.pos, m.conn, m.kind, q) < 0) throw std::runtime_error("refused");
            return q;
        },
        answer);
#if PEER_VTK
    row.peers.push_back(verdict<Nodes>(m, kernel));
    row.peers.push_back(vtk_quality(m));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.floor = entrant(
        "the bare formula", [=] { return plain_qualities<Nodes>(m, rate); }, answer);
    if (Nodes == 8)
        row.floor->remark =
            "corners only, without the pyramids of the sides that show a wrung cell";
    c.hold(std::move(row));
}

// Metrics ------------------------------------------------------------------------------------

/// Metrics in general position, stretched up to a thousandfold.
dense2D<double> random_metrics(std::uint64_t n) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    dense2D<double> metrics(6, n);
    for (std::uint64_t k = 0; k < n; ++k) {
        for (unsigned square = 0; square < 3; ++square) {
            point v{};
            for (double& x : v)
                x = normal(random) * (square == 0 ? 1.0 : 0.03);
            for (unsigned j = 0, entry = 0; j < 3; ++j) {
                for (unsigned i = 0; i <= j; ++i)
                    metrics(entry++, k) += v[i] * v[j];
            }
        }
    }
    return metrics;
}

bool positive_minors(const double* m) {
    return m[0] > 0 && m[0] * m[2] - m[1] * m[1] > 0 &&
           m[0] * (m[2] * m[5] - m[4] * m[4]) - m[1] * (m[1] * m[5] - m[4] * m[3]) +
                   m[3] * (m[1] * m[4] - m[2] * m[3]) >
               0;
}

/// Counts the columns that a test passes.
template <class Test>
contestant counter(std::string name, const dense2D<double>& metrics, Test test) {
    return entrant(
        std::move(name),
        [=] {
            double passed = 0;
            for (std::uint64_t j = 0; j < metrics.cols(); ++j)
                passed += test(&metrics(0, j));
            return passed;
        },
        [](double passed) { return std::vector<double>{passed}; });
}

/// Adds up what a solver makes of each column: the largest value, and the squares of the middle
/// vector's first entry, so that neither is idle.
template <class Solve>
contestant solver(std::string name, const dense2D<double>& metrics, Solve solve) {
    return entrant(
        std::move(name),
        [=] {
            std::array<double, 2> sums{};
            for (std::uint64_t j = 0; j < metrics.cols(); ++j) {
                const std::array<double, 2> pair = solve(&metrics(0, j));
                sums[0] += pair[0];
                sums[1] += pair[1] * pair[1];
            }
            return sums;
        },
        [](const std::array<double, 2>& sums) {
            return std::vector<double>{std::round(1e3 * sums[0]), std::round(1e-3 * sums[1])};
        });
}

bool dspev_positive(const double* m) {
    double packed[6], values[3], work[9];
    const int order = 3, ld = 1;
    int info = 0;
    double none = 0;
    std::copy_n(m, 6, packed);
    dspev_("N", "U", &order, packed, values, &none, &ld, work, &info);
    return info == 0 && values[0] > 0;
}

std::array<double, 2> dspev_pairs(const double* m) {
    double packed[6], values[3], vectors[9], work[9];
    const int order = 3;
    int info = 0;
    std::copy_n(m, 6, packed);
    dspev_("V", "U", &order, packed, values, vectors, &order, work, &info);
    return {values[2], vectors[3]};
}

#if PEER_EIGEN
Eigen::Matrix3d eigen_matrix(const double* m) {
    Eigen::Matrix3d matrix;
    matrix << m[0], m[1], m[3], m[1], m[2], m[4], m[3], m[4], m[5];
    return matrix;
}
using eigen_solver = Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>;

std::array<double, 2> first_of_middle(const eigen_solver& s) {
    return {s.eigenvalues()[2], s.eigenvectors()(0, 1)};
}
#endif

void hold_definiteness(contest& c, const dense2D<double>& metrics) {
    contest_row row;
    row.job = "3 x 3 metrics, positive definite?";
    row.input = "in general position";
    if (!c.wants(row.job, row.input)) return;
    row.item = "metric";
    row.items = metrics.cols();
    row.answers = {"positive definite"};
    row.ours = entrant(
        "kvx zelvo", [=] { return are_valid_metrics(metrics) ? double(metrics.cols()) : 0.0; },
        [](double passed) { return std::vector<double>{passed}; });
#if PEER_EIGEN
    row.peers.push_back(counter("Eigen LLT", metrics, [](const double* m) {
                            return Eigen::LLT<Eigen::Matrix3d>(eigen_matrix(m)).info() ==
                                   Eigen::Success;
                        }).but("decides by pivots, without eigenvalues"));
    row.peers.push_back(counter("Eigen direct values", metrics,
                                [](const double* m) {
                                    eigen_solver s;
                                    s.computeDirect(eigen_matrix(m), Eigen::EigenvaluesOnly);
                                    return s.eigenvalues()[0] > 0;
                                })
                            .but("closed form, which its manual calls less accurate")
                            .out_of_contest());
#else
    row.absent.emplace_back("Eigen not installed");
#endif
    row.peers.push_back(counter("dspev values", metrics, dspev_positive));
    row.floor = counter("leading minors", metrics, positive_minors);
    c.hold(std::move(row));
}

void hold_pairs(contest& c, const dense2D<double>& metrics) {
    contest_row row;
    row.job = "3 x 3 metrics, eigen pairs";
    row.input = "in general position";
    if (!c.wants(row.job, row.input)) return;
    row.item = "metric";
    row.items = metrics.cols();
    row.answers = {"sum of largest values", "sum over middle vectors"};
    row.ours = solver("kvx zelvo", metrics, [](const double* m) -> std::array<double, 2> {
        const symmetric_fixed<double, 3> matrix(m[0], m[1], m[2], m[3], m[4], m[5]);
        vector_fixed<double, 3> values;
        matrix_fixed<double, 3, 3> vectors;
        eigen_pairs(matrix, values, vectors);
        return {values[2], vectors(0, 1)};
    });
#if PEER_EIGEN
    row.peers.push_back(solver("Eigen", metrics, [](const double* m) {
        eigen_solver s;
        s.compute(eigen_matrix(m));
        return first_of_middle(s);
    }));
    row.peers.push_back(solver("Eigen direct", metrics,
                               [](const double* m) {
                                   eigen_solver s;
                                   s.computeDirect(eigen_matrix(m));
                                   return first_of_middle(s);
                               })
                            .but("closed form, which its manual calls less accurate")
                            .out_of_contest());
#else
    row.absent.emplace_back("Eigen not installed");
#endif
    row.floor = solver("dspev itself", metrics, dspev_pairs);
    c.hold(std::move(row));
}

} // namespace

void hold_metric_rows(contest& c) {
    using kernel = double (*)(int, double(*)[3]);
    kernel triangle = nullptr, tetrahedron = nullptr, hexahedron = nullptr;
#if PEER_VTK
    triangle = vtkverdict__v_tri_shape;
    tetrahedron = vtkverdict__v_tet_shape;
    hexahedron = vtkverdict__v_hex_shape;
#endif
    hold_quality<3>(c, bumpy_sphere(c.size(2'000'000)), "triangles", plain_triangle, triangle);
    hold_quality<4>(c, tetrahedral_grid(c.size(2'000'000)), "tetrahedra", plain_tetrahedron,
                    tetrahedron);
    hold_quality<8>(c, hexahedral_grid(c.size(1'000'000)), "hexahedra", plain_hexahedron,
                    hexahedron);
    const dense2D<double> metrics = random_metrics(c.size(1'000'000));
    hold_definiteness(c, metrics);
    hold_pairs(c, metrics);
}

} // namespace kvx::zelvo::bench
