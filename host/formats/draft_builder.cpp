#include "host/formats/draft_builder.h"

#include <cmath>

#include "host/input/utf8.h"

namespace vornhost {

namespace {

bool by_axis(DraftKind kind)
{
    return kind == DraftKind::baseline || kind == DraftKind::coordinates || kind == DraftKind::coordinate_difference;
}

bool observes_plan(DraftKind kind, const DraftRow &row)
{
    if (by_axis(kind)) return row.value[0] || row.value[1];
    return kind != DraftKind::height_difference;
}

bool observes_height(DraftKind kind, const DraftRow &row)
{
    if (by_axis(kind)) return row.value[2].has_value();
    return kind == DraftKind::distance || kind == DraftKind::height_difference || kind == DraftKind::vertical_angle;
}

bool positive_definite(const std::array<MaybeNumber, 6> &c)
{
    const double xx = c[0].value_or(0), yy = c[1].value_or(0), zz = c[2].value_or(0), xy = c[3].value_or(0),
                 xz = c[4].value_or(0), yz = c[5].value_or(0);
    const double plane = xx * yy - xy * xy;
    const double space = xx * (yy * zz - yz * yz) - xy * (xy * zz - yz * xz) + xz * (xy * yz - yy * xz);
    return xx > 0.0 && yy > 0.0 && zz > 0.0 && plane > 0.0 && space > 0.0;
}

// Distances of the table of distances are in the plane horizontal ones.
void flatten_distances(Draft &draft)
{
    std::vector<DraftRow> &flat = draft.of(DraftKind::horizontal_distance);
    std::vector<DraftRow> &distances = draft.of(DraftKind::distance);
    if (distances.empty()) distances.swap(flat);
}

} // namespace

DraftPoint &DraftBuilder::point(const std::string &name, Source where)
{
    const auto [found, added] = index.emplace(name, draft.points.size());
    if (!added) return draft.points[found->second];
    if (name.empty())
        faults.add(where, "a point has no name", "give it one");
    else if (utf8_count(name) > longest_name)
        faults.add(where, "name " + quote(name) + " is longer than 40 characters", "shorten it");
    else if (printable(name) != name)
        faults.add(where, "name " + quote(name) + " holds control characters", "rename the point");
    DraftPoint point;
    point.name = name;
    point.where = where;
    point.code = {CODE_FREE, CODE_FREE, CODE_FREE};
    draft.points.push_back(point);
    reached.emplace_back();
    return draft.points.back();
}

const DraftPoint *DraftBuilder::find(const std::string &name) const
{
    const auto found = index.find(name);
    return found == index.end() ? nullptr : &draft.points[found->second];
}

void DraftBuilder::add(DraftKind kind, DraftRow row, size_t values)
{
    if (kind == DraftKind::baseline && row.covariance.empty() && !positive_definite(row.product))
        faults.add(row.where,
                   "the covariance of the vector from " + quote(row.from) + " to " + quote(row.to) +
                       " is not positive definite",
                   "check its variances and covariances");
    const bool one = kind == DraftKind::coordinates;
    if (row.from.empty() || (!one && row.to.empty()) || (kind == DraftKind::angle && row.at.empty()))
        faults.add(row.where, "an observation does not name its points", "name them");
    if (!row.to.empty() && row.from == row.to)
        faults.add(row.where, "an observation goes from " + quote(row.from) + " to itself", "name different points");
    const bool plan = observes_plan(kind, row), height = observes_height(kind, row);
    any_plan = any_plan || plan;
    any_height = any_height || height;
    for (const std::string *name : {&row.at, &row.from, &row.to}) {
        if (name->empty()) continue;
        point(*name, row.where);
        Reach &reach = reached[index[*name]];
        reach.plan = reach.plan || (plan && row.use);
        reach.height = reach.height || (height && row.use);
    }
    if (!by_axis(kind) && kind != DraftKind::height_difference)
        point(kind == DraftKind::angle ? row.at : row.from, row.where).station = true;
    values_taken += values;
    row.id = printable(row.id);
    check_sizes(row);
    draft.of(kind).push_back(std::move(row));
}

// What the network file has room for.
void DraftBuilder::check_sizes(const DraftRow &row)
{
    constexpr double largest = 1e9, least = 1e-12; // values; standard deviations
    const auto beyond = [&](const MaybeNumber &value) { return value && !(std::fabs(*value) <= largest); };
    const auto bad_sigma = [&](const MaybeNumber &sigma) { return sigma && !(*sigma >= least && *sigma <= largest); };
    bool bad = beyond(row.h1) || beyond(row.h2) || beyond(row.length) || (row.length && !(*row.length >= least));
    for (size_t axis = 0; axis < 3; axis++) bad = bad || beyond(row.value[axis]) || bad_sigma(row.sigma[axis]);
    for (const MaybeNumber &product : row.product) bad = bad || beyond(product);
    if (bad) faults.add(row.where, "a value or standard deviation is out of all proportion", "correct it or its unit");
}

void DraftBuilder::leave_out(Source at, const std::string &words, const std::string &reason, size_t values)
{
    note(at, words + " is left out: " + reason);
    values_left_out += values;
}

void DraftBuilder::settle_dimension()
{
    if (draft.crs.empty())
        draft.dimension = any_plan && any_height ? 3 : any_plan ? 2 : 1;
    else
        draft.dimension = 3;
    if (draft.dimension == 2) flatten_distances(draft);
}

// What no observation reaches and nothing holds is not in the network.
void DraftBuilder::settle_codes()
{
    const bool plan = draft.dimension != 1, height = draft.dimension != 2;
    for (const DraftPoint &point : draft.points)
        for (size_t axis = 0; axis < 3; axis++) {
            DraftRow row;
            row.where = point.where;
            row.value[0] = point.value[axis];
            row.sigma[0] = point.sigma[axis];
            check_sizes(row);
        }
    for (size_t i = 0; i < draft.points.size(); i++) {
        DraftPoint &point = draft.points[i];
        bool any = false;
        for (size_t axis = 0; axis < 3; axis++) {
            const bool counts = axis < 2 ? plan : height, seen = axis < 2 ? reached[i].plan : reached[i].height;
            if (!counts || (!seen && !is_held(point.code[axis]))) {
                point.code[axis] = CODE_ABSENT;
                point.sigma[axis].reset();
            }
            any = any || point.code[axis] != CODE_ABSENT;
        }
        point.off = !any || !(reached[i].plan || reached[i].height);
        if (point.off) note(point.where, "point " + quote(point.name) + " is off: no observation reaches it");
    }
}

void DraftBuilder::finish(Source file)
{
    if (values_taken == 0 && faults.empty())
        faults.add(file, "no observations that can take part", "nothing is left to adjust");
    if (!faults.empty()) return;
    settle_dimension();
    settle_codes();
    note(file, "observations read " + std::to_string(values_taken + values_left_out) + " = taken " +
                   std::to_string(values_taken) + " + left out " + std::to_string(values_left_out));
}

} // namespace vornhost
