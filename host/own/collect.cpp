#include "host/own/collect.h"

#include <algorithm>
#include <cmath>

#include "adjust/kinds/motions.h"
#include "host/input/names.h"
#include "host/own/covariances.h"
#include "host/own/exports.h"
#include "host/own/item_names.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);

class Collection {
public:
    Collection(const Model &model, const OwnOutcome &own, Results &all)
        : network(model), outcome(own), numbers(own.numbers), values(own.numbers.model), adjustment(own.adjustment),
          results(all), planned(model.mode == Mode::Propagation), precise(own.adjusted() && has_precision())
    {
        seen.assign(values.value.size(), false);
        for (const int u : adjustment.equations.column) seen[(size_t)u] = true;
    }

    void run();

private:
    bool has_precision() const { return !adjustment.statistics.deviation.empty(); }
    bool estimated(int unknown) const { return values.estimated(unknown) && seen[(size_t)unknown]; }
    std::optional<double> deviation(int unknown) const;
    template <int n>
    void parameters(int first, std::optional<double> (&value)[n], std::optional<double> (&sd)[n]) const;

    void variance();
    void points();
    void point_precision(int point, PointResult &p) const;
    void moves(int point, PointResult &p) const;
    void orientations();
    void residuals();
    void residual(int row);
    int words_of(const ItemPlace &item, const ItemName &name);
    void mark(const va::RowStatistics &s, ResidualResult &r) const;
    void find_suspicious();
    void kinds();
    void groups();
    void cameras();
    void lumps();
    void pairs();

    const Model &network;
    const OwnOutcome &outcome;
    const Numbers &numbers;
    const va::Model &values;
    const va::Outcome &adjustment;
    Results &results;
    const bool planned, precise;
    std::vector<bool> seen; // [unknowns] some observation sees it
    double limit = 0, limit_divided = 0, tau = 0, tau_divided = 0;
};

std::optional<double> Collection::deviation(int unknown) const
{
    if (!precise || !values.estimated(unknown)) return std::nullopt;
    return adjustment.statistics.deviation[(size_t)unknown];
}

// Values and standard deviations of n unknowns, of those that were estimated.
template <int n>
void Collection::parameters(int first, std::optional<double> (&value)[n], std::optional<double> (&sd)[n]) const
{
    for (int k = 0; k < n; k++) {
        if (!estimated(first + k)) continue;
        value[k] = values.value[(size_t)first + (size_t)k];
        sd[k] = deviation(first + k);
    }
}

// Sigma and the two tests of the variance factor.
void Collection::variance()
{
    results.degrees_of_freedom = adjustment.redundancy;
    results.iterations = planned ? std::nullopt : std::optional<int>(adjustment.iteration.steps);
    if (planned) return;
    results.sigma_apriori = 1.0;
    const int f = adjustment.redundancy;
    if (f <= 0) return;
    const double squares = adjustment.variance_factor * f;
    results.sigma_aposteriori = std::sqrt(adjustment.variance_factor);
    if (network.mode != Mode::Statistics) return;
    results.one_tailed_test = squares <= chi_square_limit(1.0 - significance, f);
    results.variance_test =
        VarianceTest{squares, chi_square_limit(significance / 2.0, f), chi_square_limit(1.0 - significance / 2.0, f)};
}

const char *code_word(int code)
{
    static const char *const words[] = {"free", "free", "no_datum", "weighted", "fixed"};
    return code >= 0 && code <= CODE_FIXED ? words[code] : "fixed";
}

void Collection::point_precision(int point, PointResult &p) const
{
    static const int plane[3][2] = {{0, 1}, {0, 2}, {1, 2}}, place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    for (int k = 0; k < 3; k++) p.deviation[k] = deviation(3 * point + k);
    if (!precise) return;
    const va::Covariance &c = adjustment.statistics.points[(size_t)point];
    for (int e = 0; e < 3; e++) {
        const int i = plane[e][0], j = plane[e][1];
        if (!p.deviation[i] || !p.deviation[j]) continue;
        const va::Ellipse q = va::ellipse(c[place[i][i]], c[place[i][j]], c[place[j][j]]);
        p.ellipse[e] = {q.a, q.b, q.bearing};
    }
}

// Where the motions of its lump take a point, from the adjusted place.
void Collection::moves(int point, PointResult &p) const
{
    if (!outcome.adjusted() || planned) return;
    const PointPlace &place = numbers.points[(size_t)point];
    const int lump = place.station ? network.stations.records[(size_t)place.record].ilump
                                   : network.targets.records[(size_t)place.record].ilump;
    const double *x = &values.value[3 * (size_t)point];
    for (size_t m = 0; m < values.motions.size(); m++) {
        if (numbers.motions[m].lump != lump) continue;
        const double *u = &values.value[(size_t)values.motions[m].first];
        const va::Vec3<double> at{x[0], x[1], x[2]},
            there = va::moved(at, va::Moved<double>{{u[0], u[1], u[2]}, {u[3], u[4], u[5]}, u[6]});
        p.moves.push_back({numbers.motions[m].epoch, {there.x - at.x, there.y - at.y, there.z - at.z}});
    }
}

void Collection::points()
{
    for (int i = 0; i < values.n_points; i++) {
        const PointPlace &place = numbers.points[(size_t)i];
        const int *codes = place.station ? network.stations.records[(size_t)place.record].ix
                                         : network.targets.records[(size_t)place.record].ix;
        PointResult p;
        p.name = shown_name(network, point_name(network, place));
        p.station = place.station;
        for (int k = 0; k < 3; k++) {
            const size_t u = 3 * (size_t)i + (size_t)k;
            if (values.code[u] == va::Code::absent) continue;
            p.code[k] = code_word(codes[k]);
            p.approximate[k] = values.start[u] + numbers.origin[k];
            if (outcome.adjusted() && !planned) p.adjusted[k] = values.value[u] + numbers.origin[k];
        }
        point_precision(i, p);
        moves(i, p);
        results.points.push_back(p);
    }
}

void Collection::orientations()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t s = 0; s < values.setups.size(); s++) {
        const int first = values.setups[s].first;
        if (!values.estimated(first) && !values.estimated(first + 1) &&
            values.code[(size_t)first + 2] == va::Code::absent)
            continue; // an upright instrument whose circle nobody read
        OrientationResult o;
        const SetupPlace &setup = numbers.setups[s];
        o.name = shown_name(network, record_name(network, setup.station));
        if (setup.named >= 0) o.setup = network.setups.records[(size_t)setup.named].word;
        if (setup.set >= 0) o.set = network.set_words[(size_t)setup.set];
        for (int k = 0; k < 3; k++) {
            o.rotation[k] = std::remainder(values.value[(size_t)first + (size_t)k], turn);
            if (estimated(first + k)) o.deviation[k] = deviation(first + k);
        }
        results.orientations.push_back(o);
    }
}

const char *component_name(const va::Model &model, const va::Observation &o, int component)
{
    static const char *const axes[3] = {"x", "y", "z"}, *const pixels[2] = {"u", "v"};
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
    switch (model.meaning[(size_t)o.unknown]) {
    case va::Meaning::angle: return "rad";
    case va::Meaning::scale:
    case va::Meaning::refraction: return "1";
    default: return "m";
    }
}

bool is_circle(const va::Observation &o)
{
    return o.kind == va::Kind::direction || o.kind == va::Kind::azimuth || o.kind == va::Kind::bearing ||
           (o.kind == va::Kind::angle && o.value[0] >= 0.0);
}

// An adjusted direction, azimuth, bearing or angle as it is read, from 0 to a full circle.
double on_circle(double angle)
{
    const double a = std::fmod(angle, turn);
    return a < 0.0 ? a + turn : a;
}

void Collection::mark(const va::RowStatistics &s, ResidualResult &r) const
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

void Collection::residual(int row)
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
    const bool coordinate = o.kind == va::Kind::unknown && o.unknown < 3 * values.n_points;
    r.value = o.value[component] + (coordinate ? numbers.origin[o.unknown % 3] : 0.0);
    r.sigma = e.sigma[(size_t)row];
    r.residual = e.misclosure[(size_t)row];
    if (!planned) r.adjusted = is_circle(o) ? on_circle(r.value - r.residual) : r.value - r.residual;
    if (precise && !adjustment.statistics.rows.empty()) {
        const va::RowStatistics &s = adjustment.statistics.rows[(size_t)row];
        r.deviation = std::sqrt(s.cofactor);
        r.redundancy = s.redundancy;
        if (!planned && s.redundancy >= va::least_redundancy) r.normalised = s.normalised;
        mark(s, r);
    }
    const ItemPlace &item = numbers.items[(size_t)e.observation[(size_t)row]];
    if (const ItemNotes n = item_notes(network, item); n.notes)
        r.raw = raw_reading(network, item.item == Item::vertical_angle, *n.notes, n.row);
    const auto antennas = numbers.raw.find(e.observation[(size_t)row]);
    if (antennas != numbers.raw.end()) r.raw = antennas->second[(size_t)component];
    r.words = words_of(item, name);
    results.residuals.push_back(std::move(r));
}

// What the row says beside its values; -1 where it says nothing.
int Collection::words_of(const ItemPlace &item, const ItemName &name)
{
    RowWords words;
    words.at = name.at;
    if (const ItemNotes n = item_notes(network, item); n.notes) {
        words.id = note_at(n.notes->id, n.row);
        words.remark = note_at(n.notes->remark, n.row);
        if (const int s = note_at(n.notes->setup, n.row); s >= 0) words.setup = network.setups.records[(size_t)s].word;
        if (const int s = note_at(n.notes->set, n.row); s >= 0) words.set = network.set_words[(size_t)s];
    }
    if (words.empty()) return -1;
    results.row_words.push_back(words);
    return (int)results.row_words.size() - 1;
}

void Collection::residuals()
{
    if (!outcome.adjusted()) return;
    const va::Equations &e = adjustment.equations;
    const int n = e.usable_rows(), f = adjustment.redundancy;
    if (n > 0 && f > 0) {
        limit = normal_limit(significance);
        limit_divided = normal_limit(significance / n);
        tau = tau_limit(significance, f);
        tau_divided = tau_limit(significance / n, f);
    }
    results.residuals.reserve((size_t)n);
    for (int row = 0; row < e.rows(); row++)
        if (e.usable[(size_t)row]) residual(row);
    find_suspicious();
}

void Collection::find_suspicious()
{
    std::vector<size_t> &worst = results.suspicious;
    const auto size = [&](size_t i) { return std::fabs(results.residuals[i].normalised.value_or(0.0)); };
    for (size_t i = 0; i < results.residuals.size(); i++)
        if (results.residuals[i].normal_divided.value_or(false)) worst.push_back(i);
    std::stable_sort(worst.begin(), worst.end(), [&](size_t a, size_t b) { return size(a) > size(b); });
}

// Kinds of the file; the three kinds of distances are one of them.
void Collection::kinds()
{
    if (!precise || planned || adjustment.redundancy <= 0) return;
    const project &p = network.p;
    const Model::Apriori &own = network.apriori;
    const bool coordinates = network.coordinates.size() > 0;
    const struct {
        const char *name;
        va::Kind first, last;
        double apriori;
    } all[] = {
        {"distance", va::Kind::slope_distance, va::Kind::level_distance, p.sdist},
        {"horizontal distance", va::Kind::horizontal_distance, va::Kind::horizontal_distance, own.horizontal_distance},
        {"scale bar", va::Kind::scale_bar, va::Kind::scale_bar, own.scale_bar},
        {"height difference", va::Kind::height_difference, va::Kind::height_difference, p.sdifh},
        {"direction", va::Kind::direction, va::Kind::direction, p.sdir1},
        {"angle", va::Kind::angle, va::Kind::angle, own.angle},
        {"vertical angle", va::Kind::vertical_angle, va::Kind::vertical_angle, p.sdir2},
        {"azimuth", va::Kind::azimuth, va::Kind::azimuth, p.saz},
        {"bearing", va::Kind::bearing, va::Kind::bearing, own.bearing},
        {"baseline", va::Kind::baseline, va::Kind::baseline, p.sgps},
        {"coordinate difference", va::Kind::difference, va::Kind::difference, own.coordinate_difference},
        {"image point", va::Kind::image, va::Kind::image, p.suv},
        {coordinates ? "observed, weighted or imported" : "weighted or imported", va::Kind::unknown, va::Kind::unknown,
         coordinates ? own.coordinate : 1.0}};
    for (const auto &a : all) {
        va::KindStatistics sum;
        for (int k = (int)a.first; k <= (int)a.last; k++) {
            const va::KindStatistics &s = adjustment.statistics.kinds[(size_t)k];
            sum.rows += s.rows;
            sum.squares += s.squares;
            sum.redundancy += s.redundancy;
        }
        if (sum.rows == 0) continue;
        KindResult k;
        k.kind = a.name;
        k.sigma_apriori = a.apriori;
        if (sum.redundancy >= va::least_redundancy) {
            k.sigma_aposteriori = a.apriori * std::sqrt(std::fmax(0.0, sum.squares / sum.redundancy));
            k.goodness_of_fit = sum.squares >= chi_square_limit(significance / 2.0, sum.redundancy) &&
                                sum.squares <= chi_square_limit(1.0 - significance / 2.0, sum.redundancy);
        }
        const bool others = a.first == va::Kind::unknown;
        for (const ResidualResult &r : results.residuals) {
            const bool weighted = r.kind.rfind("weighted", 0) == 0 || r.kind.rfind("imported", 0) == 0 ||
                                  r.kind.rfind("observed", 0) == 0;
            if (others ? !weighted : r.kind != a.name) continue;
            k.over_normal += r.normal.value_or(false);
            k.over_normal_divided += r.normal_divided.value_or(false);
            k.over_tau += r.tau.value_or(false);
            k.over_tau_divided += r.tau_divided.value_or(false);
        }
        results.kinds.push_back(k);
    }
}

void Collection::groups()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t g = 0; g < values.constants.size(); g++) {
        GroupResult group;
        group.name = network.group_names[(size_t)numbers.constant_groups[g]];
        parameters(values.constants[g].first, group.value, group.deviation);
        if (group.value[0] || group.value[1] || group.value[2]) results.groups.push_back(group);
    }
}

void Collection::cameras()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t c = 0; c < values.cameras.size(); c++) {
        CameraResult camera;
        camera.name = shown_name(network, network.cameras.records[(size_t)numbers.camera_records[c]].name);
        parameters(values.cameras[c].first, camera.value, camera.deviation);
        if (std::any_of(std::begin(camera.value), std::end(camera.value), [](const auto &v) { return v.has_value(); }))
            results.cameras.push_back(camera);
    }
}

void Collection::lumps()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t m = 0; m < values.motions.size(); m++) {
        const int first = values.motions[m].first;
        const MotionPlace &place = numbers.motions[m];
        LumpResult lump;
        lump.lump = place.lump;
        lump.epoch = place.epoch;
        lump.reference = place.reference;
        for (int k = 0; k < 3; k++) {
            lump.translation[k] = values.value[(size_t)first + (size_t)k];
            lump.rotation[k] = values.value[(size_t)first + 3 + (size_t)k];
            lump.translation_deviation[k] = deviation(first + k);
            lump.rotation_deviation[k] = deviation(first + 3 + k);
        }
        lump.scale = values.value[(size_t)first + 6];
        lump.scale_deviation = deviation(first + 6);
        results.lumps.push_back(lump);
    }
}

void Collection::pairs()
{
    if (!precise) return;
    static const int plane[3][2] = {{0, 1}, {0, 2}, {1, 2}}, place[3][3] = {{0, 1, 2}, {1, 3, 4}, {2, 4, 5}};
    const std::vector<std::pair<int, int>> wanted = wanted_pairs(network, numbers);
    for (size_t i = 0; i < wanted.size(); i++) {
        const va::Covariance &c = adjustment.statistics.pairs[i];
        PairResult pair;
        pair.from = shown_name(network, point_name(network, numbers.points[(size_t)wanted[i].first]));
        pair.to = shown_name(network, point_name(network, numbers.points[(size_t)wanted[i].second]));
        bool axis[3];
        for (int k = 0; k < 3; k++) {
            axis[k] = values.code[(size_t)k] != va::Code::absent;
            if (axis[k]) pair.deviation[k] = std::sqrt(std::fmax(0.0, c[place[k][k]]));
        }
        for (int e = 0; e < 3; e++) {
            const int a = plane[e][0], b = plane[e][1];
            if (!axis[a] || !axis[b]) continue;
            const va::Ellipse q = va::ellipse(c[place[a][a]], c[place[a][b]], c[place[b][b]]);
            pair.ellipse[e] = EllipseResult{q.a, q.b, q.bearing};
        }
        results.pairs.push_back(pair);
    }
}

void Collection::run()
{
    if (outcome.adjusted()) variance();
    points();
    orientations();
    residuals();
    kinds();
    results.components = outcome.components;
    groups();
    cameras();
    lumps();
    pairs();
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

Results collect_own(const Model &network, const OwnOutcome &outcome, const std::string &version)
{
    Results results = describe(network, version);
    results.adjusted = outcome.adjusted();
    set_ending(outcome, results);
    results.words = outcome.run.words;
    results.notes = outcome.run.prepared.notes;
    results.datum = outcome.datum;
    results.seconds = outcome.seconds;
    results.accounts = outcome.run.accounts;
    Collection(network, outcome, results).run();
    collect_covariances(network, outcome, results);
    return results;
}

} // namespace vornhost
