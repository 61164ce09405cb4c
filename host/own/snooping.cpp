#include "host/own/snooping.h"

#include <cmath>
#include <map>
#include <tuple>

#include "adjust/snoop.h"
#include "host/input/observation_rows.h"
#include "host/own/deselect.h"
#include "host/own/item_names.h"
#include "host/results/report_units.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Components of a row of observed coordinates or differences go together; other items of one record are values of their
// own.
std::vector<int> units_of(const Numbers &numbers)
{
    std::map<std::tuple<Item, int, int>, int> known;
    std::vector<int> unit;
    for (size_t i = 0; i < numbers.items.size(); i++) {
        const ItemPlace &item = numbers.items[i];
        const bool row = item.item == Item::observed_coordinate || item.item == Item::coordinate_difference;
        unit.push_back(
            known.emplace(std::tuple(item.item, item.record, row ? 0 : item.part), (int)known.size()).first->second);
    }
    return unit;
}

class Telling {
public:
    Telling(Model &model, OwnOutcome &own, const std::vector<int> &unit) : network(model), outcome(own)
    {
        for (size_t i = unit.size(); i-- > 0;) first[unit[i]] = (int)i;
    }

    std::string step(const va::SnoopStep &s);
    void leave_out(int unit, const std::string &reason);
    void set_table(const ItemPlace &item, SnoopStep &step) const;
    std::string name(int unit) const { return item_text(item_name(network, outcome.numbers, first.at(unit))); }

private:
    Model &network;
    OwnOutcome &outcome;
    std::map<int, int> first; // observation of each unit
};

std::string Telling::step(const va::SnoopStep &s)
{
    const ItemName item = item_name(network, outcome.numbers, first.at(s.unit));
    const std::string sigma = decimal(std::sqrt(s.variance_factor), 3), w = decimal(std::fabs(s.normalised), 2);
    if (s.action == va::SnoopStep::Action::kept)
        return item_text(item) + ": kept though its normalised residual is " + w +
               ": without it the network is not determined";
    SnoopStep step;
    step.taken_again = s.action == va::SnoopStep::Action::taken_again;
    step.kind = item.kind;
    step.at = item.at;
    step.from = item.from;
    step.to = item.to;
    step.file = item.file;
    step.line = item.line;
    set_table(outcome.numbers.items[(size_t)first.at(s.unit)], step);
    step.normalised = s.normalised;
    step.sigma = std::sqrt(s.variance_factor);
    outcome.snooping.push_back(step);
    if (step.taken_again) return item_text(item) + ": taken again, it fits without the others; sigma " + sigma;
    std::string text = item_text(item) + ": left out, normalised residual " + w + "; sigma " + sigma + " without it";
    for (const int other : s.alike) text += "; " + name(other) + " could be wrong in its place";
    return text;
}

void Telling::set_table(const ItemPlace &item, SnoopStep &step) const
{
    const std::optional<TableId> table = table_of(item);
    if (!table) return;
    step.table = table_names[*table];
    step.row = (size_t)item.record + 1;
    with_rows(network, *table, [&](const auto &list) { step.rows = list.size(); });
}

void Telling::leave_out(int unit, const std::string &reason)
{
    const Source at = deselect(network, outcome.numbers.items[(size_t)first.at(unit)]);
    if (at.line > 0) outcome.numbers.left_out[{at.file, at.line}] = reason;
}

} // namespace

std::vector<std::string> adjust_by_snooping(Model &network, const va::Options &options, OwnOutcome &outcome)
{
    const std::vector<int> unit = units_of(outcome.numbers);
    va::Snooped s = va::snoop(&outcome.numbers.model, options, unit);
    outcome.adjustment = std::move(s.outcome);
    Telling telling(network, outcome, unit);
    std::vector<std::string> lines;
    std::map<int, std::string> reasons;
    for (const va::SnoopStep &step : s.steps) {
        lines.push_back(telling.step(step));
        reasons[step.unit] = "left out by its test: normalised residual " + decimal(std::fabs(step.normalised), 2);
    }
    for (const int u : s.left_out) telling.leave_out(u, reasons[u]);
    if (!s.ended)
        lines.push_back(std::to_string(s.left_out.size()) +
                        " observations left out by their tests, the most that are left out by themselves; others are "
                        "suspicious still");
    return lines;
}

} // namespace vornhost
