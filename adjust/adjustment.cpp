#include "adjust/adjustment.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "adjust/cofactors.h"

namespace vornadjust {

namespace {

const int most_misfits = 10;
const double clear_pivot = 1e-6; // relative to the diagonal element; above it nothing is near to being undetermined
// Standard deviations from which on an unknown counts as hardly determined where the iteration fails: of an angle, and
// of a coordinate beside the size of the network.
const double hardly = 1e-3;
const int most_hardly = 3;

class Adjustment {
public:
    Adjustment(Model *m, const Options &o) : model(*m), options(o)
    {
        factor_options.threads = o.threads, factor_options.watch = o.watch;
    }

    Outcome run();

private:
    Status bad_covariance();
    Status find_values();
    Status find_precision();
    void suspect(const Cofactors &cofactors);
    Status choose_datum();
    bool clearly_determined() const;
    bool has_isolated_point() const;
    bool clear_without_curvature();
    bool has_findings(const std::vector<double> &values, const std::vector<char> &made);
    Status judge_factor(const std::vector<double> &first);
    Status judge_failure(const std::vector<double> &first);
    void find_hardly_determined();
    void count();
    void find_left_out();
    void find_seen();

    Model &model;
    const Options &options;
    FactorOptions factor_options;
    System system;
    FreeDatum datum;
    Outcome outcome;
};

Status Adjustment::choose_datum()
{
    options.watch.tell(Step::equations);
    fill(model, Derivatives::invariant, &system.equations, options.threads);
    if (system.share.sum(system.equations.usable_rows()) == 0) return Status::no_observations;
    options.watch.tell(Step::datum);
    outcome.determinacy.datum = find_datum(&model, system);
    const Datum &found = outcome.determinacy.datum;
    if (system.share.shared() && has_isolated_point()) return Status::undetermined;
    if (has_isolated_point() && has_findings(model.value, options.made)) return Status::undetermined;
    switch (found.state) {
    case DatumState::loose: return Status::no_datum;
    case DatumState::not_carried:
        if (!system.share.shared()) has_findings(model.value, options.made);
        return Status::datum_points;
    case DatumState::held: break;
    case DatumState::by_points:
        datum = free_datum(system.columns, found, system.share);
        system.held = held_columns(model, system.columns, found);
        system.derivatives = Derivatives::invariant;
    }
    system.present = !model.frame.curved() || system.derivatives == Derivatives::invariant;
    return Status::adjusted;
}

// Whether a point with unknown coordinates is seen by no row.
bool Adjustment::has_isolated_point() const
{
    for (int u = 0; u < 3 * model.n_points; u++)
        if (model.estimated(u) && outcome.determinacy.datum.parts.part_of[u / 3] < 0) return true;
    return false;
}

// Whether the weighted factor shows that all unknowns are determined, so that no movement need be searched.
bool Adjustment::clearly_determined() const
{
    return !system.share.any(!std::all_of(system.factor.pivot.begin(), system.factor.pivot.end(),
                                          [](double p) { return p >= clear_pivot; }));
}

// The same of the rows with parallel verticals: what only the curvature of the earth tells, or the convergence of the
// meridians, does not count as determined. Leaves the system as it was.
bool Adjustment::clear_without_curvature()
{
    if (!model.frame.curved() || system.derivatives == Derivatives::invariant) return true;
    const auto refactor = [&](Derivatives derivatives) {
        system.derivatives = derivatives;
        fill_rows(model, &system);
        fill_normal(&system);
        factorize(&system, 0.0, factor_options);
    };
    refactor(Derivatives::invariant);
    const bool clear = clearly_determined();
    refactor(Derivatives::exact);
    return clear;
}

// Searches what the rows leave undetermined at the given values.
//   made  as in Options: where points may lie badly by chance
bool Adjustment::has_findings(const std::vector<double> &values, const std::vector<char> &made)
{
    if (std::any_of(values.begin(), values.end(), [](double x) { return !std::isfinite(x); })) return false;
    options.watch.tell(Step::datum);
    const std::vector<double> present = model.value;
    model.value = values;
    Determinacy found = judge(model, made.empty() ? std::vector<char>(model.n_points, 0) : made);
    model.value = present;
    if (found.findings.empty()) return false;
    outcome.determinacy = std::move(found);
    return true;
}

// The verdict on a system whose last factor is undamped.
Status Adjustment::judge_factor(const std::vector<double> &first)
{
    if (system.factor.stopped) return Status::stopped;
    if (system.share.shared() && !system.whole) return Status::singular;
    gather_values(system.share, system.columns, &model);
    if (system.apart) {
        const bool clear = !outcome.iteration.singular_start && clearly_determined() && clear_without_curvature();
        return clear ? Status::adjusted : Status::singular;
    }
    if (outcome.iteration.singular_start && has_findings(first, options.made)) return Status::undetermined;
    if (clearly_determined() && clear_without_curvature()) return Status::adjusted;
    if (has_findings(model.value, {})) return Status::undetermined;
    if (!system.factor.failed.empty() && has_findings(first, options.made)) return Status::undetermined;
    for (const FailedPivot &f : system.factor.failed) outcome.failed.push_back(system.columns.unknown[f.unknown]);
    return outcome.failed.empty() ? Status::adjusted : Status::singular;
}

// Unknowns with large standard deviations at the last values, the largest beside the limits first, and the coordinate
// that goes most with the first of them. A pivot is at most the reciprocal of the cofactor of its unknown.
void Adjustment::find_hardly_determined()
{
    fill_rows(model, &system);
    fill_normal(&system);
    factorize(&system, 0.0, factor_options);
    std::vector<int> points(model.n_points);
    std::iota(points.begin(), points.end(), 0);
    const double length = hardly * similarity(model, points).size;
    std::vector<std::pair<double, int>> found;
    for (int j = 0; j < system.n(); j++) {
        const int u = system.columns.unknown[j];
        const bool angle = model.meaning[u] == Meaning::angle;
        if (!angle && model.meaning[u] != Meaning::coordinate) continue;
        const double pivot = system.factor.pivot[j] * system.normal.matrix.value[system.normal.matrix.start[j]];
        const double share = 1.0 / std::sqrt(std::fmax(pivot, 0.0)) / (angle ? hardly : length);
        if (share > 1.0) found.push_back({share, u});
    }
    std::sort(found.rbegin(), found.rend());
    for (int i = 0; i < (int)found.size() && i < most_hardly; i++) outcome.failed.push_back(found[i].second);
    if (found.empty()) return;
    std::vector<double> along(system.n(), 0.0);
    along[system.columns.of[found[0].second]] = 1.0;
    solve(system.symbolic, system.factor, along.data());
    int most = -1; // columns of coordinates come first
    for (int j = 0; j < system.n() && system.columns.unknown[j] < 3 * model.n_points; j++)
        if (std::fabs(along[j]) > (most < 0 ? 0.0 : std::fabs(along[most]))) most = j;
    if (most < 0) return;
    const int u = system.columns.unknown[most];
    if (std::find(outcome.failed.begin(), outcome.failed.end(), u) == outcome.failed.end()) outcome.failed.push_back(u);
}

// Why an iteration did not end well.
Status Adjustment::judge_failure(const std::vector<double> &first)
{
    if (outcome.iteration.ending == Ending::stopped) return Status::stopped;
    if (system.share.shared()) return Status::no_convergence;
    if (has_findings(first, options.made)) return Status::undetermined;
    find_hardly_determined();
    std::vector<double> last = first;
    model.value.swap(last);
    fill(model, Derivatives::exact, &system.equations);
    outcome.misfits = misfits(model, system.equations, most_misfits);
    model.value.swap(last);
    fill(model, system.derivatives, &system.equations);
    return Status::no_convergence;
}

Status Adjustment::bad_covariance()
{
    outcome.bad_group = system.bad_group;
    outcome.bad_row = system.rows.bad_row;
    return Status::bad_covariance;
}

Status Adjustment::find_values()
{
    const std::vector<double> first = model.value;
    Status status;
    if (options.iterate) {
        outcome.iteration = iterate(&model, &system, &datum, options.limits, factor_options);
        if (outcome.iteration.ending == Ending::bad_covariance) return bad_covariance();
        const bool ended =
            outcome.iteration.ending == Ending::converged || outcome.iteration.ending == Ending::singular;
        status = ended ? judge_factor(first) : judge_failure(first);
    } else {
        outcome.iteration.squares = fill_rows(model, &system);
        if (system.share.any(system.bad_group >= 0)) return bad_covariance();
        fill_normal(&system);
        factorize(&system, 0.0, factor_options);
        status = judge_factor(first);
    }
    if (status != Status::adjusted && status != Status::no_convergence) model.value = first;
    return status;
}

void Adjustment::count()
{
    outcome.rows = (int)system.share.sum(system.equations.usable_rows());
    outcome.unknowns = system.share.shared() ? system.share.unknowns : system.n();
    outcome.open = datum.open;
    outcome.redundancy = outcome.rows - outcome.unknowns + outcome.open;
    if (options.iterate && outcome.redundancy > 0)
        outcome.variance_factor = outcome.iteration.squares / outcome.redundancy;
}

// Names the observations that have no derivative: those of all ranks, where ranks have the same ones.
void Adjustment::find_left_out()
{
    const Equations &e = system.equations;
    std::vector<int> &out = outcome.left_out;
    for (int r = 0; r < e.rows(); r++)
        if (!e.usable[r] && e.component[r] == 0) out.push_back(e.observation[r]);
    if (system.apart || !system.share.any(!out.empty()) || !system.share.shared()) return;
    std::vector<double> all(model.observations.size(), 0.0);
    for (const int o : out) all[o] = 1.0;
    system.share.sum(&all);
    out.clear();
    for (std::size_t o = 0; o < all.size(); o++)
        if (all[o] > 0.0) out.push_back((int)o);
}

void Adjustment::find_seen()
{
    std::vector<double> seen(model.n_unknowns(), 0.0);
    for (const int u : system.equations.column) seen[u] = 1.0;
    system.share.sum(&seen);
    outcome.seen.reserve(seen.size());
    for (const double x : seen) outcome.seen.push_back(x > 0.0);
}

void Adjustment::suspect(const Cofactors &cofactors)
{
    const SuspectOptions &o = options.suspects;
    if (o.most <= 0 || !o.limit || !options.iterate || outcome.redundancy <= 0 || options.watch.stopped()) return;
    const double limit = o.limit(outcome.tested, outcome.redundancy, outcome.variance_factor);
    outcome.suspects =
        find_suspects(model, system, cofactors, outcome.statistics, outcome.place, limit, o, options.watch);
}

Status Adjustment::find_precision()
{
    options.watch.tell(Step::datum);
    if (datum.open > 0) set_motions(system.columns, find_datum(&model, system).motions, &datum);
    if (options.classes.empty()) release_rows(&system);
    Cofactors cofactors(system, datum);
    InverseOptions inverse_options;
    inverse_options.threads = options.threads;
    inverse_options.watch = options.watch;
    options.watch.tell(Step::inverse);
    if (!cofactors.invert(inverse_options)) return Status::stopped;
    options.watch.tell(Step::statistics);
    StatisticsOptions s;
    s.sigma = options.a_priori ? 1.0 : std::sqrt(outcome.variance_factor);
    s.residuals = options.residuals;
    s.threads = options.threads;
    s.watch = options.watch;
    s.pairs = options.pairs;
    s.weak_pairs = options.weak_pairs;
    s.joint = options.joint;
    s.together = options.together;
    if (options.forms) s.forms = options.forms(model);
    s.place = outcome.place;
    outcome.statistics = statistics(model, system, cofactors, s);
    outcome.tested = (int)system.share.sum(tested_rows(outcome.statistics, options.suspects.least_share));
    suspect(cofactors);
    if (!options.classes.empty() && options.residuals)
        outcome.traces =
            redundancy_traces(system, outcome.statistics, options.classes, options.class_count, options.watch);
    if (options.watch.stopped()) return Status::stopped;
    const double variance = std::fmin(1.0, outcome.variance_factor); // a gross error makes no geometry weak
    outcome.weak = weak_motions(model, outcome.determinacy.datum, [&](double *x) {
        cofactors.multiply(x);
        for (int u = 0; u < model.n_unknowns(); u++) x[u] *= variance;
    });
    return Status::adjusted;
}

Outcome Adjustment::run()
{
    const std::vector<double> first = model.value;
    system = make_system(model, options.watch, options.ranks, options.own);
    system.threads = options.threads;
    fit_into_memory(&system, options.disk, options.threads, options.statistics);
    outcome.status = options.watch.stopped() ? Status::stopped : choose_datum();
    if (outcome.status == Status::adjusted) outcome.status = options.watch.stopped() ? Status::stopped : find_values();
    count();
    if (outcome.status == Status::adjusted || !system.share.shared()) {
        find_left_out();
        const OwnObservations every = {{}, (std::int64_t)model.observations.size()};
        outcome.place = find_places(system.share, system.equations, options.own ? *options.own : every);
        find_seen();
    }
    if (outcome.status == Status::adjusted && options.statistics) outcome.status = find_precision();
    if (outcome.status == Status::stopped) model.value = first;
    outcome.equations = std::move(system.equations);
    return std::move(outcome);
}

} // namespace

Outcome adjust(Model *model, const Options &options)
{
    if (!options.ranks) return Adjustment(model, options).run();
    if (!options.classes.empty()) options.ranks->leave_to_first(); // it has the rows of all classes
    if (!options.ranks->alone() && options.ranks->size() > 1) {
        Options together = options;
        together.watch.stop = nullptr;
        const std::vector<double> first = model->value;
        options.ranks->begin();
        Outcome outcome = Adjustment(model, together).run();
        if (outcome.status == Status::adjusted) return outcome;
        model->value = first;
        if (options.own) return outcome;
        options.ranks->leave_to_first();
    }
    Options alone = options;
    alone.ranks = nullptr;
    return Adjustment(model, alone).run();
}

} // namespace vornadjust
