#include "host/own/collect.h"

#include <utility>

#include "host/input/names.h"
#include "host/own/collection.h"
#include "host/own/covariances.h"
#include "host/own/derived.h"
#include "host/own/item_names.h"

namespace vornhost {

void Collection::run()
{
    reference_system();
    if (outcome.adjusted()) variance();
    precision();
    points();
    orientations();
    residuals();
    kinds();
    results.components = outcome.components;
    groups();
    cameras();
    lumps();
    deflections();
    transformations();
    pairs();
    weak_pairs();
    collect_derived(network, outcome, results);
}

namespace {

ClosureResult closure_of(const Model &network, const Numbers &numbers, const closures::Closure &c)
{
    const auto name = [&](int p) { return shown_name(network, point_name(network, numbers.points[(size_t)p])); };
    ClosureResult r;
    if (c.at >= 0) r.at = name(c.at);
    for (const int p : c.points) r.points.push_back(name(p));
    for (const int o : c.observations) {
        const ItemName item = item_name(network, numbers, o);
        if (r.rows.empty() || r.rows.back().line != item.line || r.rows.back().file != item.file)
            r.rows.push_back({item.file, item.line});
    }
    r.misclosure = c.misclosure;
    for (int k = 0; k < c.components && c.components > 1; k++) r.off[k] = c.off[k];
    r.limit = c.limit;
    if (c.length > 0.0) r.length = c.length;
    return r;
}

void collect_closures(const Model &network, const OwnOutcome &outcome, Results &results)
{
    static const char *const words[] = {"levelling", "heights", "baselines", "horizon", "angles", "traverse"};
    for (const closures::Closures &c : outcome.closures) {
        ClosuresResult r;
        r.kind = words[(int)c.kind];
        r.unit = c.kind == closures::ClosureKind::horizon || c.kind == closures::ClosureKind::angles ? "rad" : "m";
        r.found = c.found;
        r.beyond = c.beyond;
        r.missed = c.missed;
        for (const closures::Closure &w : c.worst) r.worst.push_back(closure_of(network, outcome.numbers, w));
        results.closures.push_back(std::move(r));
    }
}

void set_ending(const OwnOutcome &outcome, Results &results)
{
    static const struct {
        Ending ending;
        const char *stage, *word;
    } endings[] = {{Ending::adjusted, "done", "adjusted"},
                   {Ending::not_available, "input", "refused"},
                   {Ending::bad_import, "input", "no import"},
                   {Ending::no_first_coordinates, "first coordinates", "no first coordinates"},
                   {Ending::no_observations, "input", "no observations"},
                   {Ending::bad_covariance, "input", "bad covariance"},
                   {Ending::no_datum, "datum", "no datum"},
                   {Ending::undetermined, "adjustment", "undetermined"},
                   {Ending::singular, "adjustment", "singular"},
                   {Ending::no_convergence, "adjustment", "no convergence"}};
    for (const auto &e : endings) {
        if (e.ending != outcome.ending) continue;
        results.stage = e.stage;
        results.code = e.word;
    }
}

} // namespace

Results collect_own(const Model &network, const std::shared_ptr<const OwnOutcome> &own, const std::string &version)
{
    const OwnOutcome &outcome = *own;
    Results results = describe(network, version);
    results.adjusted = outcome.adjusted();
    set_ending(outcome, results);
    results.words = outcome.run.words;
    results.notes = outcome.run.prepared.notes;
    results.datum = outcome.datum;
    results.seconds = outcome.seconds;
    results.accounts = outcome.run.accounts;
    Collection(network, own, results).run();
    collect_closures(network, outcome, results);
    collect_covariances(network, outcome, results);
    return results;
}

} // namespace vornhost
