// The comparison of include/vorn/compare.h: the networks of applications through host/epochs.

#include "vorn/compare.h"

#include <new>

#include "host/application/read_access.h"
#include "host/epochs/compare_report.h"
#include "host/run/network_run.h"
#include "vorn/version.h"

namespace vornapi {

namespace {

vornhost::CompareOptions options_of(const CompareOptions &from)
{
    vornhost::CompareOptions o;
    o.level = from.level;
    o.apriori = from.apriori;
    o.groups = from.groups;
    o.epochs.held = from.held;
    o.epochs.points = from.points;
    o.epochs.dates = from.dates;
    return o;
}

Shift shift_of(const vornhost::Shift &from)
{
    Shift s;
    for (size_t k = 0; k < 3; k++) s.by[k] = from.by[k], s.deviation[k] = from.deviation[k];
    if (from.test.made()) s.p = from.test.p;
    s.significant = from.test.made() && !from.test.passed();
    return s;
}

ComparedPoint point_of(const vornhost::PointComparison &from)
{
    ComparedPoint p;
    p.name = from.name;
    p.stable = from.stable;
    p.shifts.reserve(from.shifts.size());
    for (const vornhost::Shift &s : from.shifts) p.shifts.push_back(shift_of(s));
    return p;
}

Comparison refused(const std::string &sentence, const std::string &remedy)
{
    Comparison c;
    c.faults = why_not("", {sentence, remedy});
    return c;
}

Comparison comparison_of(const vornhost::Comparison &from)
{
    Comparison c;
    c.outcome = from.made() ? Outcome::adjusted : from.stopped ? Outcome::cancelled : Outcome::refused;
    c.notes = from.notes;
    if (!from.made()) c.faults = why_not("", from.words);
    if (!from.made()) return c;
    c.congruent = from.congruence.passed();
    c.p = from.congruence.p;
    c.variance_factor = from.factor.value;
    c.points.reserve(from.points.size());
    for (const vornhost::PointComparison &p : from.points) c.points.push_back(point_of(p));
    c.json = compare_json(from, VORN_VERSION);
    c.report = compare_report(from, vornhost::utc_now());
    return c;
}

Comparison compare_all(const std::vector<Network> &epochs, const CompareOptions &options)
{
    if (epochs.size() < 2) return refused("one epoch cannot be compared", "give two networks or more");
    if (!(options.level > 0.0 && options.level < 1.0)) return refused("the level is not between 0 and 1", "give 0.05");
    std::vector<vornhost::Model> models;
    models.reserve(epochs.size());
    for (const Network &network : epochs) models.push_back(ReadAccess::twin(network));
    return comparison_of(vornhost::compare(models, options_of(options), {nullptr, options.cancel}));
}

} // namespace

Comparison compare(const std::vector<Network> &epochs, const CompareOptions &options) noexcept
{
    try {
        return compare_all(epochs, options);
    } catch (const std::bad_alloc &) {
        return refused("out of memory", "compare fewer points");
    } catch (const std::exception &error) {
        return refused(error.what(), "");
    }
}

} // namespace vornapi
