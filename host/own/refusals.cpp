#include "host/own/refusals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/preparation/lump_checks.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const char *const kind_words[va::n_kinds][2] = {
    {"distance", "distances"},
    {"distance", "distances"},
    {"distance", "distances"},
    {"height difference", "height differences"},
    {"direction", "directions"},
    {"angle", "angles"},
    {"vertical angle", "vertical angles"},
    {"azimuth", "azimuths"},
    {"baseline", "baselines"},
    {"image point", "image points"},
    {"weighted or imported value", "weighted or imported values"},
};

std::string counted(int n, const char *const words[2]) { return std::to_string(n) + " " + words[n == 1 ? 0 : 1]; }

// "a", "a and b", "a, b and c".
std::string listed(const std::vector<std::string> &items)
{
    std::string text;
    for (size_t i = 0; i < items.size(); i++) text += (i == 0 ? "" : i + 1 < items.size() ? ", " : " and ") + items[i];
    return text;
}

// What holds the basic motions first to last - 1: "2 fixed coordinates and 7 distances"; empty when they are all open.
std::string holders(const va::Datum &datum, int first, int last)
{
    static const char *const fixed_words[2] = {"fixed coordinate", "fixed coordinates"};
    std::array<int, va::n_kinds> most = {};
    int fixed = 0;
    for (int m = first; m < last; m++) {
        const va::Holding &h = datum.holding[(size_t)m];
        if (!h.exists || h.open) continue;
        fixed = std::max(fixed, h.fixed);
        for (int k = 0; k < va::n_kinds; k++) most[(size_t)k] = std::max(most[(size_t)k], h.of_kind[(size_t)k]);
    }
    std::vector<std::string> items;
    if (fixed > 0) items.push_back(counted(fixed, fixed_words));
    most[1] += most[0] + most[2]; // the three kinds of distances
    most[0] = most[2] = 0;
    for (int k = 0; k < va::n_kinds; k++)
        if (most[(size_t)k] > 0) items.push_back(counted(most[(size_t)k], kind_words[k]));
    return listed(items);
}

std::vector<std::string> open_words(const va::Datum &datum)
{
    static const char *const words[3][2] = {{"shift", "shifts"}, {"turn", "turns"}, {"scale", "scales"}};
    int count[3] = {0, 0, 0};
    for (const va::NamedMotion &m : datum.open) count[(int)m.kind]++;
    std::vector<std::string> open;
    for (int k = 0; k < 3; k++)
        if (count[k] > 0) open.push_back(k == 2 ? "scale" : counted(count[k], words[k]));
    return open;
}

std::string number(double x, int digits)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", digits, x);
    return text;
}

// A misclosure in a unit that a surveyor reads.
std::string misclosure_text(const Model &network, const va::Observation &o, double w)
{
    static const char *const units[] = {" gon", "°", "° (ddd.mmss)", " rad"};
    switch (o.kind) {
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::vertical_angle:
    case va::Kind::azimuth: return number(from_radians(network.p.iangle, std::fabs(w)), 4) + units[network.p.iangle];
    case va::Kind::image: return number(std::fabs(w), 1) + " pixels";
    default: return number(std::fabs(w), 3) + " m";
    }
}

std::string misfit_line(const Model &network, const Numbers &numbers, const va::Misfit &m)
{
    const va::Observation &o = numbers.model.observations[(size_t)m.observation];
    const ItemName name = item_name(network, numbers, m.observation);
    std::string line = item_text(name) + ": " + misclosure_text(network, o, m.misclosure) + " off";
    if (m.agreeing > 0)
        line += ", the other " + std::to_string(m.agreeing) + (m.agreeing == 1 ? " sight of " : " sights of ") +
                name.from + (m.agreeing == 1 ? " agrees" : " agree");
    return line;
}

std::vector<std::string> divergence_words(const Model &network, const OwnOutcome &outcome)
{
    const va::Outcome &a = outcome.adjustment;
    std::vector<std::string> words;
    words.push_back(a.iteration.ending == va::Ending::limit
                        ? "the adjustment does not converge: no end after " + std::to_string(a.iteration.steps) +
                              " iterations"
                        : "the adjustment does not converge: no step makes the residuals smaller");
    for (const va::Misfit &m : a.misfits) words.push_back(misfit_line(network, outcome.numbers, m));
    words.push_back(a.misfits.empty() ? "look for wrong first coordinates, exchanged point names and wrong units"
                                      : "correct or leave out what does not fit the first coordinates");
    return words;
}

std::string names_of(const Model &network, const Numbers &numbers, const std::vector<int> &points)
{
    constexpr size_t most = 8;
    std::string text;
    for (size_t i = 0; i < points.size() && i < most; i++)
        text += (i > 0 ? ", " : "") + plain_name(point_name(network, numbers.points[(size_t)points[i]]));
    return points.size() > most ? text + " and " + std::to_string(points.size() - most) + " more" : text;
}

std::vector<std::string> loose_words(const Model &network, const OwnOutcome &outcome)
{
    const va::Datum &d = outcome.adjustment.datum;
    std::string parts;
    for (size_t i = 0; i < d.loose_parts.size(); i++)
        parts += (i > 0 ? " | " : "") + names_of(network, outcome.numbers, d.parts.points[(size_t)d.loose_parts[i]]);
    return {"the network falls into parts that no observation ties together and nothing holds: " + parts,
            "observe between them, or hold each by fixed points"};
}

std::vector<std::string> singular_words(const Model &network, const OwnOutcome &outcome,
                                        const std::vector<int> &unknowns)
{
    std::vector<std::string> names;
    for (const int u : unknowns)
        if (names.size() < 8) names.push_back(unknown_name(network, outcome.numbers, u));
    return {"not determined: " + listed(names), "observe more, or fix what is known"};
}

std::vector<int> moved_unknowns(const va::Mechanisms &m)
{
    std::vector<int> unknowns = m.unseen;
    for (int j = 0; j < m.vectors.cols; j++)
        for (int i = 0; i < m.vectors.rows; i++)
            if (std::fabs(m.vectors(i, j)) > 1e-7) unknowns.push_back(i);
    std::sort(unknowns.begin(), unknowns.end());
    unknowns.erase(std::unique(unknowns.begin(), unknowns.end()), unknowns.end());
    return unknowns;
}

std::vector<std::string> covariance_words(const Model &network, const OwnOutcome &outcome)
{
    const std::vector<va::Observation> &all = outcome.numbers.model.observations;
    const auto at = std::find_if(all.begin(), all.end(),
                                 [&](const va::Observation &o) { return o.group == outcome.adjustment.bad_group; });
    return {"a covariance is not positive definite: " +
                item_text(item_name(network, outcome.numbers, (int)(at - all.begin()))),
            "check its variances and covariances"};
}

} // namespace

std::vector<std::string> not_adjusted_here(const Model &network)
{
    if (network.p.lumpmethod == 9 && has_lumps(network))
        return {
            "the solver sparse does not compare epochs after the adjustment: choose --solver compact for method = 9 "
            "in [lumps], or write method = 1 (" +
            network.path + ")"};
    return {};
}

void judge(const Model &network, OwnOutcome &outcome)
{
    const va::Outcome &a = outcome.adjustment;
    const auto end = [&](Ending ending, std::vector<std::string> words) {
        outcome.ending = ending;
        outcome.run.words = std::move(words);
    };
    switch (a.status) {
    case va::Status::adjusted: return end(Ending::adjusted, {});
    case va::Status::no_observations:
        return end(Ending::no_observations, {"no observation takes part", "look at those left out"});
    case va::Status::bad_covariance: return end(Ending::bad_covariance, covariance_words(network, outcome));
    case va::Status::no_datum: return end(Ending::no_datum, loose_words(network, outcome));
    case va::Status::datum_points:
        return end(Ending::no_datum,
                   {"the points with code free do not hold the network", "give more points code free"});
    case va::Status::undetermined:
        return end(Ending::undetermined, singular_words(network, outcome, moved_unknowns(a.mechanisms)));
    case va::Status::singular: return end(Ending::singular, singular_words(network, outcome, a.failed));
    default: return end(Ending::no_convergence, divergence_words(network, outcome));
    }
}

std::string datum_line(const va::Datum &datum)
{
    if (datum.state == va::DatumState::loose) return {};
    static const struct {
        const char *what;
        int first, last;
    } groups[] = {{"position", 0, 3}, {"orientation", 3, 6}, {"scale", 6, 7}};
    std::vector<std::string> held;
    for (const auto &g : groups) {
        const std::string by = holders(datum, g.first, g.last);
        if (!by.empty()) held.push_back(std::string(g.what) + " from " + by);
    }
    const std::vector<std::string> open = open_words(datum);
    std::string line = open.empty() ? "held: " : "free: ";
    for (size_t i = 0; i < open.size(); i++) line += (i > 0 ? ", " : "") + open[i];
    for (size_t i = 0; i < held.size(); i++) line += (i > 0 || !open.empty() ? "; " : "") + held[i];
    return line;
}

} // namespace vornhost
