// The space that the coordinates of a network live in, and where up is at a point.
//
// heights     1D: only the third coordinate of a point exists, a height.
// plane       2D: first and second coordinate; a third one may be held, for slope distances.
// space       3D: x3 up, verticals parallel everywhere.
// sphere      3D: x3 up at the origin; verticals meet in the centre C = (0, 0, -(radius + height)). The origin of the
//             coordinates lies `height` above the sphere. The third coordinate of a point is x3 itself (cartesian) or
//             the height of the point above the sphere (mixed).
// ellipsoid   3D: x, y of a grid, and heights; each point has a Site that says where on the ellipsoid
//             these lie. Positions are geocentric.
//
// In the plane, too, held third coordinates may be heights above a sphere (mixed). Metres and radians. A position is a
// cartesian vector; position() makes it from the three coordinates of a point.
//
// On the sphere lengths are differences of coordinates, never of distances from the centre, so that a radius of 1e15
// metres gives the numbers of parallel verticals. Valid for points on the near half of the sphere.

#ifndef VORNADJUST_FRAMES_H
#define VORNADJUST_FRAMES_H

#include <cmath>

#include "adjust/ellipsoid.h"
#include "adjust/jet.h"

namespace vornadjust {

enum class Space { heights, plane, space, sphere, ellipsoid };

struct Frame {
    Space space = Space::space;
    bool mixed = false;            // the third coordinate is the height above the sphere (plane, sphere)
    double radius = 6371000.0;     // metres, of the sphere; of refraction and convergence in every space
    double height = 0.0;           // metres, of the origin above the sphere
    double azimuth_rotation = 0.0; // radians, added to the bearing of the axes
    double latitude = 0.0;         // radians, for the convergence of the meridians in azimuths
    Ellipsoid ellipsoid;           // of that space; there the first axis points along the grid's north, whose azimuth
                                   // at the station of a sight azimuth_rotation is
    Vec3<double> centre{0, 0, 0};  // metres, geocentric place of the origin of positions on the ellipsoid
    bool parallel = false; // verticals taken as parallel; refraction and convergence have no derivative by place

    bool curved() const { return !parallel && (space == Space::sphere || space == Space::ellipsoid || mixed); }
    bool ellipsoidal() const { return curved() && space == Space::ellipsoid; }
    double origin_radius() const { return radius + height; }

    // The same coordinates with parallel verticals, in which shifts, turns and scale are exact.
    Frame flat() const
    {
        Frame f = *this;
        f.parallel = true;
        return f;
    }
};

// Where the coordinates (x, y, z) of a point lie on the ellipsoid:
//   latitude  B = latitude + latitude_by[0] (x - at[0]) + latitude_by[1] (y - at[1]), longitude L likewise,
//   height above the ellipsoid = z + undulation.
// With the slopes of a map projection at the point, x and y are its grid coordinates up to the square of what they
// change by; a first value that is off by 10 metres leaves 20 micrometres at most.
struct Site {
    double at[2] = {0, 0}; // metres
    double latitude = 0, longitude = 0;
    double latitude_by[2] = {0, 0}, longitude_by[2] = {0, 0}; // radians per metre
    double undulation = 0;                                    // metres
    double convergence = 0;                                   // azimuth of the first axis
};

template <class T> GeographicPlace<T> geographic(const Site &site, const Vec3<T> &c)
{
    const T x = c.x - site.at[0], y = c.y - site.at[1];
    return {x * site.latitude_by[0] + y * site.latitude_by[1] + site.latitude,
            x * site.longitude_by[0] + y * site.longitude_by[1] + site.longitude, c.z + site.undulation};
}

// Position of a point on the ellipsoid with the coordinates c.
template <class T> Vec3<T> position(const Frame &frame, const Site &site, const Vec3<T> &c)
{
    const Vec3<T> x = geocentric(frame.ellipsoid, geographic(site, c));
    return {x.x - frame.centre.x, x.y - frame.centre.y, x.z - frame.centre.z};
}

// x, without its derivatives where verticals are taken as parallel.
template <class T> T placed(const Frame &frame, const T &x) { return frame.parallel ? T(value_of(x)) : x; }

// Position of a point with the coordinates c. With heights h above the sphere
//   z = (h - height) - (x^2 + y^2) / ((radius + h) + sqrt((radius + h)^2 - x^2 - y^2)).
template <class T> Vec3<T> position(const Frame &frame, const Vec3<T> &c)
{
    using std::sqrt;
    if (!frame.curved() || !frame.mixed) return c;
    const T r = c.z + frame.radius, across = c.x * c.x + c.y * c.y;
    return {c.x, c.y, (c.z - frame.height) - across / (r + sqrt(r * r - across))};
}

// From the centre of the sphere or ellipsoid to a position, and up at the position: away from the centre of the sphere,
// along the normal of the ellipsoid, or along the vertical that leans from it.
template <class T> Vec3<T> from_centre(const Frame &frame, const Vec3<T> &p)
{
    if (frame.ellipsoidal()) return {p.x + frame.centre.x, p.y + frame.centre.y, p.z + frame.centre.z};
    return {p.x, p.y, p.z + frame.origin_radius()};
}

template <class T> Vec3<T> up(const Frame &frame, const Vec3<T> &p, const Lean<T> *lean = nullptr)
{
    using std::sqrt;
    if (!frame.curved()) return {T(0.0), T(0.0), T(1.0)};
    const Vec3<T> a = from_centre(frame, p);
    if (frame.ellipsoidal()) return lean ? horizon_at(frame.ellipsoid, a, *lean).up : horizon_at(frame.ellipsoid, a).up;
    return (1.0 / sqrt(dot(a, a))) * a;
}

// Height of q above the level of p: |B| - |A| = (B - A)(B + A) / (|A| + |B|) with A, B from the centre to p, q.
template <class T> T rise(const Frame &frame, const Vec3<T> &p, const Vec3<T> &q)
{
    using std::sqrt;
    if (!frame.curved()) return q.z - p.z;
    const Vec3<T> a = from_centre(frame, p), b = from_centre(frame, q);
    return dot(q - p, a + b) / (sqrt(dot(a, a)) + sqrt(dot(b, b)));
}

// d as seen at a place on the ellipsoid: along the grid's north, across it, along up.
template <class T> Vec3<T> in_horizon(const Frame &frame, const Vec3<T> &p, const Vec3<T> &d, const Lean<T> *lean)
{
    const Vec3<T> place = from_centre(frame, p);
    const Horizon<T> h = lean ? horizon_at(frame.ellipsoid, place, *lean) : horizon_at(frame.ellipsoid, place);
    const T north = dot(h.north, d), east = dot(h.east, d);
    const double c = std::cos(frame.azimuth_rotation), s = std::sin(frame.azimuth_rotation);
    return {c * north + s * east, c * east - s * north, dot(h.up, d)};
}

// d as seen at p in axes turned the shortest way from x3 to up at p (on the ellipsoid from the grid's north):
// horizontal components and the one along up.
template <class T>
Vec3<T> levelled(const Frame &frame, const Vec3<T> &p, const Vec3<T> &d, const Lean<T> *lean = nullptr)
{
    if (!frame.curved()) return d;
    if (frame.ellipsoidal()) return in_horizon(frame, p, d, lean);
    const Vec3<T> n = up(frame, p);
    const T along = d.z + (n.x * d.x + n.y * d.y) / (1.0 + n.z);
    return {d.x - n.x * along, d.y - n.y * along, dot(n, d)};
}

} // namespace vornadjust

#endif
