#include "host/preparation/start/start.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include "adjust/linear.h"
#include "host/preparation/start/displaced.h"
#include "host/preparation/start/held.h"
#include "host/preparation/start/mirror.h"
#include "host/preparation/start/shape.h"
#include "host/preparation/start/sharp.h"
#include "host/preparation/start/solid.h"

namespace vornhost::start {

namespace {

namespace va = vornadjust;

constexpr double work = 150000.0;          // observations in all ways together
constexpr int most_ways = 14;              // tried on a small network
constexpr int most_repeats = 3;            // of a way without what did not fit
constexpr double bad_scale = 8.0;          // of a fit: misclosures this much above their standard deviations
constexpr double no_fit = 50.0;            // of one that says nothing
constexpr double as_good = 10.0;           // difference of two losses that tells nothing where something is wrong
constexpr double noise = 0.7;              // the same where nothing is: one row five standard deviations off
constexpr size_t most_others = 40;         // ways with the other one of two places
constexpr int most_bases = 8;              // of a network in space that is its shape alone
constexpr int last_steps = 100;            // of a place that fits as well
constexpr double as_good_in_height = 0.35; // the same of mirrored heights: one row three standard deviations off
constexpr size_t few_of = 1000;    // observations of a large network that may be wrong without another way being tried
constexpr size_t most_wrong = 100; // observations, of a share of all: more of them show that the start is rough
constexpr double wrong_share = 0.02;
constexpr double elsewhere = 0.02;  // of a typical sight: apart enough to be another place
constexpr double distinct = 1e-4;   // the same where nothing is wrong
constexpr double given_off = 0.5;   // of a typical sight: an approximate point that is off by more is wrong
constexpr size_t sights_of_one = 3; // that do not fit, at least, where a given point is wrong

double typical_sight(const va::Model &model)
{
    std::vector<double> lengths;
    for (const va::Observation &o : model.observations) {
        if (!o.use || o.from < 0 || o.to < 0) continue;
        const double *a = &model.value[3 * (size_t)o.from], *b = &model.value[3 * (size_t)o.to];
        lengths.push_back(std::hypot(a[0] - b[0], a[1] - b[1]));
    }
    if (lengths.empty()) return 0.0;
    std::nth_element(lengths.begin(), lengths.begin() + (long)(lengths.size() / 2), lengths.end());
    return lengths[lengths.size() / 2];
}

class Search {
public:
    Search(va::Model *its_model, const Given &its_given)
        : target(*its_model), model(with_sharp_sigmas(*its_model)), given(its_given), shape_alone(is_shape_alone(model))
    {
    }

    Start run();
    const Trial &search(); // the best of all ways

private:
    bool clean(const Trial &t) const;
    bool better(const Trial &a, const Trial &b) const;
    Trial try_repeatedly(const Way &way);
    std::vector<Way> ways() const;
    void consider(Trial t);
    void try_others();
    void try_solids();
    void tell_misfits(Start *start) const;
    void tell_degenerate(Start *start) const;
    void tell_doubts(Start *start);
    void tell_image(Start *start) const;
    std::vector<Doubt> bring_onto_best(Trial *t, double least) const;
    double noise_of_losses() const;
    bool same_but_elsewhere(const Trial &t) const;
    void mirror_misfitting_heights();
    void tell_height_doubts(Start *start) const;
    bool fits_as_well(const Trial &t, double difference) const;
    Trial best_without(const std::vector<int> &points) const;
    void check_given(Start *start);
    void check_approximate(Start *start) const;
    void displace(const std::vector<int> &points, Start *start) const;
    void write(const Start &start);

    va::Model &target;     // gets the values
    const va::Model model; // on which they are found
    const Given &given;
    const bool shape_alone; // what is known of the network; it lies anywhere in space
    Trial best;
    bool any = false;
    std::vector<Trial> rivals; // as good as the best, elsewhere
};

bool Search::clean(const Trial &t) const
{
    const size_t few = is_large(model) ? model.observations.size() / few_of : 0;
    return t.missing.empty() && t.fit.finite && misfits(t).size() <= few && t.fit.scale < bad_scale;
}

bool Search::better(const Trial &a, const Trial &b) const
{
    if (a.fit.finite != b.fit.finite) return a.fit.finite;
    if (a.missing.size() != b.missing.size()) return a.missing.size() < b.missing.size();
    return a.fit.loss < b.fit.loss;
}

// Again without what does not fit, as long as that helps.
Trial Search::try_repeatedly(const Way &way)
{
    std::vector<char> left_out(model.observations.size(), 0);
    Trial t = try_way(model, given, left_out, way);
    for (int i = 0; i < most_repeats && !clean(t); i++) {
        const std::vector<int> off = misfits(t);
        if (off.empty()) break;
        for (const int o : off) left_out[(size_t)o] = 1;
        Trial next = try_way(model, given, left_out, way);
        if (!better(next, t)) break;
        t = std::move(next);
    }
    return t;
}

std::vector<Way> Search::ways() const
{
    std::vector<Way> all = {{false, 0, 0}, {true, 0, 0},  {false, 1, 0}, {true, 0, 1}, {false, 2, 0},
                            {true, 0, 3},  {false, 3, 0}, {true, 1, 5},  {true, 2, 2}, {true, 3, 7},
                            {true, 5, 4},  {true, 6, 9},  {true, 7, 11}, {true, 0, 13}};
    const double n = std::fmax(1.0, (double)model.observations.size());
    all.resize((size_t)std::clamp(work / n, 1.0, (double)most_ways));
    return all;
}

void Search::consider(Trial t)
{
    if (!any || better(t, best)) {
        if (any) rivals.push_back(std::move(best));
        best = std::move(t);
        any = true;
        return;
    }
    rivals.push_back(std::move(t));
}

void Search::tell_misfits(Start *start) const
{
    const std::vector<int> all = misfits(best);
    if (all.size() > most_wrong && all.size() > wrong_share * (double)model.observations.size()) {
        start->rough = (int)all.size();
        return;
    }
    for (const int i : all) {
        const va::Observation &o = best.model.observations[(size_t)i];
        va::Linear linear;
        va::linearize(best.model, o, false, &linear);
        start->misfits.push_back({i, linear.value[0], best.fit.off[(size_t)i]});
    }
    std::stable_sort(start->misfits.begin(), start->misfits.end(),
                     [](const Misfit &a, const Misfit &b) { return a.off > b.off; });
}

// Of points without a place; and of those that have one by chance, as errors of readings carry them along a circle.
void Search::tell_degenerate(Start *start) const
{
    if (is_large(model)) return;
    va::Model all = model;
    all.value = best.model.value;
    if (!start->missing.empty()) {
        start->degenerate = find_degenerate(all, best.placed, start->missing);
        return;
    }
    std::vector<int> wanted;
    for (int p = 0; p < model.n_points; p++)
        if (given.wants_plan(p)) wanted.push_back(p);
    start->degenerate = find_degenerate(all, best.placed, wanted, Near::readings);
    for (const Degenerate &d : start->degenerate) start->missing.push_back(d.point);
}

// Elsewhere, and with a difference of losses that tells nothing.
bool Search::fits_as_well(const Trial &t, double difference) const
{
    return t.fit.finite && t.fit.loss <= best.fit.loss + difference && !in_one_valley(best, t, difference);
}

// Difference of two losses that readings explain.
double Search::noise_of_losses() const { return std::fmin(as_good, noise * best.fit.scale * best.fit.scale); }

// Moves a start onto the best one, and says which points lie elsewhere then.
std::vector<Doubt> Search::bring_onto_best(Trial *t, double least) const
{
    if (shape_alone)
        move_shape_onto(best, t);
    else
        move_onto(best, given, t);
    return places_apart(best, given, *t, least, shape_alone);
}

// The network beside known points on one line, where nothing tells right from left.
void Search::tell_image(Start *start) const
{
    const std::optional<Trial> image = image_in_line(best, given);
    if (image) start->doubts = places_apart(best, given, *image, distinct * typical_sight(best.model), false);
}

// Points that stand elsewhere in another way that fits as well. Ways are told apart when they are adjusted to the end;
// where gross errors are explained in several ways, points move a little from one to the other.
void Search::tell_doubts(Start *start)
{
    const bool sure = clean(best);
    const double least = (sure ? distinct : elsewhere) * typical_sight(best.model);
    std::vector<char> told((size_t)model.n_points, 0);
    for (Trial &t : rivals) {
        if (!t.missing.empty() || !t.fit.finite || t.fit.loss > best.fit.loss + as_good) continue;
        if (bring_onto_best(&t, least).empty()) continue;
        t.fit = settle(&t.model, last_steps, Pull::most);
        const std::vector<Doubt> apart = bring_onto_best(&t, least);
        if (!fits_as_well(t, sure || misfits(t) == misfits(best) ? noise_of_losses() : as_good)) continue;
        for (const Doubt &d : apart)
            if (!std::exchange(told[(size_t)d.point], 1)) start->doubts.push_back(d);
    }
}

// An adjustment may end on the wrong side of the level of the other ends: the mirror image fits better then.
void Search::mirror_misfitting_heights()
{
    for (const std::vector<int> &points : heights_of_lengths(best, given, work)) {
        if (clean(best)) return;
        Trial t = best;
        mirror_heights(points, About::mean, &t);
        if (t.fit.finite && t.fit.loss < best.fit.loss - as_good_in_height) best = std::move(t);
    }
}

// Heights that lengths alone tell, as their mirror images about the other ends of these.
void Search::tell_height_doubts(Start *start) const
{
    const auto sets = heights_of_lengths(best, given, work);
    const bool near_only = !clean(best) || 6.0 * (double)(sets.size() * model.observations.size()) > work;
    for (const std::vector<int> &points : sets)
        for (const About about : every_about) {
            if (about != About::mean && (near_only || points.size() > 1)) break;
            Trial t = best;
            mirror_heights(points, about, &t);
            if (shape_alone && bring_onto_best(&t, distinct * typical_sight(best.model)).empty()) continue;
            if (!fits_as_well(t, as_good_in_height) || misfits(t).size() > misfits(best).size()) continue;
            for (const int p : points) {
                const double *x = &best.model.value[3 * (size_t)p], *y = &t.model.value[3 * (size_t)p];
                start->doubts.push_back({p, {x[0], x[1], x[2]}, {y[0], y[1], y[2]}, true, std::fabs(x[2] - y[2])});
            }
            return;
        }
}

// The best start of the network without what is given in the plan of some points.
Trial Search::best_without(const std::vector<int> &points) const
{
    Loosened loose = loosen(model, given, points);
    return Search(&loose.model, loose.given).search();
}

void Search::displace(const std::vector<int> &points, Start *start) const
{
    for (const int p : points) {
        const double *x = &best.model.value[3 * (size_t)p], *was = &model.value[3 * (size_t)p];
        start->displaced.push_back({p, {x[0], x[1]}, {was[0], was[1]}, std::hypot(x[0] - was[0], x[1] - was[1])});
    }
}

// Where much does not fit, given coordinates may be wrong: they are compared with the network that the sights make
// without them, and those that lie elsewhere have no part.
void Search::check_given(Start *start)
{
    const std::vector<int> points = given_points(model, given);
    if (points.size() < 3 || is_large(model)) return;
    const Trial loose = best_without(points);
    if (!loose.missing.empty() || !loose.fit.finite || !(loose.fit.scale < bad_scale)) return;
    const Comparison comparison = compare_given(model, points, loose, typical_sight(loose.model));
    start->mirrored = comparison.mirrored;
    start->given_scale = comparison.scale;
    if (comparison.displaced.empty()) return;
    Trial without = best_without(comparison.displaced);
    const bool explains = misfits(without).size() + sights_of_one * comparison.displaced.size() <= misfits(best).size();
    if (!without.missing.empty() || !(explains || best.fit.scale > bad_scale)) return;
    best = std::move(without);
    rivals.clear();
    displace(comparison.displaced, start);
}

// Approximate coordinates that the damped adjustment moved far.
void Search::check_approximate(Start *start) const
{
    const double far = given_off * typical_sight(best.model);
    std::vector<int> moved;
    for (const int p : given_points(model, given)) {
        const double *x = &best.model.value[3 * (size_t)p], *was = &model.value[3 * (size_t)p];
        if (std::hypot(x[0] - was[0], x[1] - was[1]) > far) moved.push_back(p);
    }
    displace(moved, start);
}

void Search::write(const Start &start)
{
    for (int p = 0; p < 3 * model.n_points; p++)
        if (given.coordinate[(size_t)p] == Known::wanted)
            target.value[(size_t)p] = target.start[(size_t)p] = best.model.value[(size_t)p];
    for (const Displaced &d : start.displaced)
        for (size_t u = 3 * (size_t)d.point; u < 3 * (size_t)d.point + 2; u++)
            if (target.estimated((int)u)) target.value[u] = target.start[u] = best.model.value[u];
    for (size_t c = 0; c < model.setups.size(); c++) {
        const size_t turn = (size_t)model.setups[c].first + 2;
        if (!given.setup[c]) target.value[turn] = target.start[turn] = best.model.value[turn];
    }
}

// The same network but for what fits in two places: nothing else is wrong in it, and readings explain the difference.
bool Search::same_but_elsewhere(const Trial &t) const
{
    return t.missing.empty() && t.fit.finite && t.fit.loss <= best.fit.loss + as_good && misfits(t) == misfits(best);
}

// From the best way, where two places fit alike: with the other one of each, and where that does not fit with others
// of two and more, as what hangs on a point turns with it. Where gross errors are explained in several ways, the best
// one stays, unless another one leaves much less unexplained.
void Search::try_others()
{
    const double n = std::fmax(1.0, (double)model.observations.size());
    const size_t most = std::min(most_others, (size_t)(work / n));
    std::vector<Way> waiting;
    std::set<std::vector<Choice>> known = {best.way.others};
    const auto add = [&](const Way &from, const std::vector<Choice> &choices) {
        for (const Choice c : choices) {
            Way way = from;
            way.turn_round(c);
            if (known.insert(way.others).second) waiting.push_back(way);
        }
    };
    add(best.way, best.choices);
    const double much = clean(best) ? 0.0 : as_good;
    for (size_t i = 0; i < waiting.size() && i < most; i++) {
        Trial t = try_repeatedly(waiting[i]);
        const bool less = t.fit.finite && t.missing.size() <= best.missing.size() && t.fit.loss < best.fit.loss - much;
        if (less || same_but_elsewhere(t))
            consider(std::move(t));
        else
            add(t.way, t.choices);
    }
}

// A network that is its shape alone, from several bases. Of points that fit on both sides of three others the other
// side is a rival.
void Search::try_solids()
{
    std::vector<int> open, open_now;
    SolidWay way;
    for (int base = 0; base < most_bases && !(any && clean(best)); base++) {
        auto t = grow_solid(model, given, {base, {}}, &open_now);
        if (!t) continue;
        consider(std::move(*t));
        way.base = base;
        open = open_now;
    }
    if (open.size() > most_others) open.resize(most_others);
    for (const int p : open) {
        way.below = {p};
        if (auto t = grow_solid(model, given, way, &open_now)) consider(std::move(*t));
    }
}

const Trial &Search::search()
{
    if (shape_alone && !is_large(model)) try_solids();
    for (const Way &way : ways()) {
        if (any && clean(best) && best.choices.empty()) break;
        consider(try_repeatedly(way));
    }
    if (!best.choices.empty()) try_others();
    if (shape_alone) place_as_given(model, given, &best);
    return best;
}

Start Search::run()
{
    search();
    Start start;
    if (!clean(best)) check_given(&start);
    if (start.displaced.empty()) check_approximate(&start);
    if (best.missing.empty()) mirror_misfitting_heights();
    start.missing = best.missing;
    tell_degenerate(&start);
    start.scale = best.fit.scale;
    start.contradicts = start.missing.empty() && !is_large(model) && !(start.scale < no_fit);
    tell_misfits(&start);
    if (start.missing.empty() && !start.contradicts) tell_image(&start);
    if (start.missing.empty() && !start.contradicts && start.doubts.empty()) tell_doubts(&start);
    if (start.missing.empty() && !start.contradicts && start.doubts.empty()) tell_height_doubts(&start);
    if (start.found()) {
        start.points_that_tell_side = points_that_tell_side(best, given);
        write(start);
    }
    return start;
}

} // namespace

Start find_start(va::Model *model, const Given &given) { return Search(model, given).run(); }

} // namespace vornhost::start
