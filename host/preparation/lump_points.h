// The points of lumps, and the directions that show them.
//
// The engine tells the epochs of a lump by directions alone: those that take part, from a station
// to a point of the lump. Distances, vertical angles and all else follow them.

#ifndef VORNHOST_LUMP_POINTS_H
#define VORNHOST_LUMP_POINTS_H

#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// Directions to one point at one epoch.
struct Sights {
    int directions = 0;
    std::set<std::string> stations;
};

struct LumpPoint {
    std::string name; // for messages
    int lump = 0;
    bool station = false;
    Source where;
    std::map<int, Sights> sights; // by epoch; 0: without epoch
};

class LumpPoints {
public:
    explicit LumpPoints(const Model &network);

    // The point of a lump with this name, null when the point belongs to none or is off.
    const LumpPoint *find(const char *name) const;

    // Both points are not off.
    bool in_use(const char *from, const char *to) const { return used.count(from) && used.count(to); }

    // A direction that takes part: selected, from a station, between two points that are not off.
    bool takes_part(const measure_input &direction) const;

    // Epochs of the directions that take part, in the order of the file.
    const std::vector<int> &epochs() const { return order; }

    const std::vector<LumpPoint> &all() const { return points; } // stations first

private:
    template <class Record> void add(const Model &network, const List<Record> &list, bool stations);
    void add_direction(const measure_input &m);

    std::vector<LumpPoint> points;
    std::unordered_map<std::string, size_t> numbers;
    std::unordered_map<std::string, bool> used; // points that are not off; true: a station
    std::vector<int> order;
    std::set<int> seen; // the same epochs
};

} // namespace vornhost

#endif
