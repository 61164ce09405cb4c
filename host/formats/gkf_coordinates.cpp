// Clusters of coordinates: height differences, observed coordinates, vectors.

#include <cmath>

#include "host/formats/gkf_cluster.h"
#include "host/formats/gkf_tag.h"
#include "host/formats/number_text.h"

namespace vornhost {

namespace {

// Why a coordinate of a point cannot take part; empty when it can.
std::string inactive(const GkfContext &context, const std::string &id, int axis)
{
    const std::string name = "point " + quote(id);
    const GkfPoint *point = context.points.find(id);
    if (!point) return name + " is not declared; add it with fix or adj";
    if (axis != 2 && point->undetermined) return name + " is left out";
    const bool active = axis == 2 ? context.points.z_active(id) : context.points.xy_active(id);
    return active ? ""
                  : name + (axis == 2 ? " has no fix or adj for z; write one" : " has no fix or adj for xy; write one");
}

std::string inactive(const GkfContext &context, const std::string &from, const std::string &to, int axis)
{
    const std::string reason = inactive(context, from, axis);
    return reason.empty() ? inactive(context, to, axis) : reason;
}

bool read_pair(GkfTag &tag, DraftRow &row)
{
    for (const char *end : {"from", "to"})
        if (!tag.given(end)) tag.missing(end, "name the point");
    const std::optional<std::string> from = tag.id("from"), to = tag.id("to");
    if (!from || !to) return false;
    if (*from == *to) tag.fault("to", "both points are " + quote(*to), "name two points");
    row.from = *from;
    row.to = *to;
    row.where = tag.at();
    row.id = std::string(tag.text("extern").value_or(""));
    return *from != *to;
}

void read_dh(const XmlElement &element, bool has_matrix, GkfCluster &cluster)
{
    GkfContext &context = cluster.context;
    GkfTag tag(element, {"from", "to", "val", "stdev", "dist", "extern"}, context.faults);
    GkfObservation observation;
    observation.kind = DraftKind::height_difference;
    DraftRow &row = observation.row;
    const bool ends = read_pair(tag, row);
    if (!tag.given("val")) tag.missing("val", "write the observed value");
    row.value[0] = tag.number("val");
    if (!ends || !row.value[0]) return;
    const bool own_sigma = !has_matrix && tag.given("stdev"),
               by_length = !has_matrix && !own_sigma && tag.given("dist");
    if (own_sigma) row.sigma[0] = tag.positive("stdev");
    if (const std::optional<double> kilometres = by_length ? tag.positive("dist") : std::nullopt) {
        row.length = tidy(*kilometres * 1000.0, *kilometres * 1000.0);
        context.draft.sigma_per_root_km = context.sigma_apriori;
    }
    observation.words = "height difference from " + row.from + " to " + row.to;
    observation.reason = inactive(context, row.from, row.to, 2);
    const bool active = observation.reason.empty();
    cluster.add(std::move(observation), {{0, 1.0, active}});
}

// The values of an observed vector or point, x y z. What a point does not take part in is struck out; the reason is
// given when nothing is left.
void add_components(GkfCluster &cluster, GkfObservation observation, bool pair)
{
    GkfContext &context = cluster.context;
    DraftRow &row = observation.row;
    std::vector<GkfCluster::Value> values;
    std::string reason, struck;
    size_t active = 0;
    for (int axis = 0; axis < 3; axis++) {
        if (!row.value[(size_t)axis]) continue;
        const std::string why = pair ? inactive(context, row.from, row.to, axis) : inactive(context, row.from, axis);
        const double scale = axis == 1 && context.axes.turned() ? -1.0 : 1.0;
        values.push_back({axis, scale, why.empty()});
        if (!why.empty()) {
            reason = why;
            struck += (struck.empty() ? "" : ", ") + std::string(1, "xyz"[axis]);
            row.value[(size_t)axis].reset();
        } else {
            active++;
        }
    }
    if (active == 0)
        observation.reason = reason;
    else if (!reason.empty())
        context.note(row.where, struck + " of " + observation.words + " left out: " + reason);
    if (pair) observation.kind = active == 3 ? DraftKind::baseline : DraftKind::coordinate_difference;
    if (pair && context.draft.dimension == 1) {
        observation.kind = DraftKind::height_difference;
        row.value = {row.value[2], std::nullopt, std::nullopt};
        for (GkfCluster::Value &value : values) value.axis = 0; // x and y are struck out
    }
    cluster.add(std::move(observation), values);
}

void read_vec(const XmlElement &element, GkfCluster &cluster)
{
    GkfContext &context = cluster.context;
    GkfTag tag(element, {"from", "to", "dx", "dy", "dz", "from_dh", "to_dh", "extern"}, context.faults);
    GkfObservation observation;
    observation.kind = DraftKind::baseline;
    const bool ends = read_pair(tag, observation.row);
    bool good = ends;
    static const char *const names[] = {"dx", "dy", "dz"};
    for (size_t axis = 0; axis < 3; axis++) {
        if (!tag.given(names[axis])) tag.missing(names[axis], "write the component");
        observation.row.value[axis] = tag.number(names[axis]);
        good = good && observation.row.value[axis];
    }
    const std::optional<double> at = tag.number("from_dh"), target = tag.number("to_dh");
    if (at || target) context.heights_ignored++;
    if (!good) return;
    observation.words = "vector from " + observation.row.from + " to " + observation.row.to;
    add_components(cluster, std::move(observation), true);
}

void read_point(const XmlElement &element, const std::string &id, GkfCluster &cluster)
{
    // Its attributes were checked when the points were read.
    Faults known;
    GkfTag tag(element, {"id", "x", "y", "z", "fix", "adj"}, known);
    GkfObservation observation;
    observation.kind = DraftKind::coordinates;
    const std::optional<std::string> name = tag.id("id");
    if (!name) return;
    observation.row.from = *name;
    observation.row.where = tag.at();
    observation.row.id = id;
    observation.row.value = {tag.number("x"), tag.number("y"), tag.number("z")};
    observation.words = "observed point " + *name;
    const auto &value = observation.row.value;
    if (!value[0] && !value[1] && !value[2])
        cluster.context.faults.add(tag.at(), "observed point " + quote(*name) + " has no coordinates",
                                   "write x and y, z, or all");
    else
        add_components(cluster, std::move(observation), false);
}

} // namespace

void read_height_differences(const XmlElement &element, GkfContext &context)
{
    const GkfTag tag(element, {}, context.faults);
    const XmlElement *matrix = matrix_of(element, context.faults);
    GkfCluster cluster(context);
    for (const XmlElement &child : element.children) {
        if (child.name == "dh")
            read_dh(child, matrix != nullptr, cluster);
        else if (child.name != "cov-mat")
            unknown_element(child, {"dh", "cov-mat"}, context.faults);
    }
    cluster.finish(matrix);
}

void read_coordinates(const XmlElement &element, GkfContext &context)
{
    const GkfTag tag(element, {"extern"}, context.faults);
    const XmlElement *matrix = matrix_of(element, context.faults);
    GkfCluster cluster(context);
    for (const XmlElement &child : element.children) {
        if (child.name == "point")
            read_point(child, std::string(tag.text("extern").value_or("")), cluster);
        else if (child.name != "cov-mat")
            unknown_element(child, {"point", "cov-mat"}, context.faults);
    }
    cluster.finish(matrix);
}

void read_vectors(const XmlElement &element, GkfContext &context)
{
    const GkfTag tag(element, {}, context.faults);
    const XmlElement *matrix = matrix_of(element, context.faults);
    GkfCluster cluster(context);
    for (const XmlElement &child : element.children) {
        if (child.name == "vec")
            read_vec(child, cluster);
        else if (child.name != "cov-mat")
            unknown_element(child, {"vec", "cov-mat"}, context.faults);
    }
    cluster.finish(matrix);
}

} // namespace vornhost
