#include "host/epochs/epoch_networks.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "host/epochs/compared_values.h"
#include "host/input/date.h"
#include "host/input/names.h"
#include "host/run/silence.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

bool has_axis(const Model &m, int k) { return m.p.dim == 3 || (m.p.dim == 1 ? k == 2 : k < 2); }

template <class Each> void each_point(Model &m, const Each &each)
{
    for (station_input &s : m.stations.records)
        if (s.status > 0) each(s);
    for (target_input &t : m.targets.records)
        if (t.status > 0) each(t);
}

std::string some_names(const std::vector<std::string> &names)
{
    constexpr size_t most = 8;
    std::string text;
    for (size_t i = 0; i < names.size() && i < most; i++) text += (i > 0 ? ", " : "") + names[i];
    return names.size() > most ? text + " and " + std::to_string(names.size() - most) + " more" : text;
}

class EpochRuns {
public:
    EpochRuns(std::vector<Model> &all, const EpochSettings &its_settings, const RunWatch &its_watch)
        : networks(all), settings(its_settings), watch(its_watch)
    {
    }

    AdjustedEpochs run();

private:
    bool refuse(std::string what, std::string remedy);
    bool comparable();
    bool same_frame(const Model &m);
    bool take_dates();
    bool choose_names();
    bool few_enough();
    bool held_alike();
    void make_ready(Model &m);
    void begin_at_first(Model &m);
    bool adjust(size_t epoch);
    bool choose_axes();
    void collect_sights(size_t epoch, const std::unordered_map<std::string, int> &compared);
    bool collect();

    std::vector<Model> &networks;
    const EpochSettings &settings;
    const RunWatch &watch;
    std::vector<std::string> names;                           // of the compared points
    std::vector<OwnOutcome> runs;                             // [epochs]
    std::vector<std::unordered_map<std::string, int>> places; // [epochs] point by name
    AdjustedEpochs out;
};

bool EpochRuns::refuse(std::string what, std::string remedy)
{
    out.words = {std::move(what), std::move(remedy)};
    return false;
}

bool EpochRuns::same_frame(const Model &m)
{
    const project &a = networks[0].p, &b = m.p;
    if (a.dim != b.dim)
        return refuse(networks[0].path + " has dimension " + std::to_string(a.dim) + ", " + m.path + " " +
                          std::to_string(b.dim),
                      "compare epochs of the same dimension");
    const bool same = a.iearth == b.iearth && (a.iearth == 0 || (a.radius == b.radius && a.horigin == b.horigin &&
                                                                 std::equal(a.trans, a.trans + 3, b.trans)));
    return same || refuse(networks[0].path + " and " + m.path + " differ in [earth]",
                          "write the same section [earth] into both");
}

bool EpochRuns::comparable()
{
    out.bad_input = true;
    for (Model &m : networks) {
        if (!same_frame(m)) return false;
        bool imports = false, lumps = m.lumpdefs.size() > 0;
        each_point(m, [&](auto &p) {
            imports |= p.iconn == 2;
            lumps |= p.ilump != 0;
        });
        if (imports)
            return refuse(m.path + ": imported points tie the epochs to one another by errors that they share",
                          "give their observations in each epoch, or leave the imports out");
        if (lumps)
            return refuse(m.path + ": its lumps have epochs of their own",
                          "adjust it alone, or write a file for each epoch without lumps");
    }
    return take_dates() && choose_names() && few_enough() && held_alike();
}

bool EpochRuns::take_dates()
{
    if (!settings.dates.empty() && settings.dates.size() != networks.size())
        return refuse(std::to_string(settings.dates.size()) + " dates for " + std::to_string(networks.size()) +
                          " epochs",
                      "give one date for each file");
    for (size_t e = 0; e < networks.size(); e++) {
        EpochResult r;
        r.file = networks[e].path, r.title = networks[e].title;
        r.date = settings.dates.empty() ? networks[e].date : settings.dates[e];
        if (!r.date.empty()) {
            r.day = days_of_date(r.date);
            if (!r.day) return refuse("\"" + r.date + "\" is not a date", "write it like 2026-05-01");
        }
        if (r.day && e > 0 && out.epochs[e - 1].day && *r.day <= *out.epochs[e - 1].day)
            return refuse(r.file + ": its date " + r.date + " is not behind " + out.epochs[e - 1].date + " of " +
                              out.epochs[e - 1].file,
                          "name the files in the order of time");
        out.epochs.push_back(r);
    }
    return true;
}

// The names that all epochs have, in the order of the first.
bool EpochRuns::choose_names()
{
    std::vector<std::unordered_set<std::string>> have(networks.size());
    std::vector<std::string> all;
    for (size_t e = 0; e < networks.size(); e++)
        each_point(networks[e], [&](auto &p) {
            const std::string name = shown_name(networks[e], p.name);
            have[e].insert(name);
            if (e == 0 || have[0].count(name) == 0) all.push_back(name);
        });
    std::unordered_set<std::string> wanted(settings.points.begin(), settings.points.end()), taken;
    std::vector<std::string> lost;
    for (const std::string &name : settings.points)
        if (!std::all_of(have.begin(), have.end(), [&](const auto &h) { return h.count(name) > 0; }))
            lost.push_back(name);
    if (!lost.empty())
        return refuse("points to compare that not all epochs have in use: " + some_names(lost),
                      "name points that stand in every file");
    for (const std::string &name : all) {
        if (!taken.insert(name).second || (!wanted.empty() && wanted.count(name) == 0)) continue;
        const bool common = std::all_of(have.begin(), have.end(), [&](const auto &h) { return h.count(name) > 0; });
        (common ? names : out.elsewhere).push_back(name);
    }
    return !names.empty() ||
           refuse("the epochs have no point in common", "give the same point the same name in every file");
}

bool EpochRuns::few_enough()
{
    const size_t count = names.size() * (size_t)networks[0].p.dim * (networks.size() - 1);
    return count <= (size_t)most_compared ||
           refuse(std::to_string(names.size()) + " points in " + std::to_string(networks.size()) + " epochs are " +
                      std::to_string(count) + " differences of coordinates; at most " + std::to_string(most_compared) +
                      " can be compared at once, as their matrices are full",
                  "name the points to compare with --points; all observations still take part");
}

// Coordinates that stay held are the same in all epochs.
bool EpochRuns::held_alike()
{
    std::unordered_map<std::string, std::array<double, 3>> first;
    for (Model &m : networks) {
        std::vector<std::string> other;
        each_point(m, [&](auto &p) {
            const auto at = first.find(shown_name(m, p.name));
            std::array<double, 3> x{{0, 0, 0}};
            bool same = true;
            for (int k = 0; k < 3; k++) {
                x[(size_t)k] = p.x[k] * metres_per_unit(m.p);
                const bool held = has_axis(m, k) && is_held(p.ix[k]);
                if (!held) x[(size_t)k] = NAN;
                if (held && at != first.end() && !std::isnan(at->second[(size_t)k]))
                    same &= std::fabs(x[(size_t)k] - at->second[(size_t)k]) < 1e-9;
            }
            if (&m == &networks[0]) first.emplace(shown_name(m, p.name), x);
            if (!same) other.push_back(shown_name(m, p.name));
        });
        if (settings.held && !other.empty())
            return refuse("points that " + m.path + " holds at other coordinates than " + networks[0].path + ": " +
                              some_names(other),
                          "hold them at the same coordinates, or leave out --held");
    }
    return true;
}

void EpochRuns::make_ready(Model &m)
{
    m.solver = Solver::Sparse;
    m.mode = Mode::Statistics;
    m.residual_statistics = false;
    m.covariance_points = names;
    each_point(m, [&](auto &p) {
        p.iconn = 0;
        for (int k = 0; k < 3 && !settings.held; k++)
            if (has_axis(m, k) && p.ix[k] >= 0) p.ix[k] = CODE_FREE;
    });
}

// First values and datum of a later epoch.
void EpochRuns::begin_at_first(Model &m)
{
    const Numbers &first = runs[0].numbers;
    const double unit = metres_per_unit(m.p);
    each_point(m, [&](auto &p) {
        const auto at = places[0].find(shown_name(m, p.name));
        for (int k = 0; k < 3; k++) {
            if (!has_axis(m, k) || p.ix[k] < 0 || is_held(p.ix[k])) continue;
            if (at == places[0].end() && !settings.held) p.ix[k] = CODE_NO_DATUM;
            const size_t u = at == places[0].end() ? 0 : 3 * (size_t)at->second + (size_t)k;
            if (at == places[0].end() || first.model.code[u] == va::Code::absent) continue;
            p.x[k] = (first.model.value[u] + first.origin[k]) / unit;
            p.status = STATUS_ON;
        }
    });
}

bool EpochRuns::adjust(size_t epoch)
{
    Model &m = networks[epoch];
    make_ready(m);
    if (epoch > 0) begin_at_first(m);
    Silence silence;
    runs.push_back(run_own(m, silence, false, watch));
    OwnOutcome &run = runs.back();
    out.stopped = run.ending == Ending::stopped;
    if (out.stopped) return false;
    for (const std::string &note : run.run.prepared.notes) out.notes.push_back(m.path + ": " + note);
    if (!run.adjusted()) {
        out.words = run.run.words;
        const char *free = settings.held ? "" : " (its held coordinates are free in a comparison)";
        if (!out.words.empty()) out.words[0] = m.path + free + ": " + out.words[0];
        return false;
    }
    places.emplace_back();
    for (size_t p = 0; p < run.numbers.points.size(); p++)
        places.back().emplace(shown_name(m, point_name(m, run.numbers.points[p])), (int)p);
    EpochResult &r = out.epochs[epoch];
    r.datum = run.datum;
    r.redundancy = run.adjustment.redundancy;
    r.squares = run.adjustment.iteration.squares;
    return true;
}

// What of the points is unknown in every epoch.
bool EpochRuns::choose_axes()
{
    for (const std::string &name : names) {
        ComparedPoint point;
        point.name = name;
        for (int k = 0; k < 3; k++) {
            const bool everywhere = [&] {
                for (size_t e = 0; e < runs.size(); e++) {
                    const auto at = places[e].find(name);
                    if (at == places[e].end() || !runs[e].numbers.model.estimated(3 * at->second + k)) return false;
                }
                return true;
            }();
            if (everywhere) point.axes.push_back(k);
            const auto at = places[0].find(name);
            if (at != places[0].end())
                point.first[(size_t)k] =
                    runs[0].numbers.model.value[3 * (size_t)at->second + (size_t)k] + runs[0].numbers.origin[k];
        }
        if (point.axes.empty()) continue;
        out.numbers.first.push_back(out.numbers.n() + (int)point.axes.size());
        out.points.push_back(point);
    }
    return !out.points.empty() || refuse("no coordinate is unknown in all epochs", "free the points to compare");
}

// compared: points by name. An angle has two sights, from its station.
void EpochRuns::collect_sights(size_t epoch, const std::unordered_map<std::string, int> &compared)
{
    std::vector<int> number(runs[epoch].numbers.points.size(), -1);
    for (const auto &[name, place] : places[epoch]) {
        const auto at = compared.find(name);
        if (at != compared.end()) number[(size_t)place] = at->second;
    }
    for (const va::Observation &o : runs[epoch].numbers.model.observations)
        for (const int end : {o.to, o.third}) {
            const int a = o.from < 0 ? -1 : number[(size_t)o.from], b = end < 0 ? -1 : number[(size_t)end];
            if (o.use && a >= 0 && b >= 0 && a != b) out.sights.insert(std::minmax(a, b));
        }
}

bool EpochRuns::collect()
{
    if (!choose_axes()) return false;
    std::unordered_map<std::string, int> compared;
    for (size_t p = 0; p < out.points.size(); p++) compared.emplace(out.points[p].name, (int)p);
    for (size_t e = 0; e < runs.size(); e++) collect_sights(e, compared);
    const double *origin = runs[0].numbers.origin;
    for (OwnOutcome &run : runs) {
        out.numbers.values.push_back(compared_values(networks[(size_t)(&run - runs.data())], run, out.points, origin));
        run.adjustment.statistics.joint = {};
    }
    std::vector<const OwnOutcome *> all;
    for (const OwnOutcome &run : runs) all.push_back(&run);
    out.numbers.motions = open_motions(all, out.points);
    const int n = out.numbers.n(), d = out.numbers.motions.cols;
    return n > d ||
           refuse("the epochs share " + std::to_string(out.points.size()) + " points with " + std::to_string(n) +
                      " coordinates, and leave " + std::to_string(d) + " motions open: nothing is left to compare",
                  "compare more points, or observe what fixes the networks to one another");
}

AdjustedEpochs EpochRuns::run()
{
    if (!comparable()) return std::move(out);
    out.bad_input = false;
    for (size_t e = 0; e < networks.size(); e++)
        if (!adjust(e)) return std::move(out);
    collect();
    return std::move(out);
}

} // namespace

AdjustedEpochs adjust_epochs(std::vector<Model> &networks, const EpochSettings &settings, const RunWatch &watch)
{
    return EpochRuns(networks, settings, watch).run();
}

} // namespace vornhost
