#include "host/own/components.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "host/own/item_names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Instrument group of each station, -1 for none.
std::vector<int> groups_of_stations(const Model &network)
{
    std::vector<int> group(network.stations.size(), -1);
    for (size_t g = 0; g < network.group_members.size(); g++)
        for (const int station : network.group_members[g]) group[(size_t)station] = (int)g;
    return group;
}

bool by_instrument(Item item)
{
    return item == Item::distance || item == Item::horizontal_distance || item == Item::direction ||
           item == Item::angle || item == Item::vertical_angle;
}

// Group of the stand from which a row was observed.
int group_of(const Model &network, const Numbers &numbers, const std::vector<int> &of_station, size_t i)
{
    const ItemPlace &item = numbers.items[i];
    const va::Observation &o = numbers.model.observations[i];
    if (!by_instrument(item.item) || o.from < 0 || !numbers.points[(size_t)o.from].station) return -1;
    const ItemNotes n = item_notes(network, item);
    const int setup = n.notes ? note_at(n.notes->setup, n.row) : -1;
    if (setup >= 0 && network.setups.records[(size_t)setup].group >= 0)
        return network.setups.records[(size_t)setup].group;
    return of_station[(size_t)numbers.points[(size_t)o.from].record];
}

const char *unit_of(const va::Observation &o)
{
    switch (o.kind) {
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::vertical_angle:
    case va::Kind::azimuth:
    case va::Kind::bearing: return "rad";
    case va::Kind::image: return "pixel";
    default: return "m";
    }
}

// Mean of the standard deviations of each class, and their unit; none where a class has several.
void describe(const Numbers &numbers, const va::Equations &e, const ComponentClasses &classes,
              std::vector<ComponentResult> &results)
{
    std::vector<double> sum(results.size(), 0.0);
    for (int r = 0; r < e.rows(); r++) {
        const size_t i = (size_t)e.observation[(size_t)r];
        if (classes.of[i] < 0 || !e.usable[(size_t)r]) continue;
        ComponentResult &c = results[(size_t)classes.of[i]];
        const char *unit = unit_of(numbers.model.observations[i]);
        if (c.unit.empty()) c.unit = unit;
        if (c.unit != unit) c.unit = "mixed";
        sum[(size_t)classes.of[i]] += e.sigma[(size_t)r];
        c.rows++;
    }
    for (size_t c = 0; c < results.size(); c++)
        if (results[c].unit != "mixed" && results[c].rows > 0) results[c].sigma = sum[c] / results[c].rows;
}

} // namespace

ComponentClasses component_classes(const Model &network, const Numbers &numbers)
{
    ComponentClasses classes;
    std::unordered_map<std::string, int> known;
    const std::vector<int> of_station = groups_of_stations(network);
    for (size_t i = 0; i < numbers.items.size(); i++) {
        if (numbers.items[i].item > Item::image_point) {
            classes.of.push_back(-1);
            continue;
        }
        std::string name = item_name(network, numbers, (int)i).kind;
        const ItemNotes n = item_notes(network, numbers.items[i]);
        const int covariance = n.notes ? note_at(n.notes->covariance, n.row) : -1;
        if (covariance >= 0)
            name = "covariance " + network.covariances.records[(size_t)covariance].name;
        else if (const int g = group_of(network, numbers, of_station, i); g >= 0)
            name += ", group " + network.group_names[(size_t)g];
        const auto at = known.emplace(name, (int)classes.names.size());
        if (at.second) classes.names.push_back(name);
        classes.of.push_back(at.first->second);
    }
    return classes;
}

std::vector<ComponentResult> find_components(const Model &network, Numbers &numbers, va::Outcome &adjustment,
                                             const va::Options &options, bool use, std::vector<std::string> &notes)
{
    const ComponentClasses classes = component_classes(network, numbers);
    const int count = (int)classes.names.size();
    std::vector<ComponentResult> results((size_t)count);
    describe(numbers, adjustment.equations, classes, results);
    va::Model model = numbers.model;
    va::Outcome outcome;
    outcome.equations = adjustment.equations;
    outcome.statistics.rows = adjustment.statistics.rows;
    va::Options again = options;
    if (!use) again.pairs.clear(), again.joint.clear();
    const va::ComponentEstimate e =
        va::estimate_components(&model, &outcome, again, classes.of, count, va::ComponentLimits());
    if (e.stopped) {
        notes.push_back(
            "variance components: the adjustment with them failed; the standard deviations stay as they are");
        return {};
    }
    if (!e.converged) notes.push_back("variance components: the iteration found no end; take them with care");
    for (int c = 0; c < count; c++) {
        const va::Component &k = e.components[(size_t)c];
        ComponentResult &r = results[(size_t)c];
        r.name = classes.names[(size_t)c];
        r.redundancy = k.redundancy;
        r.used = use && k.estimated;
        if (!k.estimated) continue;
        r.factor = k.factor;
        if (k.deviation > 0.0) r.deviation = k.deviation;
    }
    if (!use) return results;
    numbers.model = std::move(model);
    adjustment = std::move(outcome);
    return results;
}

} // namespace vornhost
