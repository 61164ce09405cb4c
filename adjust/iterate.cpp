#include "adjust/iterate.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

const double least_gain = 1e-3;    // below it a step does not pay
const double good_gain = 0.75;     // above it damping falls
const double poor_gain = 0.25;     // below it damping rises
const double first_damping = 1e-4; // of the diagonal
const double least_damping = 1e-6; // below it there is none, unless steps without do not pay
const double finer = 0.01;         // share of that limit that is left each time they do not
const double most_damping = 1e12;  // above it no step is left
const double rounding = 1e-11;     // of the sum of squares
const double approximate = 1e-3;   // of the sum of squares: what derivatives without curvature can foresee
const double follow = 1e-4;        // of the size of the network: corrections after which open motions are found anew

// Whether a correction of each kind of unknown lies within the limits.
struct Size {
    double length = 0.0, angle = 0.0, share = 0.0;
    bool within(const IterationLimits &l) const { return length <= l.length && angle <= l.angle && share <= l.share; }
};

// Steps below these leave the factor as it was before them, but for its last digits.
IterationLimits smallest(const IterationLimits &l)
{
    constexpr double share = 1e-3;
    return {l.steps, share * l.length, share * l.angle, share * l.share};
}

class Iterator {
public:
    Iterator(Model *m, System *s, FreeDatum *d, const IterationLimits &l, const FactorOptions &o)
        : model(*m), system(*s), datum(*d), limits(l), options(o)
    {
    }

    Iteration run();

private:
    bool find_step();
    bool take_step();
    double comparable_change(double after) const;
    Size size_of_step() const;
    void follow_motions(double length);
    void lower_damping(double gain);
    bool raise_damping();
    Ending last_factor();

    Model &model;
    System &system;
    FreeDatum &datum;
    const IterationLimits &limits;
    const FactorOptions &options;

    double squares = 0.0; // at the present values
    double damping = 0.0, growth = 2.0;
    double least = least_damping;             // below it there is none
    double paid = 0.0;                        // damping of the last damped step that was taken
    double moved = 0.0;                       // metres, since the motions were found
    double foreseen = 0.0;                    // gain of the step
    std::vector<double> dx;                   // [n] the step
    std::vector<double> before;               // [unknowns] values before it
    std::vector<unsigned char> usable_before; // [rows]
    std::vector<double> misclosure_before;    // [rows] weighted
    Size size;                                // of the step
    Iteration result;
};

// Solves for a step with the present damping.
bool Iterator::find_step()
{
    if (!factorize(&system, damping, options)) return false;
    dx = system.normal.right;
    for (int h : system.held) dx[h] = 0.0;
    solve(system, 1, dx.data());
    foreseen = squares - system.share.sum(foreseen_squares(system.rows, dx.data()));
    if (datum.open > 0) {
        std::vector<double> from_start(dx.size());
        for (std::size_t j = 0; j < dx.size(); j++) {
            const int u = system.columns.unknown[j];
            from_start[j] = model.value[u] - model.start[u];
        }
        transform(datum, from_start.data(), dx.data());
    }
    return !system.share.any(!std::all_of(dx.begin(), dx.end(), [](double x) { return std::isfinite(x); }));
}

Size Iterator::size_of_step() const
{
    Size s;
    for (std::size_t j = 0; j < dx.size(); j++) {
        const double d = std::fabs(dx[j]);
        switch (model.meaning[system.columns.unknown[j]]) {
        case Meaning::coordinate:
        case Meaning::additive: s.length = std::fmax(s.length, d); break;
        case Meaning::angle:
        case Meaning::scale: s.angle = std::fmax(s.angle, d); break;
        default: s.share = std::fmax(s.share, d * std::sqrt(system.diagonal[j]));
        }
    }
    if (!system.share.shared()) return s;
    double most[] = {s.length, s.angle, s.share};
    system.share.ranks->most(most, 3);
    return {most[0], most[1], most[2]};
}

// What the step takes from the sum of squares, without rows that have a derivative only behind it: a sight straight up
// gets one as soon as its ends move, and its misclosure then is none of the step's. In the plane the ends of such a
// sight stand in one place, which is no place for a step to leave.
double Iterator::comparable_change(double after) const
{
    const Equations &e = system.equations;
    const bool upwards = model.frame.space == Space::space || model.frame.space == Space::sphere;
    if (!upwards || !system.share.any(e.usable != usable_before)) return squares - after;
    const auto is_new = [&](int r) { return e.usable[r] && !usable_before[r]; };
    std::vector<char> changed(model.groups.size(), 0);
    for (int r = 0; r < e.rows(); r++)
        if (e.group[r] >= 0 && is_new(r)) changed[e.group[r]] = 1;
    double change = 0.0;
    for (int r = 0; r < e.rows(); r++) {
        if (is_new(r) || (e.group[r] >= 0 && changed[e.group[r]])) continue;
        const double u = misclosure_before[r], v = system.rows.misclosure[r];
        change += u * u - v * v;
    }
    return system.share.sum(change);
}

// Moves by the step, makes the rows there, and keeps the step when it pays.
bool Iterator::take_step()
{
    before = model.value;
    usable_before = system.equations.usable;
    misclosure_before = system.rows.misclosure;
    for (std::size_t j = 0; j < dx.size(); j++) model.value[system.columns.unknown[j]] += dx[j];
    const double after = fill_rows(model, &system);
    const double gain = comparable_change(after) / foreseen;
    const bool exact = system.derivatives == Derivatives::exact || !model.frame.curved();
    const double told = exact ? rounding : approximate;
    const bool asked = !size.within(limits) && foreseen > told * squares;
    if (std::isfinite(after) && (!asked || gain > least_gain)) {
        squares = after;
        lower_damping(asked ? gain : 1.0);
        return true;
    }
    model.value = before;
    fill_rows(model, &system);
    return false;
}

void Iterator::lower_damping(double gain)
{
    growth = 2.0;
    if (damping > 0.0) paid = damping;
    if (gain > good_gain) damping *= 0.1;
    if (gain < poor_gain) damping *= 2.0;
    if (damping < least) damping = 0.0;
}

// Where damped steps paid and the undamped one behind them does not, damping goes on from there and falls further:
// unknowns that are hardly determined need a step at the end of their valley that is small but not that small.
bool Iterator::raise_damping()
{
    if (damping > 0.0) {
        damping *= growth;
    } else if (paid > 0.0) {
        damping = paid;
        least *= finer;
    } else {
        damping = first_damping;
    }
    growth *= 2.0;
    return damping <= most_damping;
}

// Open motions at the present values, where these are far enough from those that the motions belong to.
void Iterator::follow_motions(double length)
{
    moved += length;
    if (datum.open == 0 || moved <= follow * datum.size) return;
    system.watch.tell(Step::datum);
    const Datum found = find_datum(&model, system);
    if (found.motions.cols == datum.open) set_motions(system.columns, found.motions, &datum);
    moved = 0.0;
}

// The undamped factor at the last values.
Ending Iterator::last_factor()
{
    if (factorize(&system, 0.0, options)) return Ending::converged;
    return system.factor.stopped ? Ending::stopped : Ending::singular;
}

Iteration Iterator::run()
{
    squares = fill_rows(model, &system);
    result.squares = squares;
    if (system.share.any(system.bad_group >= 0)) {
        result.ending = Ending::bad_covariance;
        return result;
    }
    fill_normal(&system);
    while (result.steps < limits.steps) {
        const bool undamped = damping == 0.0;
        const bool found = find_step();
        if (result.steps == 0 && undamped && !system.whole) result.singular_start = true;
        if (system.factor.stopped || system.watch.stopped()) {
            result.ending = Ending::stopped;
            break;
        }
        size = found ? size_of_step() : Size{};
        if (!found || !take_step()) {
            if (raise_damping()) continue;
            result.ending = last_factor() == Ending::singular ? Ending::singular : Ending::diverged;
            break;
        }
        result.steps++;
        result.damped += !undamped;
        result.last_length = size.length;
        result.last_angle = size.angle;
        fill_normal(&system);
        follow_motions(size.length);
        if (!size.within(limits)) continue;
        if (undamped && size.within(smallest(limits))) {
            result.ending = Ending::converged;
            break;
        }
        result.ending = last_factor();
        if (undamped || result.ending != Ending::converged) break;
        result.ending = Ending::limit; // a damped step may be small far from the end
        damping = 0.0;
    }
    result.squares = squares;
    return result;
}

} // namespace

Iteration iterate(Model *model, System *system, FreeDatum *datum, const IterationLimits &limits,
                  const FactorOptions &options)
{
    return Iterator(model, system, datum, limits, options).run();
}

} // namespace vornadjust
