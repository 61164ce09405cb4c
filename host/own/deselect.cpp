#include "host/own/deselect.h"

#include "host/input/observation_rows.h"

namespace vornhost {

std::optional<TableId> table_of(const ItemPlace &item)
{
    switch (item.item) {
    case Item::distance: return TABLE_DISTANCES;
    case Item::height_difference: return TABLE_HEIGHT_DIFFERENCES;
    case Item::direction: return TABLE_DIRECTIONS;
    case Item::vertical_angle: return TABLE_VERTICAL_ANGLES;
    case Item::azimuth: return TABLE_AZIMUTHS;
    case Item::baseline: return TABLE_BASELINES;
    case Item::horizontal_distance: return TABLE_HORIZONTAL_DISTANCES;
    case Item::bearing: return TABLE_BEARINGS;
    case Item::angle: return TABLE_ANGLES;
    case Item::scale_bar: return TABLE_SCALE_BARS;
    case Item::observed_coordinate: return TABLE_COORDINATES;
    case Item::coordinate_difference: return TABLE_COORDINATE_DIFFERENCES;
    default: return std::nullopt;
    }
}

Source deselect(Model &network, const ItemPlace &item)
{
    const std::optional<TableId> table = table_of(item);
    Source at;
    if (!table) return at;
    with_rows(network, *table, [&](auto &list) {
        leave_out(list.records[(size_t)item.record]);
        at = list.where[(size_t)item.record];
    });
    return at;
}

} // namespace vornhost
