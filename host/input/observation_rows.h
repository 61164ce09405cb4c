// What the rows of all tables of observations have in common: the points that they name, and whether they take part.

#ifndef VORNHOST_OBSERVATION_ROWS_H
#define VORNHOST_OBSERVATION_ROWS_H

#include <cstdlib>
#include <string>

#include "host/input/network_tables.h"

namespace vornhost {

// Names in the records. Of an angle `at` is where it was taken; `to` is empty where there is one point.
struct RowEnds {
    std::string from, to, at;
};

inline RowEnds ends_of(const Model &, const measure_input &m) { return {m.from, m.to, ""}; }
inline RowEnds ends_of(const Model &, const gps_input &g) { return {g.from, g.to, ""}; }
inline RowEnds ends_of(const Model &, const image_input &i) { return {i.station, i.camera, ""}; }
RowEnds ends_of(const Model &model, const SightRow &row);
RowEnds ends_of(const Model &model, const VectorRow &row);

inline bool is_selected(const measure_input &m) { return m.typ > 0; }
inline bool is_selected(const gps_input &g) { return g.status > 0; }
inline bool is_selected(const image_input &i) { return i.status > 0; }
inline bool is_selected(const SightRow &row) { return row.use; }
inline bool is_selected(const VectorRow &row) { return row.use; }

inline void leave_out(measure_input &m) { m.typ = -std::abs(m.typ); }
inline void leave_out(gps_input &g) { g.status = -std::abs(g.status); }
inline void leave_out(SightRow &row) { row.use = false; }
inline void leave_out(VectorRow &row) { row.use = false; }

// Calls visit with the list of a table of observations; false, without a call, for other tables and images.
template <class Network, class Visit> bool with_rows(Network &m, TableId id, Visit visit)
{
    switch (id) {
    case TABLE_DISTANCES: visit(m.distances); return true;
    case TABLE_HEIGHT_DIFFERENCES: visit(m.heightdiffs); return true;
    case TABLE_DIRECTIONS: visit(m.directions); return true;
    case TABLE_VERTICAL_ANGLES: visit(m.verticals); return true;
    case TABLE_AZIMUTHS: visit(m.azimuths); return true;
    case TABLE_BASELINES: visit(m.baselines); return true;
    case TABLE_HORIZONTAL_DISTANCES: visit(m.horizontal_distances); return true;
    case TABLE_BEARINGS: visit(m.bearings); return true;
    case TABLE_ANGLES: visit(m.angles); return true;
    case TABLE_COORDINATES: visit(m.coordinates); return true;
    case TABLE_COORDINATE_DIFFERENCES: visit(m.coordinate_differences); return true;
    case TABLE_SCALE_BARS: visit(m.scale_bars); return true;
    default: return false;
    }
}

} // namespace vornhost

#endif
