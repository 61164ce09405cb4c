// A network set free from its control points.

#include <algorithm>
#include <cmath>

#include "host/epochs/compared_values.h"
#include "host/epochs/epoch_networks.h"
#include "host/input/names.h"
#include "host/run/silence.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// A point with its held coordinates, and their variances.
struct ControlPoint {
    ComparedPoint point;
    std::array<double, 3> variance{{0, 0, 0}};
};

// Notes what a record holds and sets it free; other points take no part in the datum.
template <class Record> void set_free(Model &m, Record &r, std::vector<ControlPoint> &control)
{
    if (r.status <= 0) return;
    const double unit = metres_per_unit(m.p);
    ControlPoint c;
    for (int k = 0; k < 3; k++) {
        const bool exists = m.p.dim == 3 || (m.p.dim == 1 ? k == 2 : k < 2);
        if (!exists || r.ix[k] < 0) continue;
        const bool held = is_held(r.ix[k]);
        c.point.first[(size_t)k] = r.x[k] * unit;
        if (held) c.point.axes.push_back(k);
        if (r.ix[k] == CODE_WEIGHTED) c.variance[(size_t)k] = std::pow(r.sx[k] * unit, 2);
        r.ix[k] = held ? CODE_FREE : CODE_NO_DATUM;
    }
    if (c.point.axes.empty()) return;
    c.point.name = shown_name(m, r.name);
    m.covariance_points.push_back(c.point.name);
    control.push_back(c);
}

AdjustedEpochs refused(std::string what, std::string remedy, bool bad_input)
{
    AdjustedEpochs out;
    out.words = {std::move(what), std::move(remedy)};
    out.bad_input = bad_input;
    return out;
}

EpochResult network_result(const Model &m, const OwnOutcome &run)
{
    EpochResult r;
    r.file = m.path, r.title = m.title, r.date = m.date, r.datum = run.datum;
    r.squares = run.adjustment.iteration.squares;
    r.redundancy = run.adjustment.redundancy;
    return r;
}

va::EpochValues given_values(const std::vector<ControlPoint> &control, const double origin[3])
{
    va::EpochValues v;
    std::vector<double> variance;
    for (const ControlPoint &c : control)
        for (const int k : c.point.axes) {
            v.x.push_back(c.point.first[(size_t)k] - origin[k]);
            variance.push_back(c.variance[(size_t)k]);
        }
    const size_t n = variance.size();
    v.q.assign(n * n, 0.0);
    for (size_t i = 0; i < n; i++) v.q[i * n + i] = variance[i];
    return v;
}

} // namespace

AdjustedEpochs adjust_to_control(Model &m, const RunWatch &watch)
{
    std::vector<ControlPoint> control;
    m.covariance_points.clear();
    for (station_input &s : m.stations.records) set_free(m, s, control);
    for (target_input &t : m.targets.records) set_free(m, t, control);
    AdjustedEpochs out;
    out.numbers.first = {0};
    for (const ControlPoint &c : control) {
        out.numbers.first.push_back(out.numbers.n() + (int)c.point.axes.size());
        out.points.push_back(c.point);
    }
    if (control.empty())
        return refused(m.path + " has no fixed or weighted coordinates", "write code fixed for the control points",
                       true);
    if (out.numbers.n() > most_compared)
        return refused(std::to_string(out.numbers.n()) + " held coordinates; at most " + std::to_string(most_compared) +
                           " can be tested at once, as their matrices are full",
                       "hold fewer points", true);
    m.solver = Solver::Sparse, m.mode = Mode::Statistics, m.residual_statistics = false;
    for (station_input &s : m.stations.records) s.iconn = s.iconn == 1 ? 0 : s.iconn; // no file of an export
    for (target_input &t : m.targets.records) t.iconn = t.iconn == 1 ? 0 : t.iconn;
    Silence silence;
    const OwnOutcome run = run_own(m, silence, false, watch);
    out.stopped = run.ending == Ending::stopped;
    if (out.stopped) return out;
    if (!run.adjusted()) {
        out.words = run.run.words;
        if (!out.words.empty()) out.words[0] = m.path + " (its control points are free here): " + out.words[0];
        return out;
    }
    EpochResult given;
    given.file = "control points";
    out.epochs = {given, network_result(m, run)};
    out.notes = run.run.prepared.notes;
    out.numbers.values = {given_values(control, run.numbers.origin),
                          compared_values(m, run, out.points, run.numbers.origin)};
    out.numbers.motions = open_motions({&run}, out.points);
    if (out.numbers.n() <= out.numbers.motions.cols)
        return refused("the control points hold " + std::to_string(out.numbers.n()) +
                           " coordinates, and the free network has " + std::to_string(out.numbers.motions.cols) +
                           " open motions: nothing checks the control points",
                       "hold more points, or observe more of what they say", false);
    return out;
}

} // namespace vornhost
