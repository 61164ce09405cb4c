#include "host/own/collect.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

#include "adjust/kinds/motions.h"
#include "host/input/names.h"
#include "host/own/covariances.h"
#include "host/own/derived.h"
#include "host/own/earth.h"
#include "host/own/exports.h"
#include "host/own/item_names.h"
#include "host/own/joint_tests.h"
#include "host/own/observation_results.h"
#include "host/own/shared_rows.h"
#include "host/results/test_limits.h"
#include "host/results/test_rule.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const double turn = 8.0 * std::atan(1.0);

class Collection {
public:
    Collection(const Model &model, const std::shared_ptr<const OwnOutcome> &own, Results &all)
        : network(model), outcome(*own), numbers(own->numbers), values(own->numbers.model), adjustment(own->adjustment),
          results(all), planned(model.mode == Mode::Propagation), precise(own->adjusted() && has_precision()),
          rows(std::make_shared<const ObservationResults>(model, own)), rule(rows->rule())
    {
    }

    void run();

private:
    bool has_precision() const { return !adjustment.statistics.deviation.empty(); }
    // Of any process.
    bool has_tests() const
    {
        return precise && std::any_of(adjustment.statistics.kinds.begin(), adjustment.statistics.kinds.end(),
                                      [](const va::KindStatistics &k) { return k.rows > 0; });
    }
    bool estimated(int unknown) const { return values.estimated(unknown) && adjustment.seen[(size_t)unknown]; }
    std::optional<double> deviation(int unknown) const;
    template <int n>
    void parameters(int first, std::optional<double> (&value)[n], std::optional<double> (&sd)[n]) const;

    void variance();
    void precision();
    void points();
    void point_precision(int point, PointResult &p) const;
    void moves(int point, PointResult &p) const;
    void on_earth(int point, PointResult &p) const;
    void reference_system();
    void orientations();
    void residuals();
    void look_through();
    void tests();
    void weights();
    void suspects();
    void joint_tests();
    void kinds();
    void groups();
    void cameras();
    void lumps();
    void deflections();
    void transformations();
    void pairs();
    void weak_pairs();

    const Model &network;
    const OwnOutcome &outcome;
    const Numbers &numbers;
    const va::Model &values;
    const va::Outcome &adjustment;
    Results &results;
    const bool planned, precise;
    const std::shared_ptr<const ObservationResults> rows;
    const TestRule &rule;
    std::map<std::string, KindResult> marks; // of the residuals of each kind, weighted and imported ones together
    int unchecked = 0;
    std::optional<size_t> first_unchecked;
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

// Sigma and the tests of the variance factor.
void Collection::variance()
{
    results.degrees_of_freedom = adjustment.redundancy;
    results.iterations = planned ? std::nullopt : std::optional<int>(adjustment.iteration.steps);
    if (planned) return;
    results.sigma_apriori = 1.0;
    const int f = adjustment.redundancy;
    if (f <= 0) return;
    if (!outcome.weights.empty()) return; // weights that follow the residuals make their squares small
    results.sigma_aposteriori = std::sqrt(adjustment.variance_factor);
    if (network.mode != Mode::Statistics) return;
    const VarianceTest t = variance_test(adjustment.variance_factor * f, f, rule.global_level());
    results.one_tailed_test = t.one_sided_passed();
    results.variance_test = t;
}

// Semi-axes of an ellipse or ellipsoid of that confidence by those of the standard one: by chi-square, or by F where
// the variance factor of the adjustment is in them.
double axes_factor(double confidence, int dimension, bool a_priori, int f)
{
    const double freedom = a_priori ? std::numeric_limits<double>::infinity() : f;
    return std::sqrt(dimension * fisher_limit(1.0 - confidence, dimension, freedom));
}

void Collection::precision()
{
    if (!precise) return;
    PrecisionResult p;
    p.a_priori = network.tests.a_priori || planned || !outcome.weights.empty() || adjustment.redundancy <= 0;
    p.sigma = adjustment.statistics.sigma;
    if (network.tests.confidence > 0) {
        p.confidence = network.tests.confidence;
        p.ellipse_factor = axes_factor(*p.confidence, 2, p.a_priori, adjustment.redundancy);
        p.ellipsoid_factor = axes_factor(*p.confidence, 3, p.a_priori, adjustment.redundancy);
    }
    results.precision = p;
}

const char *code_word(int code)
{
    static const char *const words[] = {"free", "free", "no_datum", "weighted", "fixed"};
    return code >= 0 && code <= CODE_FIXED ? words[code] : "fixed";
}

// Radius of the circle about the adjusted position that holds the true one with 95 %, by the semi-axes of the standard
// ellipse (W. Leenhouts, On the computation of bi-normal radial error, 1985; to 0.2 %).
double circle_radius(double a, double b)
{
    const double c = a > 0.0 ? b / a : 0.0;
    return a * (1.960790 + c * (0.004071 + c * (0.114276 + c * 0.371625)));
}

EllipsoidResult ellipsoid_of(const va::Covariance &c)
{
    const va::ErrorEllipsoid e = va::error_ellipsoid(c);
    EllipsoidResult r;
    for (int k = 0; k < 3; k++) {
        const double *d = e.direction[k], up = d[2] < 0.0 ? -1.0 : 1.0;
        r.axis[k] = e.axis[k];
        r.bearing[k] = std::atan2(up * d[1], up * d[0]);
        if (r.bearing[k] < 0.0) r.bearing[k] += turn;
        r.elevation[k] = std::atan2(up * d[2], std::hypot(d[0], d[1]));
    }
    return r;
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
    if (p.deviation[0] && p.deviation[1] && p.deviation[2]) p.ellipsoid = ellipsoid_of(c);
    if (p.ellipse[0]) p.uncertainty = circle_radius(p.ellipse[0]->a, p.ellipse[0]->b);
    if (network.p.dim == 1 && p.deviation[2]) p.uncertainty = normal_limit(significance) * *p.deviation[2];
}

// Where the motions of its lump take a point, from the adjusted place.
void Collection::moves(int point, PointResult &p) const
{
    if (!outcome.adjusted() || planned) return;
    const PointPlace &place = numbers.points[(size_t)point];
    const int lump = place.station ? network.stations.records[(size_t)place.record].ilump
                                   : network.targets.records[(size_t)place.record].ilump;
    if (lump == 0) return;
    const double *x = &values.value[3 * (size_t)point];
    for (size_t m = 0; m < values.motions.size(); m++) {
        if (numbers.motions[m].transformation >= 0 || numbers.motions[m].lump != lump) continue;
        const double *u = &values.value[(size_t)values.motions[m].first];
        const va::Vec3<double> at{x[0], x[1], x[2]},
            there = va::moved(at, va::Moved<double>{{u[0], u[1], u[2]}, {u[3], u[4], u[5]}, u[6]});
        p.moves.push_back({numbers.motions[m].epoch, {there.x - at.x, there.y - at.y, there.z - at.z}});
    }
}

// Where the present coordinates of a point lie on the earth and on maps.
void Collection::on_earth(int point, PointResult &p) const
{
    constexpr double degrees = 57.295779513082320877;
    const Reference *reference = outcome.adjusted() ? outcome.reference.get() : nullptr;
    const std::optional<Place3> place = reference ? vornhost::place_of(numbers, *reference, point) : std::nullopt;
    if (!place) return;
    EarthPlace earth;
    earth.latitude = place->at.latitude * degrees;
    earth.longitude = place->at.longitude * degrees;
    const PointPlace &record = numbers.points[(size_t)point];
    if (network.p.dim == 3 || network.heightless.count({record.station, record.record}) == 0) {
        const va::Vec3<double> x =
            va::geocentric(reference->ellipsoid(),
                           va::GeographicPlace<double>{place->at.latitude, place->at.longitude, place->height});
        earth.height = place->height;
        earth.geocentric = {x.x, x.y, x.z};
    }
    p.earth = earth;
    const std::optional<LatLon> map = reference->on_map(place->at);
    const std::optional<GridAxes> axes = reference->axes(place->at);
    if (!map || !axes) return;
    MapPlace m;
    m.latitude = map->latitude * degrees;
    m.longitude = map->longitude * degrees;
    for (int k = 0; k < 2; k++) {
        m.latitude_by[k] = axes->latitude[k] * degrees;
        m.longitude_by[k] = axes->longitude[k] * degrees;
    }
    p.map = m;
}

void Collection::reference_system()
{
    const Crs &crs = network.crs;
    if (!crs.given()) return;
    CrsResult r;
    r.network = crs.network;
    if (outcome.reference) r.name = outcome.reference->name();
    if (!crs.local()) r.heights = crs.ellipsoidal ? "ellipsoidal" : "orthometric";
    r.epoch = crs.epoch;
    results.crs = r;
}

void Collection::points()
{
    results.points.reserve((size_t)values.n_points);
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
        on_earth(i, p);
        results.points.push_back(std::move(p));
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

// Residuals that are made once for all who go through them: half a gigabyte, and a third of the time of writing.
constexpr int most_kept = 1000000;

// Residuals that other processes send at a time: each time the first one waits for the slowest of them.
constexpr size_t most_sent = 8192;

// The name under which the marks of a residual are counted.
std::string counted_as(const ResidualResult &r)
{
    const bool weighted =
        r.kind.rfind("weighted", 0) == 0 || r.kind.rfind("imported", 0) == 0 || r.kind.rfind("observed", 0) == 0;
    return weighted ? std::string() : r.kind;
}

// Counts marks, and finds the observations that the test rejects.
void Collection::look_through()
{
    std::vector<std::pair<double, size_t>> worst;
    size_t i = 0;
    for (const ResidualResult &r : results.residuals) {
        KindResult &k = marks[counted_as(r)];
        k.over_normal += r.normal.value_or(false);
        k.over_normal_divided += r.normal_divided.value_or(false);
        k.over_tau += r.tau.value_or(false);
        k.over_tau_divided += r.tau_divided.value_or(false);
        k.suspicious += r.test && r.test->rejected;
        k.unchecked += !r.checked.value_or(true);
        unchecked += !r.checked.value_or(true);
        if (!r.checked.value_or(true) && !first_unchecked) first_unchecked = i;
        if (!outcome.weights.empty() && r.weight < 1.0) results.weights.push_back({i, r.weight});
        if (r.test && r.test->rejected) worst.emplace_back(std::fabs(r.normalised.value_or(0.0)), i);
        i++;
    }
    std::stable_sort(worst.begin(), worst.end(), [](const auto &a, const auto &b) { return a.first > b.first; });
    results.suspicious.reserve(worst.size());
    for (const auto &[size, place] : worst) results.suspicious.push_back(place);
}

void Collection::residuals()
{
    if (!outcome.adjusted()) return;
    const auto make = [all = rows, ranks = outcome.ranks](size_t first, size_t n) {
        return ranks ? fetch_rows(*all, *ranks, first, n) : all->make(first, n);
    };
    results.residuals = Residuals((size_t)adjustment.rows, make, outcome.ranks ? most_sent : Residuals::in_cache);
    if (!outcome.ranks && adjustment.rows <= most_kept) results.residuals.keep();
    if (has_tests() || !outcome.weights.empty()) look_through();
    if (has_tests()) tests();
    if (!outcome.weights.empty()) weights();
    suspects();
    joint_tests();
    results.snooping = outcome.snooping;
}

const char *test_word(ObservationTest test)
{
    return test == ObservationTest::tau ? "tau" : test == ObservationTest::b_method ? "b_method" : "baarda";
}

void Collection::tests()
{
    TestsResult t;
    t.test = test_word(network.tests.test);
    t.words = rule.name();
    t.sidak = network.tests.sidak;
    t.level = network.tests.level;
    t.single_level = rule.single_level();
    t.power = network.tests.power;
    if (rule.tests()) t.limit = rule.limit();
    t.least_redundancy = network.tests.least_redundancy;
    t.unchecked = unchecked;
    t.first_unchecked = first_unchecked;
    t.tested = rule.tests() ? (int)results.residuals.size() - unchecked : 0;
    t.rejected = (int)results.suspicious.size();
    results.tests = t;
}

const char *robust_word(Robust robust)
{
    return robust == Robust::huber ? "huber" : robust == Robust::danish ? "danish" : "l1";
}

void Collection::weights()
{
    results.robust = robust_word(network.tests.robust);
    std::vector<WeightResult> &all = results.weights;
    std::stable_sort(all.begin(), all.end(),
                     [](const WeightResult &a, const WeightResult &b) { return a.weight < b.weight; });
}

void Collection::suspects()
{
    for (const va::Suspect &s : adjustment.suspects) {
        SuspectResult suspect;
        suspect.residual = (size_t)s.place;
        const ResidualResult &r = std::as_const(results.residuals)[suspect.residual];
        suspect.error = s.error;
        suspect.would_read = r.raw.value_or(r.value) - s.error;
        const va::Observation &o = values.observations[(size_t)s.observation];
        if (is_circle(o)) suspect.would_read = on_circle(suspect.would_read);
        suspect.shift = s.shift;
        if (s.point >= 0) suspect.point = results.points[(size_t)s.point].name;
        for (const va::Alike &a : s.alike) suspect.alike.push_back({(size_t)a.place, a.correlation});
        results.suspects.push_back(suspect);
    }
}

// Components of an observation are rows that follow one another.
void Collection::joint_tests()
{
    if (planned || !precise || adjustment.statistics.together.empty() || !outcome.weights.empty()) return;
    for (const va::JointStatistics &j : adjustment.statistics.together) {
        if (j.rows == 0) continue;
        JointTestResult t;
        t.rank = j.rank;
        t.squares = j.squares;
        t.components = j.rows;
        t.first = (size_t)j.first;
        if (rule.tests_together(t.rank)) {
            const double all = adjustment.variance_factor * adjustment.redundancy;
            t.probability = rule.probability_together(t.squares, all, t.rank);
            t.rejected = *t.probability < rule.level_together(t.rank);
        }
        results.joint_tests.push_back(t);
    }
}

// Kinds of the file; the three kinds of distances are one of them.
void Collection::kinds()
{
    if (!precise || planned || adjustment.redundancy <= 0 || !outcome.weights.empty()) return;
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
        {"observed point", va::Kind::position, va::Kind::position, own.coordinate},
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
        const KindResult &m = marks[a.first == va::Kind::unknown ? "" : a.name];
        k.over_normal = m.over_normal;
        k.over_normal_divided = m.over_normal_divided;
        k.over_tau = m.over_tau;
        k.over_tau_divided = m.over_tau_divided;
        k.suspicious = m.suspicious;
        k.unchecked = m.unchecked;
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
        if (place.lump == 0) continue; // centring, transformations
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

void Collection::deflections()
{
    if (!outcome.adjusted() || planned) return;
    for (const va::Deflection &d : values.deflections) {
        DeflectionResult r;
        r.point = shown_name(network, point_name(network, numbers.points[(size_t)d.point]));
        for (int k = 0; k < 2; k++) {
            r.value[k] = values.value[(size_t)d.first + (size_t)k];
            r.deviation[k] = deviation(d.first + k);
        }
        results.deflections.push_back(r);
    }
}

// A shift t of positions x - c with scale s and rotation R is one of t + c - s R c of positions x.
void Collection::transformations()
{
    if (!outcome.adjusted() || planned) return;
    for (size_t m = 0; m < values.motions.size(); m++) {
        const int record = numbers.motions[m].transformation, first = values.motions[m].first;
        if (record < 0) continue;
        TransformationResult r;
        r.name = network.transformations.records[(size_t)record].name;
        const double *u = &values.value[(size_t)first];
        std::copy(u, u + 7, r.value);
        for (int k = 0; k < 7; k++) r.deviation[k] = deviation(first + k);
        const va::Vec3<double> c = values.frame.centre, o = values.motions[m].origin,
                               from{c.x - o.x, c.y - o.y, c.z - o.z};
        if (dot(from, from) > 0.0) {
            const auto turned = va::moved(from, va::Moved<double>{{0, 0, 0}, {u[3], u[4], u[5]}, u[6]});
            r.here = {u[0], u[1], u[2]};
            const double shift[3] = {from.x - turned.x, from.y - turned.y, from.z - turned.z};
            for (int k = 0; k < 3; k++) r.value[k] += shift[k];
        }
        results.transformations.push_back(r);
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
        if (axis[0] && axis[2]) pair.ellipsoid = ellipsoid_of(c);
        if (pair.ellipse[0]) pair.uncertainty = circle_radius(pair.ellipse[0]->a, pair.ellipse[0]->b);
        if (network.p.dim == 1) pair.uncertainty = normal_limit(significance) * *pair.deviation[2];
        results.pairs.push_back(pair);
    }
}

// The worst known of the pairs that observations join.
void Collection::weak_pairs()
{
    for (const va::WeakPair &w : adjustment.statistics.weak_pairs) {
        WeakPairResult pair;
        pair.from = results.points[(size_t)w.from].name;
        pair.to = results.points[(size_t)w.to].name;
        pair.uncertainty = network.p.dim == 1 ? normal_limit(significance) * w.a : circle_radius(w.a, w.b);
        const double *p = &values.value[3 * (size_t)w.from], *q = &values.value[3 * (size_t)w.to];
        pair.distance =
            std::sqrt((q[0] - p[0]) * (q[0] - p[0]) + (q[1] - p[1]) * (q[1] - p[1]) + (q[2] - p[2]) * (q[2] - p[2]));
        results.weak_pairs.push_back(pair);
    }
}

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
