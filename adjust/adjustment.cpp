#include "adjust/adjustment.h"

#include <algorithm>
#include <cmath>

#include "adjust/cofactors.h"

namespace vornadjust {

namespace {

const int most_misfits = 10;
const double clear_pivot = 1e-6; // relative to the diagonal element; above it nothing is near to being undetermined

class Adjustment {
public:
    Adjustment(Model *m, const Options &o) : model(*m), options(o)
    {
        factor_options.threads = o.threads, factor_options.watch = o.watch;
    }

    Outcome run();

private:
    Status find_values();
    Status find_precision();
    Status choose_datum();
    bool clearly_determined() const;
    bool has_mechanism(const std::vector<double> &values);
    Status judge_factor(const std::vector<double> &first);
    Status judge_failure(const std::vector<double> &first);
    void count();

    Model &model;
    const Options &options;
    FactorOptions factor_options;
    System system;
    FreeDatum datum;
    Outcome outcome;
};

Status Adjustment::choose_datum()
{
    fill(model, Derivatives::invariant, &system.equations);
    outcome.datum = find_datum(unit_rows(model, system.equations));
    switch (outcome.datum.state) {
    case DatumState::loose: return Status::no_datum;
    case DatumState::not_carried: return Status::datum_points;
    case DatumState::held: break;
    case DatumState::by_points:
        datum = free_datum(system.columns, outcome.datum);
        system.held = held_columns(model, system.columns, outcome.datum);
        system.derivatives = Derivatives::invariant;
    }
    return Status::adjusted;
}

// Whether the weighted factor shows that all unknowns are determined, so that no movement need be searched.
bool Adjustment::clearly_determined() const
{
    return std::all_of(system.factor.pivot.begin(), system.factor.pivot.end(),
                       [](double p) { return p >= clear_pivot; });
}

// Searches movements that no row answers to, with unit rows at the given values.
bool Adjustment::has_mechanism(const std::vector<double> &values)
{
    const std::vector<double> present = model.value;
    model.value = values;
    fill(model, Derivatives::invariant, &system.equations);
    outcome.mechanisms = find_mechanisms(unit_rows(model, system.equations), outcome.datum);
    model.value = present;
    fill(model, system.derivatives, &system.equations);
    return !outcome.mechanisms.none();
}

// The verdict on a system whose last factor is undamped.
Status Adjustment::judge_factor(const std::vector<double> &first)
{
    if (system.factor.stopped) return Status::stopped;
    if (clearly_determined()) return Status::adjusted;
    if (has_mechanism(system.factor.failed.empty() ? model.value : first)) return Status::undetermined;
    for (const FailedPivot &f : system.factor.failed) outcome.failed.push_back(system.columns.unknown[f.unknown]);
    return outcome.failed.empty() ? Status::adjusted : Status::singular;
}

// Why an iteration did not end well.
Status Adjustment::judge_failure(const std::vector<double> &first)
{
    if (outcome.iteration.ending == Ending::stopped) return Status::stopped;
    if (has_mechanism(first)) return Status::undetermined;
    std::vector<double> last = first;
    model.value.swap(last);
    fill(model, Derivatives::exact, &system.equations);
    outcome.misfits = misfits(model, system.equations, most_misfits);
    model.value.swap(last);
    fill(model, system.derivatives, &system.equations);
    return Status::no_convergence;
}

Status Adjustment::find_values()
{
    const std::vector<double> first = model.value;
    outcome.iteration.squares = fill_rows(model, &system);
    if (system.bad_group >= 0) {
        outcome.bad_group = system.bad_group;
        return Status::bad_covariance;
    }
    Status status;
    if (options.iterate) {
        outcome.iteration = iterate(&model, &system, &datum, options.limits, factor_options);
        const bool ended =
            outcome.iteration.ending == Ending::converged || outcome.iteration.ending == Ending::singular;
        status = ended ? judge_factor(first) : judge_failure(first);
    } else {
        fill_normal(&system);
        factorize(&system, 0.0, factor_options);
        status = judge_factor(first);
    }
    if (status != Status::adjusted && status != Status::no_convergence) model.value = first;
    return status;
}

void Adjustment::count()
{
    const Equations &e = system.equations;
    for (int r = 0; r < e.rows(); r++)
        if (!e.usable[r] && e.component[r] == 0) outcome.left_out.push_back(e.observation[r]);
    outcome.rows = e.usable_rows();
    outcome.unknowns = system.n();
    outcome.open = datum.open;
    outcome.redundancy = outcome.rows - outcome.unknowns + outcome.open;
    if (options.iterate && outcome.redundancy > 0)
        outcome.variance_factor = outcome.iteration.squares / outcome.redundancy;
}

Status Adjustment::find_precision()
{
    if (datum.open > 0) set_motions(system.columns, find_datum(unit_rows(model, system.equations)).motions, &datum);
    Cofactors cofactors(system, datum);
    InverseOptions inverse_options;
    inverse_options.threads = options.threads;
    inverse_options.watch = options.watch;
    if (!cofactors.invert(inverse_options)) return Status::stopped;
    StatisticsOptions s;
    s.sigma = std::sqrt(outcome.variance_factor);
    s.residuals = options.residuals;
    s.pairs = options.pairs;
    s.together = options.together;
    outcome.statistics = statistics(model, system, cofactors, s);
    return Status::adjusted;
}

Outcome Adjustment::run()
{
    system = make_system(model);
    outcome.status = choose_datum();
    if (system.equations.usable_rows() == 0) outcome.status = Status::no_observations;
    if (outcome.status == Status::adjusted) outcome.status = find_values();
    count();
    if (outcome.status == Status::adjusted && options.statistics) outcome.status = find_precision();
    outcome.equations = std::move(system.equations);
    return std::move(outcome);
}

} // namespace

Outcome adjust(Model *model, const Options &options) { return Adjustment(model, options).run(); }

} // namespace vornadjust
