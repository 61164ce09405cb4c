#include "adjust/adjustment.h"

#include "adjust/cofactors.h"

namespace vornadjust {

namespace {

const int most_misfits = 10;

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
    Status judge(const Iteration &iteration);
    void count();
    void fail(const Factor &factor);

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

void Adjustment::fail(const Factor &factor)
{
    for (const FailedPivot &f : factor.failed) outcome.failed.push_back(system.columns.unknown[f.unknown]);
}

Status Adjustment::judge(const Iteration &iteration)
{
    switch (iteration.ending) {
    case Ending::converged: return Status::adjusted;
    case Ending::stopped: return Status::stopped;
    case Ending::singular: fail(system.factor); return Status::undetermined;
    default: return Status::no_convergence;
    }
}

Status Adjustment::find_values()
{
    const std::vector<double> first = model.value;
    fill_rows(model, &system);
    if (system.bad_group >= 0) {
        outcome.bad_group = system.bad_group;
        return Status::bad_covariance;
    }
    if (options.iterate) {
        outcome.iteration = iterate(&model, &system, &datum, options.limits, factor_options);
        const Status status = judge(outcome.iteration);
        if (status == Status::no_convergence) {
            std::vector<double> last = first;
            model.value.swap(last);
            fill(model, Derivatives::exact, &system.equations);
            outcome.misfits = misfits(model, system.equations, most_misfits);
            model.value.swap(last);
        }
        if (status != Status::adjusted && status != Status::no_convergence) model.value = first;
        return status;
    }
    fill_normal(&system);
    if (factorize(&system, 0.0, factor_options)) return Status::adjusted;
    fail(system.factor);
    return system.factor.stopped ? Status::stopped : Status::undetermined;
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
