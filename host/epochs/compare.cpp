#include "host/epochs/compare.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "adjust/statistics.h"
#include "host/input/date.h"
#include "host/results/test_limits.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Eigenvalues of cofactors beside the largest of the block: what is below is rounding.
constexpr double no_variance = 1e-10;
// Departures that are tried again; each costs as much as leaving all the others out.
constexpr size_t most_tried = 20;

// v^T Q^+ v of a block of cofactors by rows, and the rank of Q.
va::Squares squares_of(const std::vector<double> &v, const std::vector<double> &q, double scale)
{
    const int k = (int)v.size();
    va::Dense block(k, k);
    block.a = q;
    const va::SmallSvd s = va::small_svd(block);
    va::Squares out;
    out.h = va::count_from(s.s, no_variance * scale);
    for (int c = 0; c < out.h; c++) {
        double along = 0.0;
        for (int i = 0; i < k; i++) along += s.v(i, c) * v[(size_t)i];
        out.q += along * along / s.s[(size_t)c];
    }
    return out;
}

class Comparing {
public:
    Comparing(AdjustedEpochs adjusted, const CompareOptions &its_options)
        : epochs(std::move(adjusted)), numbers(epochs.numbers), options(its_options)
    {
    }

    Comparison run();

private:
    void find_variance();
    void compare_variances();
    bool localise();
    void try_again(const va::Congruence &all, const va::Congruence &without);
    void strains();
    bool group_of(const std::vector<std::string> &names, std::vector<size_t> *points);
    Strain strain_of(const std::vector<size_t> &group, size_t epoch) const;
    int next_to_leave(const va::Congruence &congruence) const;
    FisherTest tested(const va::Squares &s) const { return fisher_test(s.q, s.h, out.factor, options.level); }
    void shifts();
    void shifts_of(size_t epoch);
    Shift shift_of(const ComparedPoint &point, const std::vector<double> &by, const std::vector<double> &q,
                   double scale) const;
    void velocities();
    std::optional<Velocity> velocity_of(size_t point) const;
    std::vector<double> since_first(size_t epoch) const;

    AdjustedEpochs epochs;
    const va::Epochs &numbers;
    const CompareOptions &options;
    std::vector<char> stayed; // [points]
    va::StableDatum datum;
    std::vector<std::vector<double>> places;                 // [epochs][n] in the stable datum, less the first epoch
    std::vector<std::vector<std::vector<double>>> cofactors; // [epochs][points] blocks in the stable datum
    Comparison out;
};

void Comparing::find_variance()
{
    double squares = 0.0, f = 0.0;
    for (const EpochResult &e : epochs.epochs) squares += e.squares, f += e.redundancy;
    out.apriori = options.apriori || f <= 0.0;
    out.factor = {1.0, std::numeric_limits<double>::infinity()};
    if (!out.apriori) out.factor = {squares / f, f};
    compare_variances();
}

void Comparing::compare_variances()
{
    const EpochResult *least = nullptr, *most = nullptr;
    int count = 0;
    const auto mean = [](const EpochResult &e) { return e.squares / e.redundancy; };
    for (const EpochResult &e : epochs.epochs) {
        if (e.redundancy <= 0) continue;
        count++;
        if (!least || mean(e) < mean(*least)) least = &e;
        if (!most || mean(e) > mean(*most)) most = &e;
    }
    if (count < 2 || least == most) return;
    const double pairs = 0.5 * count * (count - 1);
    out.variances = same_variance({mean(*most), (double)most->redundancy}, {mean(*least), (double)least->redundancy},
                                  options.level / pairs);
    out.larger = most->file, out.smaller = least->file;
}

// The point without which the mean square of the others is least; -1 when nothing would be left to test.
int Comparing::next_to_leave(const va::Congruence &congruence) const
{
    const va::Squares all = congruence.test();
    int best = -1;
    double least = 0.0;
    for (int p = 0; p < numbers.points(); p++) {
        if (!congruence.has(p)) continue;
        const va::Squares s = congruence.share(p);
        if (s.h == 0 || all.h - s.h <= 0) continue;
        const double mean = (all.q - s.q) / (all.h - s.h);
        if (best < 0 || mean < least) best = p, least = mean;
    }
    return best;
}

// Points that were left out first may only have suffered from the others: one after the other is tried with those that
// stayed. It is stable when all together pass, and it alone beside the others.
void Comparing::try_again(const va::Congruence &all, const va::Congruence &without)
{
    std::vector<int> away;
    for (const Departure &d : out.departures)
        for (int p = 0; p < numbers.points(); p++)
            if (!without.has(p) && epochs.points[(size_t)p].name == d.point) away.push_back(p);
    const std::vector<int> candidates(away.begin(), away.begin() + (std::ptrdiff_t)std::min(away.size(), most_tried));
    for (const int candidate : candidates) {
        if (candidate == candidates.back() && candidates.size() == away.size() && out.taken_again.empty())
            break; // with the last one the test failed before
        va::Congruence with = all;
        for (const int p : away)
            if (p != candidate) with.remove(p);
        const FisherTest together = tested(with.test());
        if (!together.passed() || !tested(with.share(candidate)).passed()) continue;
        out.stable = together;
        stayed[(size_t)candidate] = 1;
        out.taken_again.push_back(epochs.points[(size_t)candidate].name);
        away.erase(std::find(away.begin(), away.end(), candidate));
    }
}

// False when the cofactors cannot be used.
bool Comparing::localise()
{
    va::Congruence congruence(numbers);
    if (!congruence.good()) return false;
    const va::Congruence all = congruence;
    out.congruence = out.stable = tested(congruence.test());
    while (!out.stable.passed()) {
        const int leaving = next_to_leave(congruence);
        out.stable_found = leaving >= 0;
        if (!out.stable_found) break;
        out.departures.push_back({epochs.points[(size_t)leaving].name, out.stable});
        congruence.remove(leaving);
        out.stable = tested(congruence.test());
    }
    for (int p = 0; p < numbers.points(); p++) stayed.push_back(congruence.has(p) ? 1 : 0);
    if (out.stable_found) try_again(all, congruence);
    datum = va::stable_datum(numbers, stayed);
    if (out.stable_found && datum.carried) return true;
    out.stable_found = false;
    datum = va::stable_datum(numbers, std::vector<char>(stayed.size(), 1));
    return true;
}

std::vector<double> Comparing::since_first(size_t epoch) const
{
    std::vector<double> y = numbers.values[epoch].x;
    for (size_t i = 0; i < y.size(); i++) y[i] -= numbers.values[0].x[i];
    return va::transformed(datum, std::move(y));
}

Shift Comparing::shift_of(const ComparedPoint &point, const std::vector<double> &by, const std::vector<double> &q,
                          double scale) const
{
    Shift s;
    const size_t k = by.size();
    for (size_t i = 0; i < k; i++) {
        s.by[point.axes[i]] = by[i];
        s.deviation[point.axes[i]] = std::sqrt(out.factor.value * std::fmax(0.0, q[i * k + i]));
    }
    s.test = tested(squares_of(by, q, scale));
    if (k < 2 || point.axes[0] != 0 || point.axes[1] != 1) return s;
    const double f = out.factor.value * 2.0 * fisher_limit(options.level, 2, out.factor.f);
    const va::Ellipse e = va::ellipse(f * q[0], f * q[1], f * q[k + 1]);
    s.ellipse = EllipseResult{e.a, e.b, e.bearing};
    return s;
}

double largest_variance(const std::vector<std::vector<double>> &blocks)
{
    double most = 0.0;
    for (const std::vector<double> &b : blocks)
        for (const double x : b) most = std::fmax(most, x);
    return most;
}

void Comparing::shifts_of(size_t epoch)
{
    const std::vector<double> &d = places[epoch];
    std::vector<std::vector<double>> q = cofactors[epoch];
    for (size_t p = 0; p < q.size(); p++)
        for (size_t i = 0; i < q[p].size(); i++) q[p][i] += cofactors[0][p][i];
    const double scale = largest_variance(q);
    for (size_t p = 0; p < out.points.size(); p++) {
        const std::vector<double> by(d.begin() + numbers.first[p], d.begin() + numbers.first[p + 1]);
        out.points[p].shifts.push_back(shift_of(epochs.points[p], by, q[p], scale));
    }
}

void Comparing::shifts()
{
    for (size_t p = 0; p < epochs.points.size(); p++) {
        PointComparison point;
        point.name = epochs.points[p].name;
        for (const int axis : epochs.points[p].axes) point.place[axis] = epochs.points[p].first[(size_t)axis];
        point.stable = stayed[p] && out.stable_found;
        out.points.push_back(point);
    }
    for (size_t e = 0; e < numbers.values.size(); e++) {
        places.push_back(since_first(e));
        cofactors.push_back(va::transformed_blocks(numbers, datum, numbers.values[e].q));
    }
    for (size_t e = 1; e < numbers.values.size(); e++) shifts_of(e);
}

// x_e = a + v t_e with the cofactors of each epoch: 2 k unknowns. Absent where an epoch has no precision of the point.
std::optional<Velocity> Comparing::velocity_of(size_t p) const
{
    const std::vector<int> &axes = epochs.points[p].axes;
    const size_t k = axes.size(), n = 2 * k, first = (size_t)numbers.first[p];
    std::vector<std::vector<double>> weights;
    std::vector<double> years, normal(n * n, 0.0), right(n, 0.0), x(n, 0.0);
    for (size_t e = 0; e < places.size(); e++) {
        weights.push_back(cofactors[e][p]);
        if (!va::invert_full((int)k, &weights.back())) return std::nullopt;
        years.push_back((*out.epochs[e].day - *out.epochs[0].day) / days_in_year);
    }
    for (size_t e = 0; e < places.size(); e++)
        for (size_t i = 0; i < n; i++)
            for (size_t j = 0; j < n; j++) {
                const double w = weights[e][i % k * k + j % k] * (i < k ? 1.0 : years[e]);
                normal[i * n + j] += w * (j < k ? 1.0 : years[e]);
                if (j < k) right[i] += w * places[e][first + j];
            }
    if (!va::invert_full((int)n, &normal)) return std::nullopt;
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < n; j++) x[i] += normal[i * n + j] * right[j];
    double squares = 0.0;
    for (size_t e = 0; e < places.size(); e++)
        for (size_t i = 0; i < k; i++)
            for (size_t j = 0; j < k; j++) {
                const auto residual = [&](size_t c) { return places[e][first + c] - x[c] - years[e] * x[k + c]; };
                squares += residual(i) * weights[e][i * k + j] * residual(j);
            }
    Velocity v;
    std::vector<double> speed(x.begin() + (std::ptrdiff_t)k, x.end()), q;
    for (size_t i = 0; i < k; i++) {
        v.by[axes[i]] = speed[i];
        v.deviation[axes[i]] = std::sqrt(out.factor.value * normal[(k + i) * n + k + i]);
        for (size_t j = 0; j < k; j++) q.push_back(normal[(k + i) * n + k + j]);
    }
    v.moving = tested(squares_of(speed, q, *std::max_element(q.begin(), q.end())));
    v.steady = tested({squares, (int)((places.size() - 2) * k)});
    return v;
}

void Comparing::velocities()
{
    const bool dated = std::all_of(out.epochs.begin(), out.epochs.end(), [](const EpochResult &e) { return e.day; });
    if (!dated || out.epochs.size() < 3) return;
    for (size_t p = 0; p < out.points.size(); p++) out.points[p].velocity = velocity_of(p);
}

// The places of the names among the compared points; refuses what cannot be strained.
bool Comparing::group_of(const std::vector<std::string> &names, std::vector<size_t> *points)
{
    for (const std::string &name : names) {
        const auto at = std::find_if(epochs.points.begin(), epochs.points.end(),
                                     [&](const ComparedPoint &p) { return p.name == name; });
        const auto has = [&](int axis) { return std::count(at->axes.begin(), at->axes.end(), axis) > 0; };
        if (at == epochs.points.end() || !has(0) || !has(1)) {
            out.words = {"the strain of a group needs shifts in x and y of point " + name +
                             ", which is not compared in them",
                         "name points that stand in every file, of networks in plane or space"};
            out.bad_input = true;
            return false;
        }
        points->push_back((size_t)(at - epochs.points.begin()));
    }
    return true;
}

// Of points in the plane, or in space where all have three coordinates; in the order x, y, z.
Strain Comparing::strain_of(const std::vector<size_t> &group, size_t epoch) const
{
    const int k =
        std::all_of(group.begin(), group.end(), [&](size_t p) { return epochs.points[p].axes.size() == 3; }) ? 3 : 2;
    std::vector<size_t> at;
    std::vector<double> where, by, q;
    for (const size_t p : group)
        for (int a = 0; a < k; a++) {
            at.push_back((size_t)(numbers.first[p] + a));
            where.push_back(epochs.points[p].first[(size_t)a]);
        }
    const size_t n = (size_t)numbers.n();
    va::Dense motions((int)at.size(), numbers.motions.cols);
    const va::EpochValues &then = numbers.values[0], &now = numbers.values[epoch];
    for (size_t i = 0; i < at.size(); i++) {
        by.push_back(now.x[at[i]] - then.x[at[i]]);
        for (const size_t j : at) q.push_back(then.q[at[i] * n + j] + now.q[at[i] * n + j]);
        for (int c = 0; c < motions.cols; c++) motions((int)i, c) = numbers.motions((int)at[i], c);
    }
    return find_strain(k, where, by, q, motions, out.factor, options.level);
}

void Comparing::strains()
{
    for (const std::vector<std::string> &names : options.groups) {
        GroupStrain group;
        group.points = names;
        std::vector<size_t> points;
        if (!group_of(names, &points)) return;
        for (size_t e = 1; e < numbers.values.size(); e++) group.epochs.push_back(strain_of(points, e));
        out.strains.push_back(group);
    }
}

Comparison Comparing::run()
{
    out.words = epochs.words;
    out.bad_input = epochs.bad_input, out.stopped = epochs.stopped;
    out.level = options.level;
    out.epochs = epochs.epochs;
    out.notes = epochs.notes;
    out.elsewhere = epochs.elsewhere;
    out.sights = epochs.sights;
    if (!out.made()) return std::move(out);
    out.coordinates = numbers.n(), out.open = numbers.motions.cols;
    find_variance();
    if (!localise()) {
        out.words = {"the compared coordinates have no precision of their own",
                     "compare fewer points with --points: some are determined by the others without any error"};
        return std::move(out);
    }
    shifts();
    velocities();
    strains();
    return std::move(out);
}

} // namespace

Comparison compare(std::vector<Model> &networks, const CompareOptions &options, const RunWatch &watch)
{
    const FileUnits units = file_units(networks[0]);
    const int dimension = networks[0].p.dim;
    Comparison comparison = Comparing(adjust_epochs(networks, options.epochs, watch), options).run();
    comparison.units = units, comparison.dimension = dimension;
    return comparison;
}

Comparison compare_with_control(Model &network, const CompareOptions &options, const RunWatch &watch)
{
    const FileUnits units = file_units(network);
    const int dimension = network.p.dim;
    Comparison comparison = Comparing(adjust_to_control(network, watch), options).run();
    comparison.units = units, comparison.dimension = dimension;
    comparison.control = true;
    return comparison;
}

} // namespace vornhost
