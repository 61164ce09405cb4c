#include "host/formats/gkf_points.h"

namespace vornhost {

namespace {

struct StateWord {
    const char *word;
    bool xy, xy_datum, z, z_datum;
};

const StateWord state_words[] = {{"xy", true, false, false, false}, {"XY", true, true, false, false},
                                 {"z", false, false, true, false},  {"Z", false, false, true, true},
                                 {"xyz", true, false, true, false}, {"XYZ", true, true, true, true},
                                 {"XYz", true, true, true, false},  {"xyZ", true, false, true, true}};

const StateWord *read_states(GkfTag &tag, const char *attribute)
{
    const std::optional<std::string_view> written = tag.text(attribute);
    if (!written) return nullptr;
    for (const StateWord &state : state_words)
        if (*written == state.word) return &state;
    tag.fault(attribute, quote(*written) + " is not known for " + attribute,
              "write one of xy, XY, z, Z, xyz, XYZ, XYz, xyZ");
    return nullptr;
}

// What is fixed wins over what is adjusted.
void read_states(GkfTag &tag, GkfPoint &point)
{
    if (const StateWord *adj = read_states(tag, "adj")) {
        if (adj->xy) point.xy_state = adj->xy_datum ? GkfState::datum : GkfState::adjusted;
        if (adj->z) point.z_state = adj->z_datum ? GkfState::datum : GkfState::adjusted;
    }
    if (const StateWord *fix = read_states(tag, "fix")) {
        if (fix->xy) point.xy_state = GkfState::fixed;
        if (fix->z) point.z_state = GkfState::fixed;
        if (fix->xy) point.fixed_xy = tag.at("fix");
        if (fix->z) point.fixed_z = tag.at("fix");
    }
}

} // namespace

GkfPoint &GkfPoints::entry(const std::string &id, Source at)
{
    const auto [place, added] = index.emplace(id, points.size());
    if (added) {
        points.emplace_back();
        points.back().id = id;
        points.back().where = at;
    }
    return points[place->second];
}

void GkfPoints::read(GkfTag &tag)
{
    if (!tag.given("id")) tag.missing("id", "name the point");
    const std::optional<std::string> id = tag.id("id");
    if (!id) return;
    GkfPoint &point = entry(*id, tag.at());
    if (tag.given("x") != tag.given("y"))
        tag.fault(tag.given("x") ? "x" : "y", "x and y of point " + quote(*id) + " are not both given",
                  "write both or neither");
    const std::optional<double> x = tag.number("x"), y = tag.number("y"), z = tag.number("z");
    const bool moves_plan =
        point.xy_state == GkfState::fixed && x && y && point.x && (*x != *point.x || *y != *point.y);
    const bool moves_height = point.z_state == GkfState::fixed && z && point.z && *z != *point.z;
    if (moves_plan || moves_height) moved_points.emplace_back(tag.at(), *id);
    if (x && y) {
        point.x = x;
        point.y = y;
    }
    if (z) point.z = z;
    read_states(tag, point);
}

void GkfPoints::check(Faults &faults) const
{
    for (const GkfPoint &point : points) {
        if (point.xy_state == GkfState::fixed && !point.x)
            faults.add(point.fixed_xy, "fixed point " + quote(point.id) + " has no x and y",
                       "write them, or adj=\"xy\"");
        if (point.z_state == GkfState::fixed && !point.z)
            faults.add(point.fixed_z, "fixed point " + quote(point.id) + " has no z", "write it, or adj=\"z\"");
    }
}

void GkfPoints::leave_out_plan(const std::string &id)
{
    GkfPoint &point = points[index.at(id)];
    point.xy_state = GkfState::none;
    point.undetermined = true;
}

const GkfPoint *GkfPoints::find(const std::string &id) const
{
    const auto found = index.find(id);
    return found == index.end() ? nullptr : &points[found->second];
}

bool GkfPoints::xy_active(const std::string &id) const
{
    const GkfPoint *point = find(id);
    return point && point->xy_state != GkfState::none;
}

bool GkfPoints::z_active(const std::string &id) const
{
    const GkfPoint *point = find(id);
    return point && point->z_state != GkfState::none;
}

} // namespace vornhost
