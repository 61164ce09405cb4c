#include "host/own/deselect.h"

#include <cstdlib>

namespace vornhost {

Source deselect(Model &network, const ItemPlace &item)
{
    const size_t i = (size_t)item.record;
    const auto off = [&](List<measure_input> &list) {
        measure_input &m = list.records[i];
        m.typ = -std::abs(m.typ);
        return list.where[i];
    };
    const auto unused = [&](auto &list) {
        list.records[i].use = false;
        return list.where[i];
    };
    switch (item.item) {
    case Item::horizontal_distance: return unused(network.horizontal_distances);
    case Item::bearing: return unused(network.bearings);
    case Item::angle: return unused(network.angles);
    case Item::scale_bar: return unused(network.scale_bars);
    case Item::observed_coordinate:
    case Item::observed_point: return unused(network.coordinates);
    case Item::coordinate_difference: return unused(network.coordinate_differences);
    case Item::distance: return off(network.distances);
    case Item::height_difference: return off(network.heightdiffs);
    case Item::direction: return off(network.directions);
    case Item::vertical_angle: return off(network.verticals);
    case Item::azimuth: return off(network.azimuths);
    case Item::baseline: {
        gps_input &g = network.baselines.records[i];
        g.status = -std::abs(g.status);
        return network.baselines.where[i];
    }
    default: return {};
    }
}

} // namespace vornhost
