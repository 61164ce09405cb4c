#include "host/own/item_names.h"

#include "host/input/names.h"

namespace vornhost {

namespace {

const char *const axes[3] = {"x", "y", "z"};
const char *const rotations[3] = {"rx1", "rx2", "rx3"};
const char *const constants[3] = {"additive constant", "scale", "refraction"};

void set_place(const Model &network, Source where, ItemName &name)
{
    if ((size_t)where.file < network.files.size()) name.file = network.files[(size_t)where.file];
    name.line = where.line;
}

ItemName measure_name(const Model &network, const char *kind, const List<measure_input> &list, int record)
{
    const measure_input &m = list.records[(size_t)record];
    ItemName name{kind, shown_name(network, m.from), shown_name(network, m.to), "", "", 0};
    set_place(network, list.where[(size_t)record], name);
    return name;
}

ItemName baseline_name(const Model &network, int record)
{
    const gps_input &g = network.baselines.records[(size_t)record];
    ItemName name{"baseline", shown_name(network, g.from), shown_name(network, g.to), "", "", 0};
    set_place(network, network.baselines.where[(size_t)record], name);
    return name;
}

ItemName image_name(const Model &network, const Numbers &numbers, int observation)
{
    const ItemPlace &item = numbers.items[(size_t)observation];
    const image_input &image = network.images.records[(size_t)item.record];
    const PointPlace &to = numbers.points[(size_t)numbers.model.observations[(size_t)observation].to];
    return {
        "image point", shown_name(network, image.station), shown_name(network, point_name(network, to)), "", image.file,
        item.part};
}

// Of a station or, behind these, a target.
ItemName coordinate_name(const Model &network, const char *kind, const ItemPlace &item)
{
    const int stations = (int)network.stations.size();
    const bool station = item.record < stations;
    const PointPlace point{station, station ? item.record : item.record - stations};
    ItemName name{kind, shown_name(network, point_name(network, point)), "", axes[item.part], "", 0};
    set_place(network, point_source(network, point), name);
    return name;
}

ItemName rotation_name(const Model &network, const ItemPlace &item)
{
    const PointPlace station{true, item.record};
    ItemName name{
        "weighted rotation", shown_name(network, point_name(network, station)), "", rotations[item.part], "", 0};
    set_place(network, point_source(network, station), name);
    return name;
}

ItemName constant_name(const Model &network, const ItemPlace &item)
{
    ItemName name{"weighted constant", network.group_names[(size_t)item.record], "", constants[item.part], "", 0};
    set_place(network, network.groups.where[(size_t)item.record], name);
    return name;
}

// Unknowns of one kind of block: which block and which of its numbers an unknown is.
template <class Block> bool find(const std::vector<Block> &blocks, int size, int unknown, int *block, int *part)
{
    for (size_t i = 0; i < blocks.size(); i++) {
        if (unknown < blocks[i].first || unknown >= blocks[i].first + size) continue;
        *block = (int)i;
        *part = unknown - blocks[i].first;
        return true;
    }
    return false;
}

} // namespace

std::string unknown_name(const Model &network, const Numbers &numbers, int unknown)
{
    static const char *const inner[10] = {"c", "x0", "y0", "a", "b", "k1", "k2", "k3", "p1", "p2"};
    static const char *const movement[7] = {"tx", "ty", "tz", "rx", "ry", "rz", "scale"};
    const vornadjust::Model &m = numbers.model;
    int i = 0, k = 0;
    if (unknown < 3 * m.n_points)
        return std::string(axes[unknown % 3]) + " of " +
               shown_name(network, point_name(network, numbers.points[(size_t)(unknown / 3)]));
    if (find(m.setups, 3, unknown, &i, &k)) {
        const std::string station =
            shown_name(network, network.stations.records[(size_t)numbers.setup_stations[(size_t)i]].name);
        return (k == 2 ? "orientation" : rotations[k]) + std::string(" of ") + station;
    }
    if (find(m.constants, 3, unknown, &i, &k))
        return constants[k] + std::string(" of group ") +
               network.group_names[(size_t)numbers.constant_groups[(size_t)i]];
    if (find(m.cameras, 10, unknown, &i, &k))
        return inner[k] + std::string(" of camera ") +
               shown_name(network, network.cameras.records[(size_t)numbers.camera_records[(size_t)i]].name);
    if (!find(m.motions, 7, unknown, &i, &k)) return "an unknown";
    const MotionPlace &motion = numbers.motions[(size_t)i];
    return movement[k] + std::string(" of lump ") + std::to_string(motion.lump) + " at epoch " +
           std::to_string(motion.epoch);
}

ItemName item_name(const Model &network, const Numbers &numbers, int observation)
{
    const ItemPlace &item = numbers.items[(size_t)observation];
    switch (item.item) {
    case Item::distance: return measure_name(network, "distance", network.distances, item.record);
    case Item::height_difference: return measure_name(network, "height difference", network.heightdiffs, item.record);
    case Item::direction: return measure_name(network, "direction", network.directions, item.record);
    case Item::vertical_angle: return measure_name(network, "vertical angle", network.verticals, item.record);
    case Item::azimuth: return measure_name(network, "azimuth", network.azimuths, item.record);
    case Item::baseline: return baseline_name(network, item.record);
    case Item::image_point: return image_name(network, numbers, observation);
    case Item::weighted_coordinate: return coordinate_name(network, "weighted coordinate", item);
    case Item::weighted_rotation: return rotation_name(network, item);
    case Item::weighted_constant: return constant_name(network, item);
    default: return coordinate_name(network, "imported coordinate", item);
    }
}

std::string item_text(const ItemName &name)
{
    std::string text = name.file + ":" + std::to_string(name.line) + ": " + name.kind + " " + name.from;
    if (!name.to.empty()) text += " to " + name.to;
    if (!name.part.empty()) text += " " + name.part;
    return text;
}

} // namespace vornhost
