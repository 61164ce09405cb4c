#include "host/own/local_frame.h"

#include <cmath>

#include "host/preparation/sketch.h"

namespace vornhost {

namespace {

constexpr int most_centres = 100; // stations tried as the centre of a local frame

// The turn, scale and shift x' = a x - b y + p, y' = b x + a y + q that carry local coordinates to known ones in the
// sense of least squares.
struct Transformation {
    double a = 1, b = 0, p = 0, q = 0;

    void apply(const double from[3], double to[3]) const
    {
        to[0] = a * from[0] - b * from[1] + p;
        to[1] = b * from[0] + a * from[1] + q;
    }
};

// Over the points that both have; false with fewer than two, or when these stand in one place.
bool fit(const Sketch &local, const Sketch &known, Transformation &t)
{
    double n = 0, mean[4] = {0, 0, 0, 0}, square = 0, cosine = 0, sine = 0;
    const auto each = [&](auto action) {
        for (size_t i = 0; i < known.points.size(); i++)
            if (local.points[i].placed && known.points[i].placed) action(local.points[i].x, known.points[i].x);
    };
    each([&](const double *u, const double *x) {
        n += 1;
        mean[0] += u[0], mean[1] += u[1], mean[2] += x[0], mean[3] += x[1];
    });
    if (n < 2) return false;
    for (double &m : mean) m /= n;
    each([&](const double *u, const double *x) {
        const double ux = u[0] - mean[0], uy = u[1] - mean[1], dx = x[0] - mean[2], dy = x[1] - mean[3];
        square += ux * ux + uy * uy;
        cosine += ux * dx + uy * dy;
        sine += ux * dy - uy * dx;
    });
    if (!(square > 0) || !(std::hypot(cosine, sine) > 0)) return false;
    t.a = cosine / square;
    t.b = sine / square;
    t.p = mean[2] - t.a * mean[0] + t.b * mean[1];
    t.q = mean[3] - t.b * mean[0] - t.a * mean[1];
    return true;
}

// What can be placed around a station when nothing else is known.
Sketch around(const Sketch &empty, size_t centre)
{
    Sketch local = empty;
    local.points[centre].placed = local.points[centre].oriented = true;
    local.carry();
    return local;
}

// Places what some local frame reaches; false when none reaches anything.
bool extend(const Sketch &empty, Sketch &known)
{
    int tried = 0;
    for (size_t centre = 0; centre < known.points.size() && tried < most_centres; centre++) {
        if (!known.points[centre].station || known.points[centre].placed) continue;
        tried++;
        const Sketch local = around(empty, centre);
        Transformation t;
        if (!fit(local, known, t)) continue;
        for (size_t i = 0; i < known.points.size(); i++) {
            if (!local.points[i].placed || known.points[i].placed) continue;
            t.apply(local.points[i].x, known.points[i].x);
            known.points[i].placed = true;
        }
        known.carry();
        return true;
    }
    return false;
}

bool complete(const Sketch &sketch)
{
    for (const SketchPoint &p : sketch.points)
        if (!p.placed) return false;
    return true;
}

template <class Record> void write(const Model &network, const Sketch &sketch, List<Record> &list)
{
    const double unit = metres_per_unit(network.p);
    for (Record &r : list.records) {
        if (r.status != STATUS_COMPUTE) continue;
        const SketchPoint &p = sketch.points[(size_t)sketch.find(r.name)];
        for (int k = 0; k < network.p.dim; k++)
            if (!is_held(r.ix[k])) r.x[k] = p.x[k] / unit;
        r.status = STATUS_ON;
    }
}

} // namespace

bool place_by_local_frames(Model &network)
{
    Sketch known(network), empty(network);
    for (SketchPoint &p : empty.points) p.placed = p.oriented = false;
    known.carry();
    while (!complete(known))
        if (!extend(empty, known)) return false;
    if (network.p.dim == 3) known.carry_heights();
    write(network, known, network.stations);
    write(network, known, network.targets);
    return true;
}

} // namespace vornhost
