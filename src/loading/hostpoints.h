// The points of the host counted through: stations, then targets.

#ifndef VORN_HOSTPOINTS_H
#define VORN_HOSTPOINTS_H

#include "vorn/project.h"

namespace vornengine {

struct hostpoints {
    const station_input *sta; // [nsta]
    int nsta;
    const target_input *tar; // [ntar]
    int ntar;

    bool is_station(int i) const { return i < nsta; }
    const char *name(int i) const { return is_station(i) ? sta[i].name : tar[i - nsta].name; }
    int status(int i) const { return is_station(i) ? sta[i].status : tar[i - nsta].status; }
    int lump(int i) const { return is_station(i) ? sta[i].ilump : tar[i - nsta].ilump; }

    // Lump index of a point that takes part and belongs to a lump, else 0.
    int active_lump(int i) const { return status(i) > 0 ? lump(i) : 0; }
};

} // namespace vornengine

#endif
