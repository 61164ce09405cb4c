#include "adjust/snoop.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

class Snooping {
public:
    Snooping(Model *m, const Options &o, const std::vector<int> &u, const SnoopLimits &l)
        : model(*m), options(o), unit(u), limits(l), first(m->value)
    {
        for (const Observation &obs : model.observations) used.push_back(obs.use);
        members.resize(unit.empty() ? 0 : *std::max_element(unit.begin(), unit.end()) + 1);
        for (std::size_t i = 0; i < unit.size(); i++) members[unit[i]].push_back((int)i);
        keep.assign(members.size(), 0);
    }

    Snooped run();

private:
    Outcome adjusted();
    void use(int which, bool on);
    int most() const;
    const Suspect *worst(const Outcome &outcome) const;
    bool leave_out();
    void try_again();

    Model &model;
    const Options &options;
    const std::vector<int> &unit;
    const SnoopLimits limits;
    const std::vector<double> first;       // values
    std::vector<char> used;                // [observations] by the model
    std::vector<std::vector<int>> members; // [units]
    std::vector<char> keep;                // [units] nothing else determines what it sees
    Snooped result;
};

Outcome Snooping::adjusted()
{
    model.value = first;
    return adjust(&model, options);
}

void Snooping::use(int which, bool on)
{
    for (int o : members[which]) model.observations[o].use = on && used[o];
}

int Snooping::most() const { return std::min(limits.most, (int)(limits.largest_share * (double)members.size())); }

// Of those that may be left out.
const Suspect *Snooping::worst(const Outcome &outcome) const
{
    for (const Suspect &s : outcome.suspects)
        if (!keep[unit[s.observation]]) return &s;
    return nullptr;
}

// One step; false where there is none.
bool Snooping::leave_out()
{
    const Suspect *s = worst(result.outcome);
    if (!s) return false;
    if ((int)result.left_out.size() >= most()) {
        result.ended = false;
        return false;
    }
    SnoopStep step = {SnoopStep::Action::left_out, unit[s->observation], s->normalised, 1.0, {}};
    for (const Alike &a : s->alike) {
        const int other = unit[a.observation];
        if (other != step.unit && std::find(step.alike.begin(), step.alike.end(), other) == step.alike.end())
            step.alike.push_back(other);
    }
    use(step.unit, false);
    Outcome without = adjusted();
    if (without.status == Status::stopped) {
        result.outcome = std::move(without);
        return false;
    }
    if (without.status == Status::adjusted) {
        result.left_out.push_back(step.unit);
        result.outcome = std::move(without);
    } else {
        use(step.unit, true);
        keep[step.unit] = 1;
        step.action = SnoopStep::Action::kept;
    }
    step.variance_factor = result.outcome.variance_factor;
    result.steps.push_back(std::move(step));
    return true;
}

// Those left out first may only have suffered from the errors of later ones.
void Snooping::try_again()
{
    if (result.left_out.size() < 2) return; // alone it would be suspect as before
    const std::vector<int> candidates = result.left_out;
    for (int which : candidates) {
        use(which, true);
        Outcome with = adjusted();
        if (with.status == Status::adjusted && !worst(with)) {
            result.steps.push_back({SnoopStep::Action::taken_again, which, 0.0, with.variance_factor, {}});
            result.left_out.erase(std::find(result.left_out.begin(), result.left_out.end(), which));
            result.outcome = std::move(with);
        } else {
            use(which, false);
        }
        if (options.watch.stopped()) return;
    }
}

Snooped Snooping::run()
{
    result.outcome = adjusted();
    if (result.outcome.status != Status::adjusted) return std::move(result);
    while (leave_out()) {
    }
    if (result.outcome.status == Status::adjusted && result.ended && !worst(result.outcome)) try_again();
    if (!result.steps.empty() && !options.watch.stopped()) result.outcome = adjusted(); // the values of the last run
    return std::move(result);
}

} // namespace

Snooped snoop(Model *model, const Options &options, const std::vector<int> &unit, const SnoopLimits &limits)
{
    return Snooping(model, options, unit, limits).run();
}

} // namespace vornadjust
