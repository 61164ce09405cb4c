#include "host/own/simulate.h"

#include <cmath>
#include <random>

#include "adjust/equations.h"
#include "adjust/weighted.h"
#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/own/item_names.h"
#include "host/own/refusals.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr double turn = 6.283185307179586476925; // radians

template <class Record> std::string without_coordinates(const Model &network, const List<Record> &list)
{
    for (size_t i = 0; i < list.size(); i++)
        if (list.records[i].status == STATUS_COMPUTE)
            return "point " + shown_name(network, list.records[i].name) + " has no coordinates (" +
                   place(network, list.where[i]) + ")";
    return {};
}

template <class Record> bool has_imports(const List<Record> &list)
{
    for (const Record &r : list.records)
        if (r.status > 0 && r.iconn == 2) return true;
    return false;
}

// Why values cannot be drawn for a network in mode propagation.
std::vector<std::string> refusals_of(const Model &network, double noise)
{
    if (!(noise >= 0.0) || std::isinf(noise))
        return {"the noise is not a number of 0 or more", "1 draws the errors of the standard deviations"};
    if (network.solver != Solver::Sparse)
        return {"only networks of the solver sparse are simulated", "leave solver out"};
    if (network.images.size() > 0) return {"image coordinates are not simulated", "leave the images out"};
    if (has_imports(network.stations) || has_imports(network.targets))
        return {"imported points are not simulated", "make them fixed or weighted"};
    std::string word = without_coordinates(network, network.stations);
    if (word.empty()) word = without_coordinates(network, network.targets);
    if (!word.empty()) return {word, "a simulation needs those of every point"};
    return not_adjusted_here(network);
}

// An error for each row, from its standard deviation or the covariance of its group.
class Errors {
public:
    Errors(const va::Model &model, std::uint64_t seed) : values(model), random(seed), factors(model.groups.size()) {}

    // False when a covariance is not positive definite.
    bool draw(const va::Equations &rows, std::vector<double> &errors)
    {
        for (int r = 0; r < rows.rows(); r++) {
            const int g = rows.group[(size_t)r];
            if (g >= 0 && factors[(size_t)g].empty() && !draw_group((size_t)g)) return false;
            errors.push_back(g < 0 ? rows.sigma[(size_t)r] * normal(random)
                                   : factors[(size_t)g][(size_t)rows.place[(size_t)r]]);
        }
        return true;
    }

private:
    // Errors of the components of a group: L z.
    bool draw_group(size_t g)
    {
        const va::Group &group = values.groups[g];
        const size_t n = (size_t)group.size;
        const auto first = values.covariance.begin() + (std::ptrdiff_t)group.first;
        std::vector<double> l(first, first + (std::ptrdiff_t)(n * n)), z(n);
        if (!va::cholesky(group.size, l.data())) return false;
        for (double &x : z) x = normal(random);
        factors[g].assign(n, 0.0);
        for (size_t i = 0; i < n; i++)
            for (size_t k = 0; k <= i; k++) factors[g][i] += l[i * n + k] * z[k];
        return true;
    }

    const va::Model &values;
    std::mt19937_64 random;
    std::normal_distribution<double> normal;
    std::vector<std::vector<double>> factors; // [groups] errors that were drawn
};

double on_circle(double angle)
{
    const double rest = std::fmod(angle, turn);
    return rest < 0.0 ? rest + turn : rest;
}

// Drawn values on their way into the records.
class Writer {
public:
    Writer(Model &its_network, const Numbers &its_numbers)
        : network(its_network), numbers(its_numbers), metres(metres_per_unit(its_network.p))
    {
    }

    // One component of an observation, which differs by `change` from the value that it had, metres or radians.
    void write(int observation, int component, double change)
    {
        const ItemPlace &place = numbers.items[(size_t)observation];
        const va::Observation &o = numbers.model.observations[(size_t)observation];
        const size_t i = (size_t)place.record;
        const double value = o.value[component] + change;
        switch (place.item) {
        case Item::distance: return measure(network.distances, i, value / metres);
        case Item::height_difference: return measure(network.heightdiffs, i, value / metres);
        case Item::direction: return measure(network.directions, i, circle(value));
        case Item::azimuth: return measure(network.azimuths, i, circle(value));
        case Item::vertical_angle: return measure(network.verticals, i, vertical(value));
        case Item::horizontal_distance: return sight(network.horizontal_distances, i, value);
        case Item::scale_bar: return sight(network.scale_bars, i, value);
        case Item::bearing: return sight(network.bearings, i, on_circle(value));
        case Item::angle: return sight(network.angles, i, on_circle(value));
        case Item::baseline: return baseline(i, component, change);
        case Item::observed_coordinate: return vector(network.coordinates, i, place.part, change);
        case Item::coordinate_difference: return vector(network.coordinate_differences, i, place.part, change);
        case Item::weighted_coordinate: return coordinate(i, place.part, change / metres);
        case Item::weighted_rotation: return rotation(numbers.setups[i], place.part, change);
        case Item::weighted_constant: network.groups.records[i].c[place.part] += change; return;
        case Item::centring: // sights are drawn with it in their standard deviations
        case Item::image_point:
        case Item::imported_coordinate: return; // refused
        }
    }

private:
    double circle(double value) const { return from_direction(network.p.iangle, value); }
    double vertical(double elevation) const
    {
        return from_radians(network.p.iangle, network.p.izenith ? 0.25 * turn - elevation : elevation);
    }
    static void forget_reading(RowNotes &notes, size_t i)
    {
        if (i < notes.raw.size()) notes.raw[i] = unknown_note;
    }
    static void measure(List<measure_input> &list, size_t i, double value)
    {
        list.records[i].val = value;
        forget_reading(list.notes, i);
    }
    static void sight(List<SightRow> &list, size_t i, double value)
    {
        list.records[i].value = value;
        forget_reading(list.notes, i);
    }
    static void vector(List<VectorRow> &list, size_t i, int axis, double change)
    {
        list.records[i].value[axis] += change;
    }
    void baseline(size_t i, int component, double change)
    {
        network.baselines.records[i].dx[network.p.dim == 1 ? 2 : component] += change;
    }
    void coordinate(size_t i, int axis, double change)
    {
        const size_t stations = network.stations.size();
        double *x = i < stations ? network.stations.records[i].x : network.targets.records[i - stations].x;
        x[axis] += change;
    }
    void rotation(const SetupPlace &setup, int axis, double change)
    {
        double *r = setup.named >= 0 ? network.setups.records[(size_t)setup.named].r
                                     : network.stations.records[(size_t)setup.station].r;
        r[axis] += change;
    }

    Model &network;
    const Numbers &numbers;
    const double metres; // in a unit of the records
};

// Lengths whose errors are as large as they are.
std::string negative_length(const Model &network, const Numbers &numbers, int observation, double value)
{
    const va::Kind kind = numbers.model.observations[(size_t)observation].kind;
    const bool length = kind <= va::Kind::scale_bar; // the first kinds are all lengths
    if (!length || value > 0.0) return {};
    return item_text(item_name(network, numbers, observation)) + ": the drawn value is not above 0";
}

} // namespace

std::vector<std::string> simulate(Model &network, std::uint64_t seed, double noise)
{
    Model planned = network.twin(); // its records lose what does not take part
    planned.mode = Mode::Propagation;
    if (std::vector<std::string> words = refusals_of(planned, noise); !words.empty()) return words;
    const Numbers numbers = make_numbers(planned);
    if (!numbers.words.empty()) return numbers.words;
    va::Equations rows = va::pattern(numbers.model);
    va::fill(numbers.model, va::Derivatives::exact, &rows);
    std::vector<double> errors;
    if (!Errors(numbers.model, seed).draw(rows, errors))
        return {"a covariance is not positive definite", "adjust the network to see which"};
    for (size_t r = 0; r < errors.size(); r++) {
        errors[r] = noise * errors[r] - rows.misclosure[r];
        const int o = rows.observation[r];
        const double value = numbers.model.observations[(size_t)o].value[rows.component[r]] + errors[r];
        const std::string word = rows.usable[r] ? negative_length(planned, numbers, o, value) : std::string();
        if (!word.empty()) return {word, "give it a smaller standard deviation"};
    }
    Writer writer(network, numbers);
    for (size_t r = 0; r < errors.size(); r++)
        if (rows.usable[r]) writer.write(rows.observation[r], rows.component[r], errors[r]);
    network.unknown_value = Source();
    if (network.mode == Mode::Propagation) network.mode = Mode::Statistics;
    return {};
}

} // namespace vornhost
