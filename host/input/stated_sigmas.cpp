#include "host/input/stated_sigmas.h"

#include <cmath>

#include "host/input/note_columns.h"

namespace vornhost {

namespace {

constexpr double million = 1e6;
constexpr int most_setups = 1000000; // of a level along one line

double squared(double x) { return x * x; }

double levelling_sigma(Network &net, Row &row, TableId id, const StatedColumns &c)
{
    double variance = squared(net.sigma[id]);
    const bool by_length = net.stated.per_km > 0.0, by_setups = net.stated.per_setup > 0.0;
    if (by_length && !says(row, c.length))
        net.faults.add(row.at(c.length), "the length of the line is not known", "write it in column length, or sigma");
    else if (by_setups && !says(row, c.setups))
        net.faults.add(row.at(c.setups), "the number of set-ups of the level is not known",
                       "write it in column setups, or sigma");
    if (by_length) // 1 after a fault
        variance += squared(net.stated.per_km) * row.positive(c.length, 1.0) * net.metres / 1000.0;
    if (by_setups) variance += squared(net.stated.per_setup) * row.whole(c.setups, 1, 1, most_setups);
    return std::sqrt(variance);
}

// The coordinates of a point, null where the tables leave them open.
const double *known_coordinates(const Network &net, int point)
{
    const Model &m = net.model;
    const size_t i = (size_t)point, stations = m.stations.size();
    if (point < 0 || i >= stations + m.targets.size()) return nullptr;
    const int status = i < stations ? m.stations.records[i].status : m.targets.records[i - stations].status;
    if (status == STATUS_COMPUTE) return nullptr;
    return i < stations ? m.stations.records[i].x : m.targets.records[i - stations].x;
}

} // namespace

double usual_sigma(Network &net, Row &row, TableId id, const StatedColumns &c, double metres)
{
    if (c.length >= 0) return levelling_sigma(net, row, id, c);
    if (c.ppm < 0) return net.sigma[id];
    const double ppm = row.positive(c.ppm, net.stated.ppm);
    return net.sigma[id] + ppm / million * metres / net.sigma_metres;
}

double added_sigma(Network &net, Row &row, const StatedColumns &c, double metres)
{
    return says(row, c.ppm) ? row.positive(c.ppm, 0.0) / million * metres / net.sigma_metres : 0.0;
}

double reduced_distance(Network &net, Row &row, const StatedColumns &c, double metres)
{
    const double ppm = row.number(c.atmosphere, net.stated.atmosphere);
    const double prism = row.given(c.prism) ? row.length(c.prism, 0.0) * net.metres : net.stated.prism;
    return metres * (1.0 + ppm / million) + prism;
}

bool second_face(Row &row, const StatedColumns &c) { return c.face >= 0 && row.whole(c.face, 1, 1, 2) == 2; }

double planned_distance(const Network &net, int from, int to)
{
    const double *a = known_coordinates(net, from), *b = known_coordinates(net, to);
    if (!a || !b) return 1.0;
    double squares = 0.0;
    for (int k = 0; k < 3; k++)
        if (net.has_dimension(k)) squares += squared(b[k] - a[k]);
    return squares > 0.0 ? std::sqrt(squares) * metres_per_unit(net.model.p) : 1.0;
}

} // namespace vornhost
