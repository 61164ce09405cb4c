// Results of a run as one structure, collected from the record that the engine leaves and
// from the host's own records. Lengths in metres, angles in radians.

#include "host/results/results.h"

#include <cmath>
#include <cstdio>

#include "host/input/names.h"
#include "host/results/result_parts.h"
#include "host/results/test_limits.h"
#include "host/results/test_rule.h"

namespace vornhost {

std::string bare_name(const char *field, size_t size)
{
    size_t n = 0;
    while (n < size && field[n]) n++;
    while (n > 0 && field[n - 1] == ' ') n--;
    return std::string(field, n);
}

std::optional<double> element(const double *array, size_t i)
{
    if (!array) return std::nullopt;
    return array[i];
}

std::optional<double> deviation(double value)
{
    if (value == 0.0) return std::nullopt;
    return value;
}

double bearing(double engine)
{
    const double pi = 4.0 * std::atan(1.0);
    const double turned = pi - engine;
    return turned >= pi ? turned - pi : turned;
}

double deviation_first(const EllipseResult &e)
{
    return std::hypot(e.a * std::cos(e.bearing), e.b * std::sin(e.bearing));
}

double deviation_second(const EllipseResult &e)
{
    return std::hypot(e.a * std::sin(e.bearing), e.b * std::cos(e.bearing));
}

std::optional<double> raw_reading(const Model &model, bool vertical, const RowNotes &notes, size_t row)
{
    const double raw = note_at(notes.raw, row, unknown_note);
    if (std::isnan(raw)) return std::nullopt;
    return vertical && model.p.izenith == 1 ? 2.0 * std::atan(1.0) - raw : raw;
}

namespace {

const char *solver_word(Solver solver)
{
    static const char *const words[] = {"compact", "jordan", "simplex", "sparse"};
    return words[(int)solver];
}

const char *mode_word(Mode mode)
{
    return mode == Mode::Statistics ? "statistics" : mode == Mode::Solution ? "solution" : "propagation";
}

// The engine sums at most 100 terms of the chi-square, which are too few near the mean of some 700 degrees of freedom
// and more: both of its tests may then say the opposite of what holds.
constexpr int engine_terms_hold = 500;

std::string beside_engine_test(const VarianceTest &t, int f)
{
    char text[500];
    std::snprintf(
        text, sizeof text,
        "the engine's chi-square has too few terms for %d degrees of freedom: its tests of the variance factor "
        "in this report do not count. Sum of squares %.2f: the two-tailed test at %g %% expects %.2f to %.2f, "
        "%s; the one-tailed test expects up to %.2f, %s",
        f, t.squares, 100.0 * t.level, t.lower, t.upper, t.passed() ? "Pass" : "Fail", t.one_sided_limit,
        t.one_sided_passed() ? "Pass" : "Fail");
    return text;
}

// Variance factor of a least-squares run that had observations of the four terrestrial kinds.
void collect_variance(const ResultSource &from, Results &results)
{
    const result &r = from.run;
    const bool least_squares = r.irun == 0 || r.irun == 1;
    if (!from.coordinates() || !least_squares || r.ndist + r.ndifh + r.ndir1 + r.ndir2 == 0) return;
    results.degrees_of_freedom = r.dof;
    results.sigma_apriori = r.sig0;
    if (r.dof > 0) results.sigma_aposteriori = r.sigpost;
    if (r.itest == 0) return;
    results.one_tailed_test = r.itest > 0;
    if (r.dof <= engine_terms_hold || !(r.sig0 > 0.0)) return;
    const double factor = r.sigpost / r.sig0;
    const VarianceTest t = variance_test(factor * factor * r.dof, r.dof, significance);
    results.one_tailed_test = t.one_sided_passed();
    results.variance_test = t;
    results.notes.push_back(beside_engine_test(t, r.dof));
}

// The constants whose code lets them change, and which a member took part with.
void collect_groups(const ResultSource &from, Results &results)
{
    const Model &model = from.model;
    if (!from.coordinates() || !from.outcome.handed_over) return;
    for (size_t g = 0; g < model.groups.size(); g++) {
        const group_input &in = model.groups.records[g];
        GroupResult group;
        group.name = g < model.group_names.size() ? model.group_names[g] : "";
        if (in.typ <= 0) continue; // none of its constants was in use
        for (int m = 0; m < 3; m++) {
            if (in.ic[m] < 0 || in.ic[m] == CODE_FIXED || in.ic[m] == CODE_WEIGHTED) continue;
            group.value[m] = in.c[m];
            if (from.statistics()) group.deviation[m] = deviation(in.sc[m]);
        }
        if (group.value[0] || group.value[1] || group.value[2]) results.groups.push_back(group);
    }
}

LumpResult make_lump(const ResultSource &from, size_t i)
{
    const result &r = from.run;
    const double *t[] = {r.tx, r.ty, r.tz}, *rot[] = {r.lrx, r.lry, r.lrz};
    const double *st[] = {r.stx, r.sty, r.stz}, *srot[] = {r.slrx, r.slry, r.slrz};
    LumpResult lump;
    lump.lump = r.ilump[i];
    lump.epoch = r.iepoch[i];
    lump.reference = r.iref[i];
    lump.scale = element(r.tscale, i).value_or(1.0);
    for (int c = 0; c < 3; c++) {
        lump.translation[c] = element(t[c], i).value_or(0.0);
        lump.rotation[c] = element(rot[c], i).value_or(0.0);
        lump.translation_deviation[c] = deviation(element(st[c], i).value_or(0.0));
        lump.rotation_deviation[c] = deviation(element(srot[c], i).value_or(0.0));
    }
    lump.scale_deviation = deviation(element(r.stscale, i).value_or(0.0));
    return lump;
}

void collect_lumps(const ResultSource &from, Results &results)
{
    const result &r = from.run;
    if (!from.outcome.adjusted() || !r.ilump || !r.iepoch || !r.iref) return;
    for (int i = 0; i < r.nrow; i++)
        if (r.iepoch[i] != 0) results.lumps.push_back(make_lump(from, (size_t)i)); // 0: nothing could be compared
}

EllipseResult pair_ellipse(const double ell[3]) { return {ell[0], ell[1], bearing(ell[2])}; }

// The engine takes differences of less than 1e-5 m for exact in its standard deviations, but
// not in its ellipses, so the deviations here come from the ellipses.
void collect_pairs(const ResultSource &from, Results &results)
{
    if (!from.precision()) return;
    for (const pair_input &in : from.model.pairs.records) {
        PairResult pair;
        pair.from = full_name(from.model, in.from);
        pair.to = full_name(from.model, in.to);
        const EllipseResult e[3] = {pair_ellipse(in.ell12), pair_ellipse(in.ell13), pair_ellipse(in.ell23)};
        for (int k = 0; k < 3; k++) pair.ellipse[k] = e[k];
        pair.deviation[0] = deviation_first(e[0]);
        pair.deviation[1] = deviation_second(e[0]);
        pair.deviation[2] = deviation_second(e[1]);
        if (e[0].a != 0.0 || e[1].a != 0.0 || e[2].a != 0.0) results.pairs.push_back(pair);
    }
}

// Where a run of the engine ended and how, in the words of both roads.
void set_ending(const RunOutcome &outcome, Results &results)
{
    static const struct {
        Stage reached;
        int code;
        const char *stage, *word;
    } endings[] = {
        {Stage::Loading, -3, "datum", "no datum"},
        {Stage::Loading, -4, "first coordinates", "no first coordinates"},
        {Stage::Loading, -5, "first coordinates", "no first coordinates"},
        {Stage::Solving, -1, "adjustment", "no memory"},
        {Stage::Solving, -2, "adjustment", "no memory"},
        {Stage::Solving, -3, "adjustment", "singular"},
        {Stage::Solving, -4, "adjustment", "no convergence"},
        {Stage::Solving, -5, "adjustment", "singular"},
        {Stage::Solving, 0, "adjustment", "not a number"},
        {Stage::Done, 0, "done", "adjusted"},
    };
    results.engine_code = outcome.code;
    results.stage = outcome.reached == Stage::Solving ? "adjustment" : "input";
    results.code = "refused";
    for (const auto &e : endings) {
        if (e.reached != outcome.reached || e.code != outcome.code) continue;
        results.stage = e.stage;
        results.code = e.word;
    }
}

} // namespace

std::string CrsResult::text() const
{
    std::string line = name.empty() || name == network ? network : network + ", " + name;
    if (!heights.empty()) line += ", " + heights + " heights";
    if (!epoch) return line;
    char year[40];
    std::snprintf(year, sizeof year, ", epoch %.10g", *epoch);
    return line + year;
}

Results describe(const Model &model, const std::string &version)
{
    Results results;
    results.program = "vorn";
    results.version = version;
    results.title = model.title;
    results.file = model.path;
    results.solver = solver_word(model.solver);
    results.mode = mode_word(model.mode);
    results.dimension = model.p.dim;
    results.units = file_units(model);
    return results;
}

Results collect(const Model &model, const RunOutcome &outcome, const std::string &version)
{
    Results results = describe(model, version);
    results.adjusted = outcome.adjusted();
    set_ending(outcome, results);
    results.words = outcome.words;
    results.notes = outcome.prepared.notes;
    results.accounts = outcome.accounts;
    if (!model.p.runresults || (outcome.reached != Stage::Solving && outcome.reached != Stage::Done)) return results;

    const ResultSource from = {model, outcome, *model.p.runresults};
    collect_variance(from, results);
    collect_points(from, results);
    collect_orientations(from, results);
    collect_residuals(from, results);
    collect_kinds(from, results);
    collect_groups(from, results);
    collect_lumps(from, results);
    collect_pairs(from, results);
    return results;
}

} // namespace vornhost
