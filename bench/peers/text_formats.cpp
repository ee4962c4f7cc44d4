// Text formats: legacy VTK written, Wavefront OBJ and NASTRAN read.
#include "contest.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <stdexcept>

#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/vtk.h>
#include <kvx/zelvo/wavefront_obj.h>

#include "../generated_meshes.h"
#include "file_blocks.h"

#if PEER_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#endif
#if PEER_GMSH
#include <gmsh.h>
#endif
#if PEER_TINYOBJLOADER
#include <tiny_obj_loader.h>
#endif
#if PEER_VTK
#include <vtkPolyDataWriter.h>
#include <vtkUnstructuredGridWriter.h>

#include "vtk_meshes.h"
#endif

namespace kvx::zelvo::bench {

namespace {

std::uint64_t lines_of(const std::string& name) {
    block_reader in(name);
    std::uint64_t lines = 0;
    while (in.have(1)) {
        lines += static_cast<std::uint64_t>(std::count(in.at(), in.end(), '\n'));
        in.skip_to(in.end());
    }
    return lines;
}

char* put_number(char* p, unsigned int n) {
    return std::to_chars(p, p + 12, n).ptr;
}

// Legacy VTK ---------------------------------------------------------------------------------

void write_vtk(const std::string& name, const mesh& m) {
    block_writer out(name);
    char* p = put(out.room(200), "# vtk DataFile Version 2.0\nFloor\nASCII\n"
                                 "DATASET UNSTRUCTURED_GRID\n\nPOINTS ");
    p = put(put_number(p, index(m.pos.cols())), " double\n");
    out.wrote(p);
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j) {
        p = out.room(1100); // of numbers with six decimals, however large
        for (unsigned k = 0; k < 3; ++k) {
            p = std::to_chars(p, p + 350, m.pos(k, j), std::chars_format::fixed, 6).ptr;
            *p++ = k < 2 ? ' ' : '\n';
        }
        out.wrote(p);
    }
    p = put(put_number(put(out.room(100), "\nCELLS "), index(m.conn.cols())), " ");
    out.wrote(put(put_number(p, index(4 * m.conn.cols())), "\n"));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j) {
        p = put(out.room(100), "3 ");
        for (unsigned k = 0; k < 3; ++k) {
            p = put_number(p, m.conn(k, j));
            *p++ = ' ';
        }
        *p++ = '\n';
        out.wrote(p);
    }
    out.wrote(put(put_number(put(out.room(100), "\nCELL_TYPES "), index(m.conn.cols())), "\n"));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
        out.wrote(put(out.room(2), "5\n"));
}

void hold_vtk(contest& c) {
    contest_row row;
    row.job = "legacy VTK text, write";
    row.input = "triangles";
    if (!c.wants(row.job, row.input)) return;
    const mesh m = bumpy_sphere(c.size(2'000'000));
    const std::string name = c.file("written.vtk");
    vtk_output(name.c_str(), m.pos, m.conn, m.kind);
    row.item = "line";
    row.items = lines_of(name);
    row.wanted = goal::level; // the digits are fixed
    row.answers = {"lines"};
    const auto writer = [&](std::string who, auto write) {
        return entrant(
                   std::move(who),
                   [=] {
                       write(name);
                       return 0;
                   },
                   [=](int) { return std::vector<double>{double(lines_of(name))}; })
            .before([=] { std::filesystem::remove(name); });
    };
    row.ours = writer("kvx zelvo", [=](const std::string& file) {
        if (vtk_output(file.c_str(), m.pos, m.conn, m.kind) != 0)
            throw std::runtime_error("vtk_output");
    });
#if PEER_VTK
    const auto grid = vtk_grid(m);
    row.peers.push_back(writer("VTK grid", [=](const std::string& file) {
                            const auto out = vtkSmartPointer<vtkUnstructuredGridWriter>::New();
                            out->SetFileVersion(vtkDataWriter::VTK_LEGACY_READER_VERSION_4_2);
                            out->SetFileName(file.c_str());
                            out->SetInputData(grid);
                            out->Write();
                        }).but("three nodes on a line, in the digits that each needs"));
    const auto surface = vtk_surface(m);
    row.peers.push_back(
        writer("VTK surface", [=](const std::string& file) {
            const auto out = vtkSmartPointer<vtkPolyDataWriter>::New();
            out->SetFileVersion(vtkDataWriter::VTK_LEGACY_READER_VERSION_4_2);
            out->SetFileName(file.c_str());
            out->SetInputData(surface);
            out->Write();
        }).but("three nodes on a line, in the digits that each needs; no cell types"));
#else
    row.absent.emplace_back("VTK not installed");
#endif
    row.floor = writer("std::to_chars", [=](const std::string& file) { write_vtk(file, m); });
    c.hold(std::move(row));
    std::filesystem::remove(name);
}

// Wavefront OBJ ------------------------------------------------------------------------------

const char* number_at(const char* p, const char* end, double& value) {
    while (*p == ' ')
        ++p;
    return std::from_chars(p, end, value).ptr;
}

const char* number_at(const char* p, const char* end, unsigned int& value) {
    while (*p == ' ')
        ++p;
    return std::from_chars(p, end, value).ptr;
}

mesh as_mesh(const std::vector<double>& pos, const std::vector<unsigned int>& conn,
             std::uint64_t nodes, element_type kind) {
    mesh m;
    m.kind = kind;
    m.pos = dense2D<double>(3, pos.size() / 3);
    m.conn = dense2D<unsigned int>(nodes, conn.size() / nodes);
    std::copy(pos.begin(), pos.end(), m.pos.data());
    std::copy(conn.begin(), conn.end(), m.conn.data());
    return m;
}

mesh read_obj(const std::string& name) {
    block_reader in(name);
    std::vector<double> pos;
    std::vector<unsigned int> conn;
    while (in.have(1)) {
        in.have(256);
        const char* p = in.at();
        if (p[0] == 'v' && p[1] == ' ') {
            p += 2;
            for (unsigned k = 0; k < 3; ++k) {
                double x = 0;
                p = number_at(p, in.end(), x);
                pos.push_back(x);
            }
        } else if (p[0] == 'f') {
            p += 2;
            for (unsigned k = 0; k < 3; ++k) {
                unsigned int n = 0;
                p = number_at(p, in.end(), n);
                conn.push_back(n - 1);
            }
        }
        while (p != in.end() && *p != '\n')
            ++p;
        in.skip_to(p == in.end() ? p : p + 1);
    }
    return as_mesh(pos, conn, 3, ET_TRIA3);
}

double sum_of(const dense2D<double>& pos) {
    double sum = 0;
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        sum += pos(0, j) * pos(0, j) + pos(1, j) + pos(2, j);
    return sum;
}

void hold_obj(contest& c) {
    contest_row row;
    row.job = "OBJ, read";
    row.input = "triangles";
    if (!c.wants(row.job, row.input)) return;
    const mesh m = bumpy_sphere(c.size(2'000'000));
    const std::string name = c.file("read.obj");
    {
        block_writer out(name);
        for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
            out.wrote(out.room(256) + std::snprintf(out.room(256), 256, "v %.9g %.9g %.9g\n",
                                                    m.pos(0, j), m.pos(1, j), m.pos(2, j)));
        for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
            out.wrote(out.room(256) + std::snprintf(out.room(256), 256, "f %u %u %u\n",
                                                    m.conn(0, j) + 1, m.conn(1, j) + 1,
                                                    m.conn(2, j) + 1));
    }
    row.item = "line";
    row.items = m.pos.cols() + m.conn.cols();
    row.answers = {"nodes", "triangles", "sum of coordinates"};
    const auto answer = [](const mesh& read) -> std::vector<double> {
        return {double(read.pos.cols()), double(read.conn.cols()), sum_of(read.pos)};
    };
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            mesh read;
            dense2D<double> normals, texcoords;
            dense2D<unsigned int> quads;
            if (WavefrontOBJ_input(name.c_str(), read.pos, normals, texcoords, read.conn, quads) <
                0)
                throw std::runtime_error("WavefrontOBJ_input");
            return read;
        },
        answer);
#if PEER_ASSIMP
    row.peers.push_back(
        entrant(
            "assimp",
            [=] {
                auto importer = std::make_unique<Assimp::Importer>();
                if (!importer->ReadFile(name, 0))
                    throw std::runtime_error(importer->GetErrorString());
                return importer;
            },
            [](const std::unique_ptr<Assimp::Importer>& importer) {
                return std::vector<double>{-1, double(importer->GetScene()->mMeshes[0]->mNumFaces)};
            })
            .but("nodes of its own for each face, as floats"));
#else
    row.absent.emplace_back("assimp not installed");
#endif
#if PEER_TINYOBJLOADER
    row.peers.push_back(entrant(
                            "tinyobjloader",
                            [=] {
                                tinyobj::ObjReaderConfig config;
                                config.triangulate = false;
                                config.vertex_color = false;
                                auto reader = std::make_unique<tinyobj::ObjReader>();
                                if (!reader->ParseFromFile(name, config))
                                    throw std::runtime_error(reader->Error());
                                return reader;
                            },
                            [](const std::unique_ptr<tinyobj::ObjReader>& reader) {
                                return std::vector<double>{
                                    double(reader->GetAttrib().vertices.size()) / 3,
                                    double(reader->GetShapes()[0].mesh.num_face_vertices.size())};
                            })
                            .but("numbers of texture coordinates and normals too; as Debian built "
                                 "it, coordinates are floats"));
#else
    row.absent.emplace_back("tinyobjloader not installed");
#endif
    row.absent.emplace_back("rapidobj has no package");
    row.floor = entrant(
        "blocks, std::from_chars", [=] { return read_obj(name); }, answer);
    c.hold(std::move(row));
    std::filesystem::remove(name);
}

// NASTRAN ------------------------------------------------------------------------------------

/// Whole numbers and decimals in fields of eight characters.
unsigned int field_index(const char* field) {
    unsigned int n = 0;
    for (unsigned i = 0; i < 8; ++i)
        n = field[i] == ' ' ? n : 10 * n + unsigned(field[i] - '0');
    return n;
}

double field_number(const char* field) {
    const char* const end = field + 8;
    while (field != end && *field == ' ')
        ++field;
    double x = 0;
    std::from_chars(field, end, x);
    return x;
}

/// Cards with eight characters in each field, numbered from 1 without gaps.
mesh read_deck(const std::string& name) {
    block_reader in(name);
    std::vector<double> pos(3); // node 0, which is not in the file
    std::vector<unsigned int> conn;
    while (in.have(1)) {
        in.have(256);
        const char* const p = in.at();
        if (std::memcmp(p, "GRID    ", 8) == 0) {
            for (unsigned k = 0; k < 3; ++k)
                pos.push_back(field_number(p + 24 + 8 * k));
        } else if (std::memcmp(p, "CTETRA  ", 8) == 0) {
            for (unsigned k = 0; k < 4; ++k)
                conn.push_back(field_index(p + 24 + 8 * k));
        }
        const auto* const line_end =
            static_cast<const char*>(std::memchr(p, '\n', std::size_t(in.end() - p)));
        in.skip_to(line_end ? line_end + 1 : in.end());
    }
    return as_mesh(pos, conn, 4, ET_TETRA4);
}

void write_deck(const std::string& name, const mesh& m) {
    block_writer out(name);
    out.wrote(put(out.room(32), "BEGIN BULK\n"));
    for (std::uint64_t j = 0; j < m.pos.cols(); ++j)
        out.wrote(out.room(256) +
                  std::snprintf(out.room(256), 256, "GRID    %8u        %8.3f%8.3f%8.3f\n",
                                index(j + 1), m.pos(0, j), m.pos(1, j), m.pos(2, j)));
    for (std::uint64_t j = 0; j < m.conn.cols(); ++j)
        out.wrote(out.room(256) + std::snprintf(out.room(256), 256, "CTETRA  %8u%8u%8u%8u%8u%8u\n",
                                                index(j + 1), 1U, m.conn(0, j) + 1,
                                                m.conn(1, j) + 1, m.conn(2, j) + 1,
                                                m.conn(3, j) + 1));
    out.wrote(put(out.room(32), "ENDDATA\n"));
}

void hold_deck(contest& c) {
    contest_row row;
    row.job = "NASTRAN deck, read";
    row.input = "as many nodes as tetrahedra, small field";
    if (!c.wants(row.job, row.input)) return;
    const mesh m = cut(hexahedral_grid(c.size(1'000'000)), ET_TETRA4, {{1, 0, 2, 6}});
    const std::string name = c.file("read.bdf");
    write_deck(name, m);
    row.item = "card";
    row.items = m.pos.cols() + m.conn.cols();
    row.answers = {"nodes", "tetrahedra", "sum of coordinates"};
    const auto answer = [](const mesh& read) -> std::vector<double> {
        return {double(read.pos.cols() - 1), double(read.conn.cols()), sum_of(read.pos)};
    };
    row.ours = entrant(
        "kvx zelvo",
        [=] {
            mesh read;
            dense1D<unsigned int> offsets, props;
            dense1D<int> kinds;
            if (NASTRAN_input(name.c_str(), read.pos, read.conn, offsets, kinds, props) < 0)
                throw std::runtime_error("NASTRAN_input");
            return read;
        },
        answer);
#if PEER_GMSH
    gmsh::initialize();
    gmsh::option::setNumber("General.Terminal", 0);
    gmsh::option::setNumber("General.NumThreads", 1);
    row.peers.push_back(entrant(
                            "gmsh",
                            [=] {
                                gmsh::merge(name);
                                return 0;
                            },
                            [](int) -> std::vector<double> {
                                std::vector<std::size_t> nodes, tetrahedra, corners;
                                std::vector<double> pos, parameters;
                                gmsh::model::mesh::getNodes(nodes, pos, parameters);
                                gmsh::model::mesh::getElementsByType(4, tetrahedra, corners);
                                return {double(nodes.size()), double(tetrahedra.size())};
                            })
                            .before([] { gmsh::clear(); })
                            .but("builds its model of the mesh, without the nodes that no element "
                                 "uses"));
#else
    row.absent.emplace_back("gmsh not installed");
#endif
    row.floor = entrant(
        "blocks, fixed fields", [=] { return read_deck(name); }, answer);
    c.hold(std::move(row));
#if PEER_GMSH
    gmsh::finalize();
#endif
    std::filesystem::remove(name);
}

} // namespace

void hold_text_rows(contest& c) {
    hold_vtk(c);
    hold_obj(c);
    hold_deck(c);
}

} // namespace kvx::zelvo::bench
