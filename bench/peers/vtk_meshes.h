#pragma once

#include <cstdint>

#include <vtkCellArray.h>
#include <vtkCellType.h>
#include <vtkDoubleArray.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkSmartPointer.h>
#include <vtkUnstructuredGrid.h>

#include "../generated_meshes.h"

/// Meshes as VTK holds them.
namespace kvx::zelvo::bench {

inline vtkSmartPointer<vtkPoints> vtk_points(const dense2D<double>& pos) {
    auto points = vtkSmartPointer<vtkPoints>::New();
    points->SetDataTypeToDouble();
    points->SetNumberOfPoints(static_cast<vtkIdType>(pos.cols()));
    for (std::uint64_t j = 0; j < pos.cols(); ++j)
        points->SetPoint(static_cast<vtkIdType>(j), &pos(0, j));
    return points;
}

inline vtkSmartPointer<vtkCellArray> vtk_cells(const dense2D<unsigned int>& conn) {
    auto cells = vtkSmartPointer<vtkCellArray>::New();
    cells->AllocateExact(static_cast<vtkIdType>(conn.cols()),
                         static_cast<vtkIdType>(conn.cols()) * static_cast<vtkIdType>(conn.rows()));
    for (std::uint64_t j = 0; j < conn.cols(); ++j) {
        cells->InsertNextCell(static_cast<int>(conn.rows()));
        for (std::uint64_t i = 0; i < conn.rows(); ++i)
            cells->InsertCellPoint(conn(i, j));
    }
    return cells;
}

inline vtkSmartPointer<vtkPolyData> vtk_surface(const mesh& m) {
    auto surface = vtkSmartPointer<vtkPolyData>::New();
    surface->SetPoints(vtk_points(m.pos));
    surface->SetPolys(vtk_cells(m.conn));
    return surface;
}

inline vtkSmartPointer<vtkUnstructuredGrid> vtk_grid(const mesh& m) {
    auto grid = vtkSmartPointer<vtkUnstructuredGrid>::New();
    grid->SetPoints(vtk_points(m.pos));
    grid->SetCells(m.kind == ET_TETRA4  ? VTK_TETRA
                   : m.kind == ET_HEXA8 ? VTK_HEXAHEDRON
                                        : VTK_TRIANGLE,
                   vtk_cells(m.conn));
    return grid;
}

} // namespace kvx::zelvo::bench
