// STL files: read and welded, and written.
#include "contest.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <stdexcept>

#include <kvx/zelvo/stl.h>

#include "../generated_meshes.h"
#include "file_blocks.h"

#if PEER_ADMESH
#include <admesh/stl.h>
#endif
#if PEER_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif
#if PEER_MESHOPTIMIZER
#include <meshoptimizer.h>
#endif
#if PEER_VTK
#include <vtkSTLReader.h>
#include <vtkSTLWriter.h>
#include <vtkStaticCleanPolyData.h>

#include "vtk_meshes.h"
#endif

namespace kvx::zelvo::bench {

namespace {

constexpr std::size_t facet_bytes = 50;
constexpr std::size_t header_bytes = 84;

// Reading ------------------------------------------------------------------------------------

std::vector<double> sizes(const mesh& m) {
    return {double(m.conn.cols()), double(m.pos.cols())};
}

contestant our_read(const std::string& name, bool ascii) {
    return entrant(
        "kvx zelvo",
        [=] {
            mesh m;
            if (STL_input(name.c_str(), m.pos, m.conn, ascii) < 0)
                throw std::runtime_error("STL_input failed");
            return m;
        },
        sizes);
}

/// Gathers vertices; equal ones (bit by bit but for the sign of 0) get one node.
class exact_weld {
public:
    /// `facets` is how many there are, or nearly; a closed surface has half as many nodes.
    explicit exact_weld(std::size_t facets) {
        nodes_.reserve(3 * facets / 2 + 1000);
        corners_.reserve(3 * facets);
        table_.assign(std::bit_ceil(facets + 1), no_node);
    }
    void add(std::array<float, 3> p) {
        if (3 * (nodes_.size() / 3 + 1) > 2 * table_.size()) grow();
        for (float& x : p)
            x += 0.0F; // -0 becomes 0
        const std::uint64_t h = hash(p);
        unsigned int& lately = recent_[h % recent_.size()];
        if (lately != no_node && same(lately, p)) {
            corners_.push_back(lately);
            return;
        }
        std::size_t slot = h & (table_.size() - 1);
        while (table_[slot] != no_node && !same(table_[slot], p))
            slot = (slot + 1) & (table_.size() - 1);
        if (table_[slot] == no_node) {
            table_[slot] = index(nodes_.size() / 3);
            nodes_.insert(nodes_.end(), p.begin(), p.end());
        }
        lately = table_[slot];
        corners_.push_back(lately);
    }
    mesh result() const {
        mesh m;
        m.pos = dense2D<double>(3, nodes_.size() / 3);
        m.conn = dense2D<unsigned int>(3, corners_.size() / 3);
        std::copy(nodes_.begin(), nodes_.end(), m.pos.data());
        std::copy(corners_.begin(), corners_.end(), m.conn.data());
        return m;
    }

private:
    bool same(unsigned int node, const std::array<float, 3>& p) const {
        // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-*): bit by bit on purpose
        return std::memcmp(&nodes_[3 * std::size_t(node)], p.data(), sizeof p) == 0;
    }
    static std::uint64_t hash(const std::array<float, 3>& p) {
        std::array<std::uint32_t, 3> bits{};
        std::memcpy(bits.data(), p.data(), sizeof p);
        const std::uint64_t h = (bits[0] | std::uint64_t(bits[1]) << 32) * 0x9E3779B97F4A7C15u ^
                                bits[2] * 0xC2B2AE3D27D4EB4Fu;
        return (h ^ h >> 32) * 0x9E3779B97F4A7C15u >> 24;
    }
    void grow() {
        table_.assign(2 * table_.size(), no_node);
        std::array<float, 3> p{};
        for (std::size_t j = 0; j < nodes_.size() / 3; ++j) {
            std::copy_n(&nodes_[3 * j], 3, p.begin());
            std::size_t slot = hash(p) & (table_.size() - 1);
            while (table_[slot] != no_node)
                slot = (slot + 1) & (table_.size() - 1);
            table_[slot] = index(j);
        }
    }

    std::vector<float> nodes_;
    std::vector<unsigned int> corners_;
    std::vector<unsigned int> table_;
    // Facets mostly share corners with facets shortly before them: these stay in the first cache.
    std::vector<unsigned int> recent_ = std::vector<unsigned int>(1 << 14, no_node);
};

mesh read_binary(const std::string& name) {
    block_reader in(name);
    in.have(header_bytes);
    exact_weld nodes(std::filesystem::file_size(name) / facet_bytes);
    in.skip_to(in.at() + header_bytes);
    while (in.have(facet_bytes)) {
        const char* p = in.at();
        for (unsigned corner = 0; corner < 3; ++corner) {
            std::array<float, 3> x{};
            std::memcpy(x.data(), p + 12 * (corner + 1), sizeof x);
            nodes.add(x);
        }
        in.skip_to(p + facet_bytes);
    }
    return nodes.result();
}

mesh read_ascii(const std::string& name) {
    block_reader in(name);
    exact_weld nodes(std::filesystem::file_size(name) / 250); // bytes of a facet, about
    while (in.have(1)) {
        in.have(256);
        const char* p = in.at();
        const auto* const line_end =
            static_cast<const char*>(std::memchr(p, '\n', std::size_t(in.end() - p)));
        while (*p == ' ')
            ++p;
        if (std::memcmp(p, "vertex ", 7) == 0) {
            std::array<float, 3> x{};
            p += 6;
            for (float& value : x) {
                while (*p == ' ')
                    ++p;
                p = std::from_chars(p, in.end(), value).ptr;
            }
            nodes.add(x);
        }
        in.skip_to(line_end ? line_end + 1 : in.end());
    }
    return nodes.result();
}

#if PEER_ADMESH
/// stl_file with its memory.
struct admesh_file {
    stl_file data{};
    admesh_file() { stl_initialize(&data); }
    admesh_file(const admesh_file&) = delete;
    admesh_file& operator=(const admesh_file&) = delete;
    ~admesh_file() { stl_close(&data); }
};

std::unique_ptr<admesh_file> opened(const std::string& name) {
    auto file = std::make_unique<admesh_file>();
    std::string writable = name;
    stl_open(&file->data, writable.data());
    if (stl_get_error(&file->data)) throw std::runtime_error("admesh cannot read " + name);
    return file;
}

contestant admesh_read(const std::string& name) {
    return entrant(
               "admesh",
               [=] {
                   auto file = opened(name);
                   stl_check_facets_exact(&file->data);
                   stl_generate_shared_vertices(&file->data);
                   return file;
               },
               [](const std::unique_ptr<admesh_file>& file) -> std::vector<double> {
                   return {double(file->data.stats.number_of_facets),
                           double(file->data.stats.shared_vertices)};
               })
        .but("finds the neighbours too, which its shared vertices need; a vertex is shared along "
             "matched edges only");
}
#endif

#if PEER_ASSIMP
contestant assimp_read(const std::string& name) {
    return entrant(
        "assimp",
        [=] {
            auto importer = std::make_unique<Assimp::Importer>();
            importer->SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS,
                                         aiComponent_NORMALS | aiComponent_COLORS);
            if (!importer->ReadFile(name,
                                    aiProcess_RemoveComponent | aiProcess_JoinIdenticalVertices))
                throw std::runtime_error(importer->GetErrorString());
            return importer;
        },
        [](const std::unique_ptr<Assimp::Importer>& importer) -> std::vector<double> {
            const aiMesh& m = *importer->GetScene()->mMeshes[0];
            return {double(m.mNumFaces), double(m.mNumVertices)};
        });
}
#endif

#if PEER_MESHOPTIMIZER
struct indexed {
    std::vector<float> vertices;
    std::vector<unsigned int> corners;
};

contestant meshoptimizer_read(const std::string& name) {
    return entrant(
               "meshoptimizer",
               [=] {
                   block_reader in(name);
                   in.have(header_bytes);
                   std::uint32_t facets = 0;
                   std::memcpy(&facets, in.at() + 80, sizeof facets);
                   in.skip_to(in.at() + header_bytes);
                   std::vector<float> soup(9 * std::size_t(facets));
                   for (std::size_t j = 0; j < facets && in.have(facet_bytes); ++j) {
                       std::memcpy(&soup[9 * j], in.at() + 12, 36);
                       in.skip_to(in.at() + facet_bytes);
                   }
                   const std::size_t n = soup.size() / 3;
                   std::vector<unsigned int> remap(n);
                   const std::size_t nodes =
                       meshopt_generateVertexRemap(remap.data(), nullptr, n, soup.data(), n, 12);
                   indexed mesh;
                   mesh.vertices.resize(3 * nodes);
                   mesh.corners.resize(n);
                   meshopt_remapVertexBuffer(mesh.vertices.data(), soup.data(), n, 12,
                                             remap.data());
                   meshopt_remapIndexBuffer(mesh.corners.data(), nullptr, n, remap.data());
                   return mesh;
               },
               [](const indexed& mesh) -> std::vector<double> {
                   return {double(mesh.corners.size()) / 3, double(mesh.vertices.size()) / 3};
               })
        .but("after a hand-written read; compares bytes, so 0 and -0 differ; coordinates stay "
             "floats");
}
#endif

#if PEER_VTK
std::vector<double> sizes_of_surface(const vtkSmartPointer<vtkPolyData>& surface) {
    return {double(surface->GetNumberOfPolys()), double(surface->GetNumberOfPoints())};
}

contestant vtk_read(const std::string& name) {
    return entrant(
        "VTK reader",
        [=] {
            const auto reader = vtkSmartPointer<vtkSTLReader>::New();
            reader->SetFileName(name.c_str());
            reader->MergingOn();
            reader->Update();
            return vtkSmartPointer<vtkPolyData>(reader->GetOutput());
        },
        sizes_of_surface);
}

contestant vtk_read_and_clean(const std::string& name) {
    return entrant(
        "VTK static cleaner",
        [=] {
            const auto reader = vtkSmartPointer<vtkSTLReader>::New();
            reader->SetFileName(name.c_str());
            reader->MergingOff();
            const auto cleaner = vtkSmartPointer<vtkStaticCleanPolyData>::New();
            cleaner->SetInputConnection(reader->GetOutputPort());
            cleaner->ToleranceIsAbsoluteOn();
            cleaner->SetAbsoluteTolerance(0.0);
            cleaner->Update();
            return vtkSmartPointer<vtkPolyData>(cleaner->GetOutput());
        },
        sizes_of_surface);
}
#endif

void hold_read(contest& c, const mesh& m, const std::string& order, bool ascii) {
    contest_row row;
    row.job = ascii ? "STL ASCII, read and weld" : "STL binary, read and weld";
    row.input = order;
    if (!c.wants(row.job, row.input)) return;
    row.item = "facet";
    row.items = m.conn.cols();
    row.answers = {"triangles", "nodes"};
    const std::string name = c.file(ascii ? "read_ascii.stl" : "read_binary.stl");
    if (STL_output(name.c_str(), m.pos, m.conn, ascii) != 0)
        throw std::runtime_error("cannot write " + name);
    row.ours = our_read(name, ascii).but("welds within 0.05 times the smallest height of a facet");
#if PEER_MESHOPTIMIZER
    if (!ascii) row.peers.push_back(meshoptimizer_read(name));
#else
    if (!ascii) row.absent.emplace_back("meshoptimizer not installed");
#endif
#if PEER_ADMESH
    row.peers.push_back(admesh_read(name));
#else
    row.absent.emplace_back("admesh not installed");
#endif
#if PEER_ASSIMP
    row.peers.push_back(assimp_read(name));
#else
    row.absent.emplace_back("assimp not installed");
#endif
#if PEER_VTK
    row.peers.push_back(vtk_read(name));
    row.peers.push_back(vtk_read_and_clean(name));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = entrant(
        "blocks, open-addressing hash",
        [=] { return ascii ? read_ascii(name) : read_binary(name); }, sizes);
    c.hold(std::move(row));
    std::filesystem::remove(name);
}

// Writing ------------------------------------------------------------------------------------

/// Unit normal of a facet.
std::array<double, 3> normal(const mesh& m, std::uint64_t j) {
    std::array<double, 3> u{}, v{};
    for (unsigned k = 0; k < 3; ++k) {
        u[k] = m.pos(k, m.conn(1, j)) - m.pos(k, m.conn(0, j));
        v[k] = m.pos(k, m.conn(2, j)) - m.pos(k, m.conn(0, j));
    }
    std::array<double, 3> n = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                               u[0] * v[1] - u[1] * v[0]};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (double& x : n)
        x = length > 0 ? x / length : 0.0;
    return n;
}

void write_binary(const std::string& name, const mesh& m) {
    block_writer out(name);
    char* p = out.room(header_bytes);
    std::memset(p, 0, header_bytes);
    const auto facets = static_cast<std::uint32_t>(m.conn.cols());
    std::memcpy(p + 80, &facets, sizeof facets);
    out.wrote(p + header_bytes);
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        std::array<float, 12> numbers{};
        const std::array<double, 3> n = normal(m, j);
        for (unsigned k = 0; k < 3; ++k) {
            numbers[k] = float(n[k]);
            for (unsigned corner = 0; corner < 3; ++corner)
                numbers[3 * (corner + 1) + k] = float(m.pos(k, m.conn(corner, j)));
        }
        p = put(out.room(facet_bytes), reinterpret_cast<const char*>(numbers.data()), 48);
        *p++ = 0;
        *p++ = 0;
        out.wrote(p);
    }
}

/// Three numbers with six digits behind the point, each behind a blank: at most 48 bytes.
char* put_numbers(char* p, const double* x) {
    for (unsigned k = 0; k < 3; ++k) {
        *p++ = ' ';
        p = std::to_chars(p, p + 24, x[k], std::chars_format::scientific, 6).ptr;
    }
    return p;
}

void write_ascii(const std::string& name, const mesh& m) {
    struct text {
        std::array<char, 63> bytes;
        std::uint8_t size;
    };
    std::vector<text> nodes(m.pos.cols()); // a node is the corner of several facets
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j) {
        char* const p = nodes[j].bytes.data();
        nodes[j].size = static_cast<std::uint8_t>(put_numbers(p, &m.pos(0, j)) - p);
    }
    block_writer out(name);
    out.wrote(put(out.room(32), "solid KVX\n"));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        char* p = put(out.room(512), "  facet normal");
        p = put(put_numbers(p, normal(m, j).data()), "\n    outer loop\n");
        for (unsigned corner = 0; corner < 3; ++corner) {
            const text& node = nodes[m.conn(corner, j)];
            p = put(p, "      vertex");
            p = put(p, node.bytes.data(), node.size);
            *p++ = '\n';
        }
        out.wrote(put(p, "    endloop\n  endfacet\n"));
    }
    out.wrote(put(out.room(32), "endsolid KVX\n"));
}

/// What a writer left behind, read back by this library.
std::vector<double> facets_in(const std::string& name, bool ascii) {
    mesh m;
    return {double(STL_input(name.c_str(), m.pos, m.conn, ascii))};
}

template <class Write>
contestant writer(std::string who, const std::string& name, bool ascii, Write write) {
    return entrant(
               std::move(who),
               [=] {
                   write(name.c_str());
                   return 0;
               },
               [=](int) { return facets_in(name, ascii); })
        .before([=] { std::filesystem::remove(name); });
}

void hold_write(contest& c, const mesh& m, bool ascii) {
    contest_row row;
    row.job = ascii ? "STL ASCII, write" : "STL binary, write";
    row.input = "in order";
    if (!c.wants(row.job, row.input)) return;
    row.item = "facet";
    row.items = m.conn.cols();
    row.wanted = ascii ? goal::level : goal::ahead;
    row.answers = {"facets read back"};
    const std::string name = c.file("written.stl");
    row.ours = writer("kvx zelvo", name, ascii, [=](const char* file) {
        if (STL_output(file, m.pos, m.conn, ascii) != 0) throw std::runtime_error("STL_output");
    });
#if PEER_ADMESH
    const std::string source = c.file("source.stl");
    STL_output(source.c_str(), m.pos, m.conn, false);
    const std::shared_ptr<admesh_file> loaded = opened(source);
    row.peers.push_back(writer("admesh", name, ascii, [=](const char* file) {
                            if (ascii)
                                stl_write_ascii(&loaded->data, file, "KVX");
                            else
                                stl_write_binary(&loaded->data, file, "KVX");
                        }).but("writes float vertices and normals that it holds facet by facet"));
#else
    row.absent.emplace_back("admesh not installed");
#endif
#if PEER_VTK
    const auto surface = vtk_surface(m);
    row.peers.push_back(writer("VTK", name, ascii, [=](const char* file) {
        const auto out = vtkSmartPointer<vtkSTLWriter>::New();
        out->SetFileName(file);
        out->SetInputData(surface);
        if (ascii)
            out->SetFileTypeToASCII();
        else
            out->SetFileTypeToBinary();
        out->Write();
    }));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.absent.emplace_back("libigl has no package");
    row.floor = writer(ascii ? "std::to_chars, a node's text made once" : "blocks", name, ascii,
                       [=](const char* file) {
                           if (ascii)
                               write_ascii(file, m);
                           else
                               write_binary(file, m);
                       });
    c.hold(std::move(row));
    std::filesystem::remove(name);
}

} // namespace

void hold_stl_rows(contest& c) {
    const mesh m = bumpy_sphere(c.size(2'000'000));
    hold_read(c, m, "in order", false);
    hold_read(c, shuffled_elements(m), "shuffled", false);
    hold_read(c, m, "in order", true);
    hold_write(c, m, true);
    hold_write(c, m, false);
}

} // namespace kvx::zelvo::bench
