#include "colour/GamutHull.h"

// The library entry that takes a switch string is only declared for library builds.
#define TETLIBRARY
#include <tetgen.h>
#undef REAL

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tintorra {

struct GamutHull::Mesh {
    tetgenio in;
    tetgenio out;
    // Lightness range of each output triangle, for picking the triangles a ray can meet.
    std::vector<double> triangleLowest;
    std::vector<double> triangleHighest;
};

namespace {

constexpr double kParallelTolerance = 1e-6;
constexpr double kNearestHit = 1e-6;
constexpr double kLightnessMargin = 1e-6;

void cross(const double a[3], const double b[3], double out[3])
{
    out[0] = a[1] * b[2] - a[2] * b[1];
    out[1] = a[2] * b[0] - a[0] * b[2];
    out[2] = a[0] * b[1] - a[1] * b[0];
}

double dot(const double a[3], const double b[3])
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

bool spansVolume(const double* points, std::size_t count)
{
    if (count < 4) {
        return false;
    }
    for (int axis = 0; axis < 3; ++axis) {
        double lowest = points[axis];
        double highest = points[axis];
        for (std::size_t i = 0; i < count; ++i) {
            const double value = points[3 * i + static_cast<std::size_t>(axis)];
            if (!std::isfinite(value)) {
                return false;
            }
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
        }
        if (!(highest > lowest)) {
            return false;
        }
    }
    return true;
}

} // namespace

double rayTriangleDistance(const double origin[3], const double direction[3], const double v0[3],
                           const double v1[3], const double v2[3])
{
    const double edge1[3] = {v1[0] - v0[0], v1[1] - v0[1], v1[2] - v0[2]};
    const double edge2[3] = {v2[0] - v0[0], v2[1] - v0[1], v2[2] - v0[2]};
    double p[3];
    cross(direction, edge2, p);
    const double determinant = dot(edge1, p);
    if (determinant > -kParallelTolerance && determinant < kParallelTolerance) {
        return -1.0;
    }
    const double inverse = 1.0 / determinant;
    const double toOrigin[3] = {origin[0] - v0[0], origin[1] - v0[1], origin[2] - v0[2]};
    const double u = dot(toOrigin, p) * inverse;
    if (u < 0.0 || u > 1.0) {
        return -1.0;
    }
    double q[3];
    cross(toOrigin, edge1, q);
    const double v = dot(direction, q) * inverse;
    if (v < 0.0 || v > 1.0 || u + v > 1.0) {
        return -1.0;
    }
    const double t = dot(edge2, q) * inverse;
    return t > kNearestHit ? t : -1.0;
}

GamutHull::GamutHull() : mesh_(std::make_unique<Mesh>()) {}

GamutHull::~GamutHull() = default;

bool GamutHull::build(const std::vector<ColorComponents>& luvColors,
                      const std::vector<int>& markers)
{
    mesh_ = std::make_unique<Mesh>();
    tetgenio& in = mesh_->in;
    const std::size_t count = luvColors.size();
    in.numberofpoints = static_cast<int>(count);
    in.numberofpointattributes = 0;
    if (count > 0) {
        // tetgenio releases its arrays with delete[], so they are allocated the same way.
        in.pointlist = new double[count * 3];
        in.pointmarkerlist = new int[count];
        for (std::size_t i = 0; i < count; ++i) {
            in.pointlist[3 * i] = luvColors[i].c1;
            in.pointlist[3 * i + 1] = luvColors[i].c2;
            in.pointlist[3 * i + 2] = luvColors[i].c0;
            in.pointmarkerlist[i] = i < markers.size() ? markers[i] : 0;
        }
    }

    // The library asserts, and so ends the program, when the points span no volume (no points,
    // or all of them in one plane of the bounding box, as a zero matrix gives); such a cloud has
    // no hull to find anyway.
    if (!spansVolume(in.pointlist, count)) {
        return false;
    }
    char switches[] = "QC";
    try {
        tetrahedralize(switches, &in, &mesh_->out);
    } catch (...) {
        // The library reports its failures by throwing an exit code.
        mesh_->out.deinitialize();
        mesh_->out.initialize();
        return false;
    }

    const tetgenio& out = mesh_->out;
    const std::size_t triangles = triangleCount();
    mesh_->triangleLowest.resize(triangles);
    mesh_->triangleHighest.resize(triangles);
    for (std::size_t t = 0; t < triangles; ++t) {
        double lowest = out.pointlist[3 * triangleCorner(t, 0) + 2];
        double highest = lowest;
        for (int corner = 1; corner < 3; ++corner) {
            const double L = out.pointlist[3 * triangleCorner(t, corner) + 2];
            lowest = std::min(lowest, L);
            highest = std::max(highest, L);
        }
        mesh_->triangleLowest[t] = lowest;
        mesh_->triangleHighest[t] = highest;
    }
    return true;
}

std::size_t GamutHull::inputPointCount() const
{
    return static_cast<std::size_t>(std::max(mesh_->in.numberofpoints, 0));
}

std::size_t GamutHull::outputPointCount() const
{
    return mesh_->out.pointlist ? static_cast<std::size_t>(std::max(mesh_->out.numberofpoints, 0))
                                : 0;
}

std::size_t GamutHull::triangleCount() const
{
    return mesh_->out.trifacelist
               ? static_cast<std::size_t>(std::max(mesh_->out.numberoftrifaces, 0))
               : 0;
}

double GamutHull::outputCoordinate(std::size_t point, int axis) const
{
    return mesh_->out.pointlist[3 * point + static_cast<std::size_t>(axis)];
}

std::size_t GamutHull::triangleCorner(std::size_t triangle, int corner) const
{
    const tetgenio& out = mesh_->out;
    return static_cast<std::size_t>(
        out.trifacelist[3 * triangle + static_cast<std::size_t>(corner)] - out.firstnumber);
}

double GamutHull::rayDistance(double hue, double lightness) const
{
    std::vector<std::size_t> all(triangleCount());
    for (std::size_t t = 0; t < all.size(); ++t) {
        all[t] = t;
    }
    return rayDistance(hue, lightness, all);
}

std::vector<std::size_t> GamutHull::trianglesNearLightness(double lightness) const
{
    std::vector<std::size_t> near;
    for (std::size_t t = 0; t < triangleCount(); ++t) {
        if (mesh_->triangleLowest[t] - kLightnessMargin <= lightness &&
            lightness <= mesh_->triangleHighest[t] + kLightnessMargin) {
            near.push_back(t);
        }
    }
    return near;
}

double GamutHull::rayDistance(double hue, double lightness,
                              const std::vector<std::size_t>& candidates) const
{
    const double origin[3] = {0.0, 0.0, lightness};
    const double direction[3] = {std::cos(hue), std::sin(hue), 0.0};
    const double* points = mesh_->out.pointlist;
    for (const std::size_t t : candidates) {
        const double distance = rayTriangleDistance(
            origin, direction, points + 3 * triangleCorner(t, 0), points + 3 * triangleCorner(t, 1),
            points + 3 * triangleCorner(t, 2));
        if (distance > 0.0) {
            return distance;
        }
    }
    return 0.0;
}

} // namespace tintorra
