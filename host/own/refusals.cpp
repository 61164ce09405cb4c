#include "host/own/refusals.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <numeric>

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/preparation/lump_checks.h"
#include "host/run/determinacy_words.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

std::string number(double x, int digits)
{
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", digits, x);
    return text;
}

// A misclosure in a unit that a surveyor reads.
std::string misclosure_text(const Model &network, const va::Observation &o, double w)
{
    static const char *const units[] = {" gon", "°", "° (ddd.mmss)", " rad", " mgon", "\"", " mil", "°"};
    const int unit = file_units(network).angle;
    switch (o.kind) {
    case va::Kind::direction:
    case va::Kind::angle:
    case va::Kind::vertical_angle:
    case va::Kind::azimuth:
    case va::Kind::bearing: return number(from_radians(unit, std::fabs(w)), 4) + units[unit];
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

// At most eight names of the unknowns that failed.
std::string failed_names(const Model &network, const OwnOutcome &outcome)
{
    constexpr size_t most = 8;
    std::string names;
    const std::vector<int> &failed = outcome.adjustment.failed;
    for (size_t i = 0; i < failed.size() && i < most; i++)
        names += (i > 0 ? ", " : "") + unknown_name(network, outcome.numbers, failed[i]);
    return names;
}

std::vector<std::string> divergence_words(const Model &network, const OwnOutcome &outcome)
{
    const va::Outcome &a = outcome.adjustment;
    std::vector<std::string> words;
    words.push_back(a.iteration.ending == va::Ending::limit
                        ? "the adjustment does not converge: no end after " + std::to_string(a.iteration.steps) +
                              (a.iteration.steps == 1 ? " iteration" : " iterations")
                        : "the adjustment does not converge: no step makes the residuals smaller");
    if (!a.failed.empty())
        words.push_back("hardly determined: " + failed_names(network, outcome) + "; hold this or observe more of it");
    for (const va::Misfit &m : a.misfits) words.push_back(misfit_line(network, outcome.numbers, m));
    words.push_back(a.misfits.empty() ? "look for wrong first coordinates, exchanged point names and wrong units"
                                      : "correct or leave out what does not fit the first coordinates");
    return words;
}

Naming naming_of(const Model &network, const Numbers &numbers)
{
    static const double circles[] = {400.0,    360.0,     360.0,  2.0 * 3.14159265358979323846,
                                     400000.0, 1296000.0, 6400.0, 360.0};
    static const char *const angles[] = {"gon", "degrees", "degrees", "rad", "mgon", "arc seconds", "mil", "degrees"};
    Naming naming;
    naming.point = [&](int p) { return shown_name(network, point_name(network, numbers.points[(size_t)p])); };
    naming.unknown = [&](int u) { return unknown_name(network, numbers, u); };
    naming.circle = circles[file_units(network).angle];
    naming.angle = angles[file_units(network).angle];
    std::copy(numbers.origin, numbers.origin + 3, naming.origin);
    return naming;
}

// What the rows leave open, in sentences.
std::vector<std::string> open_words(const Model &network, const OwnOutcome &outcome)
{
    const Naming naming = naming_of(network, outcome.numbers);
    std::vector<std::string> words = refusals(outcome.numbers.model, outcome.adjustment.determinacy, naming);
    if (words.empty()) words.push_back("the network is not determined");
    return words;
}

// The normal matrix gave out though no movement was found that the rows do not feel.
std::vector<std::string> singular_words(const Model &network, const OwnOutcome &outcome)
{
    return {failed_names(network, outcome) + ": hardly anything determines this, the normal equations have no solution",
            "observe more of it, or look for standard deviations that are very far apart"};
}

std::vector<std::string> covariance_words(const Model &network, const OwnOutcome &outcome)
{
    const va::Outcome &a = outcome.adjustment;
    const std::vector<int> &groups = outcome.numbers.covariances;
    const int file = (size_t)a.bad_group < groups.size() ? groups[(size_t)a.bad_group] : -1;
    const ItemName row = item_name(network, outcome.numbers, a.equations.observation[(size_t)a.bad_row]);
    if (file < 0)
        return {"a covariance is not positive definite: " + item_text(row), "check its variances and covariances"};
    return {"covariance " + network.covariances.records[(size_t)file].name +
                " is not positive definite: it gives out at " + item_text(row),
            "check its variances and covariances, its form, and the order of its rows"};
}

// Points whose standard deviation, but for what a gross error does to sigma, is a large share of the network's size:
// hardly anything tells where they are.
std::vector<int> hardly_placed(const OwnOutcome &outcome)
{
    constexpr double large = 0.1;
    const va::Model &model = outcome.numbers.model;
    const std::vector<double> &deviation = outcome.adjustment.statistics.deviation;
    std::vector<int> all((size_t)model.n_points), out;
    std::iota(all.begin(), all.end(), 0);
    if (deviation.empty() || all.size() < 2) return out;
    const double limit = large * va::similarity(model, all).size * std::fmax(1.0, outcome.adjustment.statistics.sigma);
    std::copy_if(all.begin(), all.end(), std::back_inserter(out), [&](int p) {
        return std::any_of(&deviation[3 * (size_t)p], &deviation[3 * (size_t)p] + 3,
                           [&](double s) { return s > limit; });
    });
    return out;
}

} // namespace

std::vector<std::string> not_adjusted_here(const Model &network)
{
    if (network.p.lumpmethod == 9 && has_lumps(network))
        return {
            "the solver sparse does not compare epochs after the adjustment: choose --solver compact for method = 9 "
            "in [lumps], or write method = 1 (" +
            network.path + ")"};
    if (network.crs.given() && (has_lumps(network) || network.images.size() > 0))
        return {"images and lumps need coordinates without a reference system: leave out [crs] (" + network.path + ")"};
    if (network.centring.shared && (has_lumps(network) || (network.crs.given() && network.p.dim == 3)))
        return {"centring of each stand does not go with " +
                std::string(has_lumps(network) ? "lumps" : "[crs] in three dimensions") +
                ": write centring = \"each_sight\" in [sigma] (" + network.path + ")"};
    if (const std::string unknown = unknown_value(network); !unknown.empty()) return {unknown};
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
    case va::Status::no_datum:
    case va::Status::datum_points: return end(Ending::no_datum, open_words(network, outcome));
    case va::Status::undetermined: return end(Ending::undetermined, open_words(network, outcome));
    case va::Status::singular: return end(Ending::singular, singular_words(network, outcome));
    default: return end(Ending::no_convergence, divergence_words(network, outcome));
    }
}

std::vector<std::string> weak_notes(const Model &network, const OwnOutcome &outcome)
{
    const Naming naming = naming_of(network, outcome.numbers);
    std::vector<std::string> notes = warnings(outcome.adjustment.determinacy.datum, outcome.adjustment.weak, naming);
    const std::vector<int> points = hardly_placed(outcome);
    if (!points.empty())
        notes.push_back("hardly determined, with standard deviations beyond a tenth of the network: " +
                        names_of(points, naming.point));
    return notes;
}

} // namespace vornhost
