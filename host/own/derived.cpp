#include "host/own/derived.h"

#include <cmath>
#include <string>
#include <unordered_map>

#include "adjust/linear.h"
#include "host/input/names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);

va::Kind kind_of(DerivedKind kind)
{
    switch (kind) {
    case DerivedKind::distance: return va::Kind::scale_bar;
    case DerivedKind::horizontal_distance: return va::Kind::horizontal_distance;
    case DerivedKind::bearing: return va::Kind::bearing;
    case DerivedKind::height_difference: return va::Kind::height_difference;
    default: return va::Kind::angle;
    }
}

const char *word_of(DerivedKind kind)
{
    switch (kind) {
    case DerivedKind::distance: return "distance";
    case DerivedKind::horizontal_distance: return "horizontal distance";
    case DerivedKind::bearing: return "bearing";
    case DerivedKind::height_difference: return "height difference";
    default: return "angle";
    }
}

// Points of the numbers by the names in their records.
std::unordered_map<std::string, int> point_index(const Model &network, const Numbers &numbers)
{
    std::unordered_map<std::string, int> points;
    for (size_t p = 0; p < numbers.points.size(); p++) points.emplace(point_name(network, numbers.points[p]), (int)p);
    return points;
}

// The quantity as an observation of the marks; `use` is false where a point is missing.
va::Observation as_observation(const Model &network, const std::unordered_map<std::string, int> &points,
                               const DerivedRow &row)
{
    va::Observation o;
    o.kind = kind_of(row.kind);
    const auto of = [&](int record) {
        if (record < 0) return -1;
        const auto at = points.find(record_name(network, record));
        if (at == points.end()) o.use = false;
        return at == points.end() ? -1 : at->second;
    };
    o.from = of(row.from), o.to = of(row.to), o.third = of(row.third);
    return o;
}

bool is_angle(DerivedKind kind) { return kind == DerivedKind::bearing || kind == DerivedKind::angle; }

} // namespace

std::vector<va::Form> derived_forms(const Model &network, const Numbers &numbers, const va::Model &model)
{
    const auto points = point_index(network, numbers);
    std::vector<va::Form> forms(network.derived.size());
    for (size_t i = 0; i < forms.size(); i++) {
        const va::Observation o = as_observation(network, points, network.derived.records[i]);
        va::Linear l;
        if (o.use) va::linearize(model, o, false, &l);
        if (!o.use || !l.usable) continue;
        int seen[va::most_unknowns];
        const int n = va::seen_unknowns(model, o, seen);
        for (int k = 0; k < n; k++) forms[i].push_back({seen[k], l.slope[0][k]});
    }
    return forms;
}

void collect_derived(const Model &network, const OwnOutcome &outcome, Results &results)
{
    if (!outcome.adjusted()) return;
    const Numbers &numbers = outcome.numbers;
    const auto points = point_index(network, numbers);
    const auto name = [&](int record) { return record < 0 ? "" : shown_name(network, record_name(network, record)); };
    for (size_t i = 0; i < network.derived.size(); i++) {
        const DerivedRow &row = network.derived.records[i];
        const va::Observation o = as_observation(network, points, row);
        va::Linear l;
        if (o.use) va::linearize(numbers.model, o, false, &l);
        if (!o.use || !l.usable) continue;
        DerivedResult d;
        const bool angle = row.third >= 0;
        d.kind = word_of(row.kind);
        d.unit = is_angle(row.kind) ? "rad" : "m";
        d.at = angle ? name(row.from) : "";
        d.from = name(angle ? row.to : row.from);
        d.to = name(angle ? row.third : row.to);
        d.value = l.value[0];
        if (is_angle(row.kind)) d.value -= turn * std::floor(d.value / turn);
        if (i < outcome.adjustment.statistics.forms.size()) d.deviation = outcome.adjustment.statistics.forms[i];
        results.derived.push_back(d);
    }
}

} // namespace vornhost
