#include "host/own/observation_results.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/own/item_names.h"
#include "host/results/results.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace va = vornadjust;

namespace {

const double turn = 8.0 * std::atan(1.0);

// The test of single observations in this run.
TestRule rule_of(const Model &network, const va::Outcome &a)
{
    const bool planned = network.mode == Mode::Propagation;
    return {network.tests, a.tested, planned ? 0 : a.redundancy, std::sqrt(a.variance_factor)};
}

const char *component_name(const va::Model &model, const va::Observation &o, int component)
{
    static const char *const axes[3] = {"x", "y", "z"}, *const pixels[2] = {"u", "v"};
    if (o.kind == va::Kind::position) return axes[component];
    if (o.kind == va::Kind::baseline) return axes[model.frame.space == va::Space::heights ? 2 : component];
    return o.kind == va::Kind::image ? pixels[component] : "";
}

const char *unit_of(const va::Model &model, const va::Observation &o)
{
    switch (o.kind) {
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::vertical_angle:
    case va::Kind::azimuth:
    case va::Kind::bearing: return "rad";
    case va::Kind::image: return "pixel";
    case va::Kind::unknown: break;
    default: return "m";
    }
    if (model.meaning[(size_t)o.unknown] == va::Meaning::motion) {
        const auto after = std::upper_bound(model.motions.begin(), model.motions.end(), o.unknown,
                                            [](int unknown, const va::Motion &m) { return unknown < m.first; });
        const int part = o.unknown - std::prev(after)->first;
        return part < 3 ? "m" : part < 6 ? "rad" : "1";
    }
    switch (model.meaning[(size_t)o.unknown]) {
    case va::Meaning::angle: return "rad";
    case va::Meaning::scale:
    case va::Meaning::refraction: return "1";
    default: return "m";
    }
}

} // namespace

bool is_circle(const ResidualResult &r)
{
    return r.kind == "direction" || r.kind == "azimuth" || r.kind == "bearing" || (r.kind == "angle" && r.value >= 0.0);
}

// An adjusted direction, azimuth, bearing or angle as it is read, from 0 to a full circle.
double on_circle(double angle)
{
    const double a = std::fmod(angle, turn);
    return a < 0.0 ? a + turn : a;
}

ObservationResults::ObservationResults(const Model &model, std::shared_ptr<const OwnOutcome> own)
    : network(model), outcome(std::move(own)), numbers(outcome->numbers), values(numbers.model),
      adjustment(outcome->adjustment), planned(model.mode == Mode::Propagation),
      precise(outcome->adjusted() && !adjustment.statistics.deviation.empty()), test_rule(rule_of(model, adjustment)),
      detectable(precise ? test_rule.detectable() : 0.0)
{
    if (!outcome->adjusted()) return;
    const va::Equations &e = adjustment.equations;
    const int n = adjustment.rows, f = adjustment.redundancy;
    if (n > 0 && f > 0) {
        limit = normal_limit(significance);
        limit_divided = normal_limit(significance / n);
        tau = tau_limit(significance, f);
        tau_divided = tau_limit(significance / n, f);
    }
    row_of.reserve((size_t)e.rows());
    for (int row = 0; row < e.rows(); row++)
        if (e.usable[(size_t)row]) row_of.push_back(row);
}

// From the reading to the value in the grid.
void ObservationResults::corrections(int observation, ResidualResult &r) const
{
    const auto found = numbers.reductions.find(observation);
    if (found == numbers.reductions.end() || planned) return;
    const GridReduction &g = found->second;
    const double before = r.value - (g.ellipsoid + g.projection + g.arc_to_chord + g.convergence);
    if (r.raw) r.corrections.push_back({"instrument", before - *r.raw});
    if (!r.raw) r.raw = before;
    const CorrectionResult all[] = {{"ellipsoid", g.ellipsoid},
                                    {"projection", g.projection},
                                    {"arc_to_chord", g.arc_to_chord},
                                    {"convergence", g.convergence}};
    for (const CorrectionResult &c : all)
        if (c.value != 0.0) r.corrections.push_back(c);
}

void ObservationResults::mark(const va::RowStatistics &s, ResidualResult &r) const
{
    if (!precise || network.mode != Mode::Statistics || adjustment.redundancy <= 0) return;
    constexpr double histogram = 5.0; // standard deviations
    const double w = std::fabs(s.normalised), sigma = std::sqrt(adjustment.variance_factor);
    r.outside = w > histogram;
    r.normal = w > limit;
    r.normal_divided = w > limit_divided;
    r.tau = w > tau * sigma;
    r.tau_divided = w > tau_divided * sigma;
}

// The weight of robust estimation, which tests do without.
double ObservationResults::weight(int row) const
{
    return outcome->weights.empty() ? 1.0 : outcome->weights[(size_t)adjustment.equations.observation[(size_t)row]];
}

void ObservationResults::test(const va::RowStatistics &s, double weight, ResidualResult &r) const
{
    r.checked = s.controlled() && s.share() >= network.tests.least_redundancy;
    if (!*r.checked || detectable <= 0.0) return;
    ObservationTestResult t;
    t.detectable = detectable / std::sqrt(s.control / weight);
    t.bias_to_noise = t.detectable * std::sqrt(std::fmax(0.0, s.weight - s.control));
    t.shift = t.detectable * s.effect;
    if (test_rule.tests()) {
        const double normalised = s.normalised / std::sqrt(weight);
        t.probability = test_rule.probability(normalised);
        t.rejected = std::fabs(normalised) > test_rule.limit();
    }
    r.test = t;
}

// Where the values of an observation count from.
double ObservationResults::counted_from(const va::Observation &o, int component) const
{
    if (o.kind == va::Kind::unknown && o.unknown < 3 * values.n_points) return numbers.origin[o.unknown % 3];
    const va::Vec3<double> &c = values.frame.centre;
    const double centre[3] = {c.x, c.y, c.z};
    return o.kind == va::Kind::position ? centre[component] : 0.0;
}

ResidualResult ObservationResults::of_row(int row) const
{
    const va::Equations &e = adjustment.equations;
    const va::Observation &o = values.observations[(size_t)e.observation[(size_t)row]];
    ItemName name = item_name(network, numbers, e.observation[(size_t)row]);
    const int component = e.component[(size_t)row];
    ResidualResult r;
    r.kind = name.kind;
    r.component = name.part.empty() ? component_name(values, o, component) : name.part;
    r.unit = unit_of(values, o);
    r.from = std::move(name.from);
    r.to = std::move(name.to);
    r.file = std::move(name.file);
    r.line = name.line;
    r.observed = !planned;
    r.value = o.value[component] + counted_from(o, component);
    r.sigma = e.sigma[(size_t)row];
    r.residual = e.misclosure[(size_t)row];
    r.weight = weight(row);
    if (!planned) r.adjusted = is_circle(r) ? on_circle(r.value - r.residual) : r.value - r.residual;
    if (precise && !adjustment.statistics.rows.empty()) {
        const va::RowStatistics &s = adjustment.statistics.rows[(size_t)row];
        r.deviation = std::sqrt(s.cofactor);
        r.redundancy = s.redundancy;
        const double w = r.weight;
        if (!planned && s.controlled()) r.normalised = s.normalised / std::sqrt(w);
        if (outcome->weights.empty()) mark(s, r);
        if (network.mode != Mode::Solution) test(s, w, r);
    }
    const ItemPlace &item = numbers.items[(size_t)e.observation[(size_t)row]];
    if (const ItemNotes n = item_notes(network, item); n.notes)
        r.raw = raw_reading(network, item.item == Item::vertical_angle, *n.notes, n.row);
    const auto antennas = numbers.raw.find(e.observation[(size_t)row]);
    if (antennas != numbers.raw.end()) r.raw = antennas->second[(size_t)component];
    corrections(e.observation[(size_t)row], r);
    r.words = words_of(item, name);
    return r;
}

// What the row says beside its values; null where it says nothing.
std::shared_ptr<const RowWords> ObservationResults::words_of(const ItemPlace &item, const ItemName &name) const
{
    RowWords words;
    words.at = name.at;
    if (const ItemNotes n = item_notes(network, item); n.notes) {
        words.id = note_at(n.notes->id, n.row);
        words.remark = note_at(n.notes->remark, n.row);
        if (const int s = note_at(n.notes->setup, n.row); s >= 0) words.setup = network.setups.records[(size_t)s].word;
        if (const int s = note_at(n.notes->set, n.row); s >= 0) words.set = network.set_words[(size_t)s];
    }
    return words.empty() ? nullptr : std::make_shared<const RowWords>(std::move(words));
}

// Places ascend with the rows.
std::pair<std::vector<int>::const_iterator, std::vector<int>::const_iterator>
ObservationResults::among(size_t first, size_t count) const
{
    const auto before = [this](int row, size_t place) { return (size_t)adjustment.place[(size_t)row] < place; };
    const auto begin = std::lower_bound(row_of.begin(), row_of.end(), first, before);
    return {begin, std::lower_bound(begin, row_of.end(), first + count, before)};
}

std::vector<ResidualResult> ObservationResults::make(size_t first, size_t count) const
{
    const auto [begin, end] = among(first, count);
    std::vector<ResidualResult> out;
    out.reserve((size_t)(end - begin));
    std::transform(begin, end, std::back_inserter(out), [this](int row) { return of_row(row); });
    return out;
}

std::vector<size_t> ObservationResults::places(size_t first, size_t count) const
{
    const auto [begin, end] = among(first, count);
    std::vector<size_t> out;
    out.reserve((size_t)(end - begin));
    std::transform(begin, end, std::back_inserter(out),
                   [this](int row) { return (size_t)adjustment.place[(size_t)row]; });
    return out;
}

} // namespace vornhost
