#include "host/planning/planning.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "adjust/congruence.h"
#include "adjust/linear.h"
#include "adjust/suspects.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/own/road.h"
#include "host/planning/candidates.h"
#include "host/results/test_rule.h"
#include "host/run/silence.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr int most_unknowns_seen = 3000; // by all candidates together: their cofactors are a full matrix

class Plan {
public:
    Plan(Model &its_network, const PlanOptions &its_options, Faults &all, const RunWatch &its_watch)
        : network(its_network), options(its_options), faults(all), watch(its_watch)
    {
    }

    Planning run();

private:
    void weak_points();
    void weak_observations();
    bool refuse(std::string what, std::string remedy);
    bool find_point();
    bool take_candidates();
    bool cofactors_of_candidates();
    void judge(Candidate &candidate, const va::Observation &observation) const;
    double cofactor(int u, int v) const;
    double position(const double deviation[3]) const;

    Model &network;
    const PlanOptions &options;
    Faults &faults;
    const RunWatch &watch;
    OwnOutcome own;
    int helped = -1;                           // point
    std::vector<va::Observation> observations; // [candidates]
    std::vector<int> unknowns;                 // whose cofactors are known, ascending
    std::vector<double> q;                     // all with all
    Planning out;
};

bool Plan::refuse(std::string what, std::string remedy)
{
    out.words = {std::move(what), std::move(remedy)};
    return false;
}

double Plan::position(const double d[3]) const { return std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]); }

void Plan::weak_points()
{
    const std::vector<double> &s = own.adjustment.statistics.deviation;
    for (size_t p = 0; p < own.numbers.points.size(); p++) {
        const double sum = position(&s[3 * p]);
        if (sum > 0.0) out.points.push_back({shown_name(network, point_name(network, own.numbers.points[p])), sum});
    }
    std::stable_sort(out.points.begin(), out.points.end(),
                     [](const WeakPoint &a, const WeakPoint &b) { return a.position > b.position; });
}

const char *unit_of(va::Kind kind)
{
    switch (kind) {
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::vertical_angle:
    case va::Kind::azimuth:
    case va::Kind::bearing: return "rad";
    case va::Kind::image: return "pixel";
    default: return "m";
    }
}

// Rows of the tables; weighted and imported values are no observations to plan.
void Plan::weak_observations()
{
    const va::Equations &e = own.adjustment.equations;
    const va::Statistics &statistics = own.adjustment.statistics;
    const double least = network.tests.least_redundancy;
    const TestRule rule(network.tests, va::tested_rows(statistics, least), 0, 1.0);
    const double found = rule.detectable();
    if (found > 0.0) out.test = rule.name();
    for (int r = 0; r < e.rows(); r++) {
        const size_t i = (size_t)e.observation[(size_t)r];
        if (!e.usable[(size_t)r] || own.numbers.items[i].item > Item::image_point) continue;
        WeakObservation w;
        w.text = item_text(item_name(network, own.numbers, (int)i));
        w.unit = unit_of(own.numbers.model.observations[i].kind);
        w.sigma = e.sigma[(size_t)r];
        const va::RowStatistics &s = statistics.rows[(size_t)r];
        w.redundancy = s.redundancy;
        if (found > 0.0 && s.controlled() && s.share() >= least) w.detectable = found / std::sqrt(s.control);
        out.observations.push_back(w);
    }
    std::stable_sort(out.observations.begin(), out.observations.end(),
                     [](const WeakObservation &a, const WeakObservation &b) { return a.redundancy < b.redundancy; });
}

bool Plan::find_point()
{
    const CandidatePlaces places = candidate_places(network, own.numbers);
    const auto at = places.points.find(options.helped);
    helped = at == places.points.end() ? -1 : at->second;
    if (helped < 0)
        return refuse("there is no point " + quote(options.helped) + " in use", "name a point of the network");
    bool open = false;
    for (int k = 0; k < 3; k++) open |= own.numbers.model.estimated(3 * helped + k);
    return open || refuse("point " + quote(options.helped) + " is held: nothing helps it", "name a free point");
}

bool Plan::take_candidates()
{
    CandidatePlaces places = candidate_places(network, own.numbers);
    out.candidates = read_candidates(options.candidates, network, places, faults);
    if (!faults.empty()) return false;
    for (Candidate &c : out.candidates) {
        va::Observation o;
        c.possible = observation_of(c, network.p.dim, places, own.numbers, &o);
        observations.push_back(o);
    }
    return true;
}

// One adjustment gives the cofactors of all that the candidates see and of the point.
bool Plan::cofactors_of_candidates()
{
    const va::Model &m = own.numbers.model;
    std::set<int> seen;
    for (int k = 0; k < 3; k++) seen.insert(3 * helped + k);
    for (size_t i = 0; i < observations.size(); i++) {
        if (!out.candidates[i].possible) continue;
        int list[va::most_unknowns];
        const int n = va::seen_unknowns(m, observations[i], list);
        seen.insert(list, list + n);
    }
    unknowns.assign(seen.begin(), seen.end());
    if ((int)unknowns.size() > most_unknowns_seen)
        return refuse("the candidates see " + std::to_string(unknowns.size()) + " unknowns; at most " +
                          std::to_string(most_unknowns_seen) +
                          " can be judged at once, as their cofactors are a full matrix",
                      "divide the table of candidates");
    va::Options o;
    o.iterate = false;
    o.residuals = false;
    o.joint = unknowns;
    o.watch.stop = watch.stop;
    const va::Outcome again = va::adjust(&own.numbers.model, o);
    out.stopped = again.status == va::Status::stopped;
    if (again.status != va::Status::adjusted)
        return out.stopped || refuse("the network is not determined", "see vorn check");
    q = again.statistics.joint;
    return true;
}

double Plan::cofactor(int u, int v) const
{
    const auto at = [&](int x) {
        return (size_t)(std::lower_bound(unknowns.begin(), unknowns.end(), x) - unknowns.begin());
    };
    return q[at(u) * unknowns.size() + at(v)];
}

// Whether a candidate sees an orientation that no observation of the network determines.
bool sees_unknown_orientation(const va::Model &m, const va::Outcome &a, const va::Observation &o)
{
    if (o.kind != va::Kind::direction) return false;
    const int u = m.setups[(size_t)o.setup].first + 2;
    return m.estimated(u) && (a.statistics.deviation.size() <= (size_t)u || !(a.statistics.deviation[(size_t)u] > 0.0));
}

void Plan::judge(Candidate &c, const va::Observation &o) const
{
    const va::Model &m = own.numbers.model;
    va::Linear l;
    const bool by_points = own.adjustment.determinacy.datum.state == va::DatumState::by_points;
    va::linearize(m, o, by_points, &l);
    c.possible = l.usable && !sees_unknown_orientation(m, own.adjustment, o);
    if (!c.possible) return;
    int list[va::most_unknowns];
    const int n = va::seen_unknowns(m, o, list), k = va::components(o.kind, m.frame.space);
    const auto at = [k](int row, int column) { return (size_t)row * (size_t)k + (size_t)column; };
    std::vector<double> s((size_t)k * (size_t)k, 0.0), pa((size_t)k * 3, 0.0); // S + A Q A^T, Q_pA
    for (int a = 0; a < k; a++) {
        for (int i = 0; i < n; i++) {
            for (int axis = 0; axis < 3; axis++)
                pa[at(axis, a)] += cofactor(3 * helped + axis, list[i]) * l.slope[a][i];
            for (int b = 0; b < k; b++)
                for (int j = 0; j < n; j++) s[at(a, b)] += l.slope[a][i] * cofactor(list[i], list[j]) * l.slope[b][j];
        }
        s[at(a, a)] += c.sigma * c.sigma;
    }
    if (!va::invert_full(k, &s)) return;
    for (int a = 0; a < k; a++) c.redundancy += c.sigma * c.sigma * s[at(a, a)] / k;
    for (int axis = 0; axis < 3; axis++) {
        double gain = 0.0;
        for (int a = 0; a < k; a++)
            for (int b = 0; b < k; b++) gain += pa[at(axis, a)] * s[at(a, b)] * pa[at(axis, b)];
        c.deviation[axis] = std::sqrt(std::fmax(0.0, cofactor(3 * helped + axis, 3 * helped + axis) - gain));
    }
    c.position = position(c.deviation);
}

Planning Plan::run()
{
    network.solver = Solver::Sparse, network.mode = Mode::Propagation, network.residual_statistics = true;
    for (station_input &s : network.stations.records) s.iconn = s.iconn == 1 ? 0 : s.iconn; // no file of an export
    for (target_input &t : network.targets.records) t.iconn = t.iconn == 1 ? 0 : t.iconn;
    Silence silence;
    own = run_own(network, silence, false, watch);
    out.stopped = own.ending == Ending::stopped;
    out.words = own.run.words;
    out.file = network.path, out.units = file_units(network), out.datum = own.datum;
    if (!own.adjusted()) return std::move(out);
    out.redundancy = own.adjustment.redundancy, out.rows = own.adjustment.rows;
    weak_points();
    weak_observations();
    if (options.helped.empty()) return std::move(out);
    out.helped = options.helped;
    if (!find_point() || !take_candidates() || !cofactors_of_candidates()) return std::move(out);
    for (int k = 0; k < 3; k++) out.deviation[k] = std::sqrt(std::fmax(0.0, cofactor(3 * helped + k, 3 * helped + k)));
    out.position = position(out.deviation);
    for (size_t i = 0; i < observations.size(); i++)
        if (out.candidates[i].possible) judge(out.candidates[i], observations[i]);
    std::stable_sort(out.candidates.begin(), out.candidates.end(), [](const Candidate &a, const Candidate &b) {
        return a.possible != b.possible ? a.possible : a.possible && a.position < b.position;
    });
    return std::move(out);
}

} // namespace

Planning plan_network(Model &network, const PlanOptions &options, Faults &faults, const RunWatch &watch)
{
    return Plan(network, options, faults, watch).run();
}

} // namespace vornhost
