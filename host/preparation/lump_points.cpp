#include "host/preparation/lump_points.h"

#include "host/input/names.h"

namespace vornhost {

template <class Record> void LumpPoints::add(const Model &network, const List<Record> &list, bool stations)
{
    for (size_t i = 0; i < list.size(); i++) {
        const Record &r = list.records[i];
        if (r.status <= 0) continue;
        used.emplace(r.name, stations);
        if (r.ilump == 0 || !numbers.emplace(r.name, points.size()).second) continue;
        LumpPoint point;
        point.name = shown_name(network, r.name);
        point.lump = r.ilump;
        point.station = stations;
        point.where = list.where[i];
        points.push_back(point);
    }
}

void LumpPoints::add_direction(const measure_input &m)
{
    if (!takes_part(m)) return;
    if (m.time != 0 && seen.insert(m.time).second) order.push_back(m.time);
    const auto found = numbers.find(m.to);
    if (found == numbers.end()) return;
    Sights &sights = points[found->second].sights[m.time];
    sights.directions++;
    sights.stations.insert(m.from);
}

LumpPoints::LumpPoints(const Model &network)
{
    add(network, network.stations, true);
    add(network, network.targets, false);
    if (points.empty()) return;
    for (const measure_input &m : network.directions.records) add_direction(m);
}

const LumpPoint *LumpPoints::find(const char *name) const
{
    const auto found = numbers.find(name);
    return found == numbers.end() ? nullptr : &points[found->second];
}

bool LumpPoints::takes_part(const measure_input &direction) const
{
    return direction.typ > 0 && in_use(direction.from, direction.to) && used.at(direction.from);
}

} // namespace vornhost
