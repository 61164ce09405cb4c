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
    ItemName name{kind, shown_name(network, m.from), shown_name(network, m.to), "", "", 0, ""};
    set_place(network, list.where[(size_t)record], name);
    return name;
}

ItemName baseline_name(const Model &network, int record)
{
    const gps_input &g = network.baselines.records[(size_t)record];
    ItemName name{"baseline", shown_name(network, g.from), shown_name(network, g.to), "", "", 0, ""};
    set_place(network, network.baselines.where[(size_t)record], name);
    return name;
}

ItemName image_name(const Model &network, const Numbers &numbers, int observation)
{
    const ItemPlace &item = numbers.items[(size_t)observation];
    const image_input &image = network.images.records[(size_t)item.record];
    const PointPlace &to = numbers.points[(size_t)numbers.model.observations[(size_t)observation].to];
    return {"image point",
            shown_name(network, image.station),
            shown_name(network, point_name(network, to)),
            "",
            image.file,
            item.part,
            ""};
}

// Of a station or, behind these, a target.
ItemName coordinate_name(const Model &network, const char *kind, const ItemPlace &item)
{
    const int stations = (int)network.stations.size();
    const bool station = item.record < stations;
    const PointPlace point{station, station ? item.record : item.record - stations};
    ItemName name{kind, shown_name(network, point_name(network, point)), "", axes[item.part], "", 0, ""};
    set_place(network, point_source(network, point), name);
    return name;
}

ItemName rotation_name(const Model &network, const Numbers &numbers, const ItemPlace &item)
{
    const SetupPlace &setup = numbers.setups[(size_t)item.record];
    const PointPlace station{true, setup.station};
    ItemName name{
        "weighted rotation", shown_name(network, point_name(network, station)), "", rotations[item.part], "", 0, ""};
    const bool named = setup.named >= 0;
    set_place(network, named ? network.setups.where[(size_t)setup.named] : point_source(network, station), name);
    return name;
}

ItemName sight_name(const Model &network, const char *kind, const List<SightRow> &list, int record)
{
    const SightRow &row = list.records[(size_t)record];
    const auto point = [&](int p) { return shown_name(network, record_name(network, p)); };
    const bool angle = row.third >= 0;
    ItemName name{kind, point(angle ? row.to : row.from), point(angle ? row.third : row.to), "", "", 0, ""};
    if (angle) name.at = point(row.from);
    set_place(network, list.where[(size_t)record], name);
    return name;
}

ItemName vector_name(const Model &network, const char *kind, const List<VectorRow> &list, const ItemPlace &item)
{
    const VectorRow &row = list.records[(size_t)item.record];
    ItemName name{kind, shown_name(network, record_name(network, row.from)), "", axes[item.part], "", 0, ""};
    if (row.to >= 0) name.to = shown_name(network, record_name(network, row.to));
    set_place(network, list.where[(size_t)item.record], name);
    return name;
}

ItemName constant_name(const Model &network, const ItemPlace &item)
{
    ItemName name{"weighted constant", network.group_names[(size_t)item.record], "", constants[item.part], "", 0, ""};
    set_place(network, network.groups.where[(size_t)item.record], name);
    return name;
}

std::string shown_point(const Model &network, const Numbers &numbers, int point)
{
    return shown_name(network, point_name(network, numbers.points[(size_t)point]));
}

// "the instrument at A", "the target B seen from A"
std::string centred_end(const Model &network, const Numbers &numbers, const MotionPlace &end)
{
    const std::string stand = shown_point(network, numbers, end.instrument);
    return end.target < 0 ? "the instrument at " + stand
                          : "the target " + shown_point(network, numbers, end.target) + " seen from " + stand;
}

// Of an instrument, or of the target of a sight.
ItemName centring_name(const Model &network, const Numbers &numbers, const ItemPlace &item)
{
    const MotionPlace &end = numbers.motions[(size_t)item.record];
    ItemName name{"centring", shown_point(network, numbers, end.instrument), "", axes[item.part], "", 0, ""};
    if (end.target >= 0) name.to = shown_point(network, numbers, end.target);
    set_place(network, point_source(network, numbers.points[(size_t)end.instrument]), name);
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
        const SetupPlace &setup = numbers.setups[(size_t)i];
        const std::string station = shown_name(network, record_name(network, setup.station));
        return (k == 2 ? "orientation" : rotations[k]) + std::string(" of ") + station + setup_words(network, setup);
    }
    if (find(m.constants, 3, unknown, &i, &k))
        return constants[k] + std::string(" of group ") +
               network.group_names[(size_t)numbers.constant_groups[(size_t)i]];
    if (find(m.cameras, 10, unknown, &i, &k))
        return inner[k] + std::string(" of camera ") +
               shown_name(network, network.cameras.records[(size_t)numbers.camera_records[(size_t)i]].name);
    if (!find(m.motions, 7, unknown, &i, &k)) return "an unknown";
    const MotionPlace &motion = numbers.motions[(size_t)i];
    if (motion.lump == 0) return "centring " + std::string(axes[k]) + " of " + centred_end(network, numbers, motion);
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
    case Item::weighted_rotation: return rotation_name(network, numbers, item);
    case Item::horizontal_distance:
        return sight_name(network, "horizontal distance", network.horizontal_distances, item.record);
    case Item::bearing: return sight_name(network, "bearing", network.bearings, item.record);
    case Item::angle: return sight_name(network, "angle", network.angles, item.record);
    case Item::scale_bar: return sight_name(network, "scale bar", network.scale_bars, item.record);
    case Item::observed_coordinate: return vector_name(network, "observed coordinate", network.coordinates, item);
    case Item::coordinate_difference:
        return vector_name(network, "coordinate difference", network.coordinate_differences, item);
    case Item::weighted_constant: return constant_name(network, item);
    case Item::centring: return centring_name(network, numbers, item);
    default: return coordinate_name(network, "imported coordinate", item);
    }
}

ItemNotes item_notes(const Model &m, const ItemPlace &item)
{
    const auto of = [&](const auto &list) { return ItemNotes{&list.notes, (size_t)item.record}; };
    switch (item.item) {
    case Item::distance: return of(m.distances);
    case Item::height_difference: return of(m.heightdiffs);
    case Item::direction: return of(m.directions);
    case Item::vertical_angle: return of(m.verticals);
    case Item::azimuth: return of(m.azimuths);
    case Item::baseline: return of(m.baselines);
    case Item::horizontal_distance: return of(m.horizontal_distances);
    case Item::bearing: return of(m.bearings);
    case Item::angle: return of(m.angles);
    case Item::scale_bar: return of(m.scale_bars);
    case Item::observed_coordinate: return of(m.coordinates);
    case Item::coordinate_difference: return of(m.coordinate_differences);
    default: return {};
    }
}

std::string setup_words(const Model &network, const SetupPlace &setup)
{
    std::string words;
    if (setup.named >= 0 && !network.setups.records[(size_t)setup.named].word.empty())
        words += ", set-up " + network.setups.records[(size_t)setup.named].word;
    if (setup.set >= 0) words += ", set " + network.set_words[(size_t)setup.set];
    return words;
}

std::string item_text(const ItemName &name)
{
    std::string text = name.file + ":" + std::to_string(name.line) + ": " + name.kind + " ";
    if (!name.at.empty()) text += "at " + name.at + " from ";
    text += name.from;
    if (!name.to.empty()) text += " to " + name.to;
    if (!name.part.empty()) text += " " + name.part;
    return text;
}

} // namespace vornhost
