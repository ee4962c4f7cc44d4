#include "mesh_writing.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include <kvx/zelvo/ensight.h>
#include <kvx/zelvo/femap.h>
#include <kvx/zelvo/medit.h>
#include <kvx/zelvo/nastran.h>
#include <kvx/zelvo/stl.h>
#include <kvx/zelvo/vtk.h>
#include <kvx/zelvo/wavefront_obj.h>

#include "atomic_file.h"
#include "named_output.h"

using namespace kvx;

namespace {

/// The groups as a range of connectivities.
struct connectivity_range {
    explicit connectivity_range(const mesh& m) {
        for (const element_group& group : m.groups) {
            matrices.push_back(group.connectM);
            need(FEs.resize(matrices.size(), group.kind));
        }
    }
    const dense2D<unsigned int>* begin() const { return matrices.data(); }
    const dense2D<unsigned int>* end() const { return matrices.data() + matrices.size(); }

    std::vector<dense2D<unsigned int>> matrices;
    dense1D<int> FEs;
};

/// The groups in one matrix, with a property for every element.
struct deck {
    explicit deck(const mesh& m);

    dense2D<unsigned int> connectM;
    dense1D<unsigned int> offsets, props;
    dense1D<int> FEs;
};

deck::deck(const mesh& m) {
    std::uint64_t rows = 0;
    for (const element_group& group : m.groups)
        rows = std::max(rows, group.connectM.rows());
    need(connectM.resize(rows, element_count(m), no_node));
    need(props.resize(connectM.cols(), 1));
    need(offsets.resize(1));
    std::uint64_t next = 0;
    for (const element_group& group : m.groups) {
        std::copy(group.properties.begin(), group.properties.end(), props.begin() + next);
        for (std::uint64_t j = 0; j < group.connectM.cols(); ++j)
            std::copy_n(&group.connectM(0, j), group.connectM.rows(), &connectM(0, next++));
        need(FEs.resize(FEs.size() + 1, group.kind));
        need(offsets.resize(offsets.size() + 1, static_cast<unsigned int>(next)));
    }
}

int write_stl(const char* name, const mesh& m, bool ascii) {
    return zelvo::STL_output(name, m.pos, all_of(m, ET_TRIA3), ascii);
}

int write_vtk(const char* name, const mesh& m) {
    const connectivity_range range(m);
    return zelvo::vtk_output(name, m.pos, range.begin(), range.end(), range.FEs);
}

int write_medit(const char* name, const mesh& m) {
    if (medit_holds_properties(m)) {
        const deck all(m);
        return zelvo::medit_output(name, m.pos, all.connectM, m.groups.front().kind, all.props);
    }
    const connectivity_range range(m);
    return zelvo::medit_output(name, m.pos, range.begin(), range.end(), range.FEs);
}

int write_nastran(const char* name, const mesh& m) {
    const deck all(m);
    return zelvo::NASTRAN_output(name, m.pos, all.connectM, all.offsets, all.FEs, all.props);
}

int write_obj(const char* name, const mesh& m) {
    const dense2D<double> none;
    return zelvo::WavefrontOBJ_output(name, m.pos, none, none, all_of(m, ET_TRIA3),
                                      all_of(m, ET_QUAD4));
}

int write_ensight(const char* name, const mesh& m) {
    const connectivity_range range(m);
    return zelvo::ensight_output(name, m.pos, range.begin(), range.end(), range.FEs);
}

int write_femap(const char* name, const mesh& m) {
    const deck all(m);
    return zelvo::FEMAP_output(name, m.pos, all.connectM, all.offsets, all.FEs, all.props);
}

/// Writers by format.
using writer = int (*)(const char*, const mesh&);
constexpr std::array<writer, 8> writers = {
    [](const char* name, const mesh& m) { return write_stl(name, m, true); },
    [](const char* name, const mesh& m) { return write_stl(name, m, false); },
    write_vtk,
    write_medit,
    write_nastran,
    write_obj,
    write_ensight,
    write_femap,
};

} // namespace

bool medit_holds_properties(const mesh& m) {
    const auto fits = [&](const element_group& group) {
        return group.kind == m.groups.front().kind && !group.properties.empty() &&
               std::count(group.properties.begin(), group.properties.end(), no_node) == 0;
    };
    return std::all_of(m.groups.begin(), m.groups.end(), fits);
}

int write_file(const std::string& file, const std::function<int(const char*)>& write) {
    constexpr int out_of_memory = -199;
    atomic_file target(file);
    if (!target.stream()) return target.error();
    try {
        const int result = write_by_name(target.stream(), write);
        if (result != 0) return result == out_of_memory ? ENOMEM : EINVAL;
    } catch (const std::system_error& no_pipe_or_thread) {
        return no_pipe_or_thread.code().value();
    }
    return target.commit() ? 0 : target.error();
}

int write_mesh(const std::string& file, const mesh& m, format form) {
    const writer write = writers[static_cast<unsigned>(form)];
    return write_file(file, [&](const char* name) { return write(name, m); });
}
