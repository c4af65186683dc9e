#pragma once

#include "colour/ColorComponents.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace tintorra {

// The tetrahedral hull of a cloud of Luv points, made by TetGen, and rays cast against its
// boundary triangles. Only the alternative gamut builder uses it; TetGen's header stays in the
// implementation file so that its macros do not reach the rest of the program.
class GamutHull {
public:
    GamutHull();
    ~GamutHull();
    GamutHull(const GamutHull&) = delete;
    GamutHull& operator=(const GamutHull&) = delete;

    // Tetrahedralises the points, each placed at (u, v, L), with the given point markers (one per
    // point) and the switches "QC". Replaces any earlier result. Returns false when TetGen gave up;
    // the hull then has no triangles.
    bool build(const std::vector<ColorComponents>& luvColors, const std::vector<int>& markers);

    // What went in and what came out: the points handed to TetGen, the output's points and its
    // boundary triangles.
    std::size_t inputPointCount() const;
    std::size_t outputPointCount() const;
    std::size_t triangleCount() const;
    // One coordinate (0 = u, 1 = v, 2 = L) of one output point, and one corner of a triangle as an
    // index into the output points.
    double outputCoordinate(std::size_t point, int axis) const;
    std::size_t triangleCorner(std::size_t triangle, int corner) const;

    // Distance from (0, 0, L) along (cos h, sin h, 0) to the first boundary triangle, in list
    // order, that the ray hits; 0 when none is hit.
    double rayDistance(double hue, double lightness) const;

    // The triangles, in list order, whose lightness range reaches within 1e-6 of `lightness`.
    // No other triangle can meet a ray at that lightness, so scanning only these gives the same
    // first hit as scanning the whole list.
    std::vector<std::size_t> trianglesNearLightness(double lightness) const;
    double rayDistance(double hue, double lightness,
                       const std::vector<std::size_t>& candidates) const;

private:
    struct Mesh;
    std::unique_ptr<Mesh> mesh_;
};

// Moller-Trumbore: the distance t > 1e-6 at which origin + t direction meets the triangle
// (v0, v1, v2), or a negative value when it misses (also when the ray runs within 1e-6 of
// parallel to the triangle's plane).
double rayTriangleDistance(const double origin[3], const double direction[3], const double v0[3],
                           const double v1[3], const double v2[3]);

} // namespace tintorra
