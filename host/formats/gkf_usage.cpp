#include "host/formats/gkf_usage.h"

namespace vornhost {

namespace {

struct Usage {
    std::set<std::string> plan, heights; // points whose x and y, whose z observations reach
    std::set<std::string> stations;
};

bool reaches_plan(DraftKind kind) { return kind != DraftKind::height_difference && kind != DraftKind::vertical_angle; }

bool reaches_heights(DraftKind kind, int dimension)
{
    const bool slope = kind == DraftKind::distance && dimension == 3;
    return slope || kind == DraftKind::height_difference || kind == DraftKind::vertical_angle;
}

// Zenith angles reach x and y too, but cannot give them alone; where nothing else does, these are known.
Usage usage_of(const Draft &draft)
{
    Usage usage;
    for (size_t k = 0; k < draft_kinds; k++) {
        const DraftKind kind = (DraftKind)k;
        const bool by_axis =
            kind == DraftKind::baseline || kind == DraftKind::coordinates || kind == DraftKind::coordinate_difference;
        for (const DraftRow &row : draft.of(kind))
            for (const std::string *id : {&row.at, &row.from, &row.to}) {
                if (id->empty()) continue;
                if (by_axis ? row.value[0].has_value() : reaches_plan(kind)) usage.plan.insert(*id);
                if (by_axis ? row.value[2].has_value() : reaches_heights(kind, draft.dimension))
                    usage.heights.insert(*id);
            }
        for (const DraftRow &row : draft.of(kind))
            if (!by_axis && kind != DraftKind::height_difference)
                usage.stations.insert(kind == DraftKind::angle ? row.at : row.from);
    }
    return usage;
}

bool is_free(GkfState state) { return state == GkfState::adjusted || state == GkfState::datum; }

int code_of(GkfState state, bool some_datum)
{
    if (state == GkfState::fixed) return CODE_FIXED;
    if (state == GkfState::none) return CODE_ABSENT;
    return state == GkfState::datum || !some_datum ? CODE_FREE : CODE_NO_DATUM;
}

bool has_datum(const GkfPoints &points)
{
    for (const GkfPoint &point : points.all())
        if (point.xy_state == GkfState::datum || point.z_state == GkfState::datum) return true;
    return false;
}

// The state of a coordinate that no observation reaches is none, unless it is held.
GkfState reached(GkfContext &context, const GkfPoint &point, GkfState state, bool observed, const char *axes)
{
    if (!is_free(state) || observed) return state;
    context.note(point.where, std::string(axes) + " of point " + quote(point.id) +
                                  " left out: no observation reaches it; gama-local leaves it out too");
    return GkfState::none;
}

DraftPoint draft_point(GkfContext &context, const GkfPoint &point, const Usage &usage, bool some_datum)
{
    const int dimension = context.draft.dimension;
    const bool plan = dimension != 1, heights = dimension != 2;
    const bool held = context.held_plan.count(point.id) > 0;
    const GkfState xy = held ? GkfState::fixed
                             : reached(context, point, plan ? point.xy_state : GkfState::none,
                                       usage.plan.count(point.id) > 0, "x and y");
    const GkfState z =
        reached(context, point, heights ? point.z_state : GkfState::none, usage.heights.count(point.id) > 0, "z");
    DraftPoint out;
    out.name = point.id;
    out.where = point.where;
    out.value = {point.x, point.y, point.z};
    out.code = {code_of(xy, some_datum), code_of(xy, some_datum), code_of(z, some_datum)};
    out.station = usage.stations.count(point.id) > 0;
    out.off = (!plan || xy == GkfState::none) && (!heights || z == GkfState::none);
    return out;
}

} // namespace

void add_points(GkfContext &context)
{
    const Usage usage = usage_of(context.draft);
    const bool some_datum = has_datum(context.points);
    for (const GkfPoint &point : context.points.all())
        context.draft.points.push_back(draft_point(context, point, usage, some_datum));
}

} // namespace vornhost
