// Makes the networks: places points, observes them with noise, rounds all to the printed digits.

#include "networks.h"

#include <cmath>
#include <cstring>
#include <utility>

namespace networks {

namespace {

const double pi = 4.0 * std::atan(1.0);
const double gon = pi / 200.0; // radians
const double length_digits = 1.0e6;
const double angle_digits = 1.0e7;
const double coordinate_digits = 1.0e3;

// SplitMix64 (Steele, Lea, Flood 2014) and the normal deviates of Box and Muller (1958). The
// standard library's distributions differ from one library to the next.
class Random {
public:
    explicit Random(uint64_t seed) : state(seed) {}

    // In (0, 1), 53 bits.
    double uniform() { return ((double)(next() >> 11) + 0.5) / 9007199254740992.0; }

    double between(double low, double high) { return low + (high - low) * uniform(); }

    double normal()
    {
        const double radius = std::sqrt(-2.0 * std::log(uniform()));
        return radius * std::cos(2.0 * pi * uniform());
    }

private:
    uint64_t next()
    {
        uint64_t z = state += 0x9e3779b97f4a7c15ULL;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }

    uint64_t state;
};

// The nearest value with the given digits: what reading the printed number gives.
double rounded(double value, double digits) { return std::round(value * digits) / digits; }

double full_circle(double angle)
{
    const double r = std::fmod(angle, 400.0);
    return r < 0.0 ? r + 400.0 : r;
}

// Points of a grid, row by row; the last row may be short.
struct Grid {
    int n, columns;

    explicit Grid(int size) : n(size), columns((int)std::sqrt((double)size)) {}

    int column(int i) const { return i % columns; }
    int row(int i) const { return i / columns; }

    // The point dx columns and dy rows further, or -1.
    int neighbour(int i, int dx, int dy) const
    {
        const int c = column(i) + dx, k = i + dy * columns + dx;
        return c < 0 || c >= columns || k < 0 || k >= n ? -1 : k;
    }
};

// One end of a sight.
struct Mark {
    const char *name;
    Position at;
};

// Adds points and observations to a network.
class Survey {
public:
    Survey(const Recipe &recipe, int dimension, const char *title) : random(recipe.seed), noise(recipe.noise)
    {
        network.dimension = dimension;
        network.title = title;
    }

    void add_station(const Position &truth, double approximation, int code);
    void add_target(const Position &truth, double approximation, int code);
    Mark station(int i) const { return {network.stations[i].name, network.station_truth[i]}; }
    Mark target(int i) const { return {network.targets[i].name, network.target_truth[i]}; }

    void height_difference(const Mark &from, const Mark &to, double sigma);
    void distance(const Mark &from, const Mark &to, double sigma);
    void direction(int istation, const Mark &to, double sigma);
    void zenith_angle(const Mark &from, const Mark &to, double sigma);

    Random random;
    Network network;

private:
    bool in_use(int axis) const { return network.dimension == 1 ? axis == 2 : axis < network.dimension; }
    void coordinates(double x[3], int ix[3], Position *truth, double approximation, int code);
    void observe(std::vector<measure_input> *list, int kind, const char *from, const char *to, double val, double sig);

    double noise;
    std::vector<double> circle_zero; // gon, azimuth of the zero of each station's circle
};

// Sets what one point has: true, approximate, code. What the dimension excludes is absent and 0.
void Survey::coordinates(double x[3], int ix[3], Position *truth, double approximation, int code)
{
    for (int k = 0; k < 3; k++) {
        ix[k] = in_use(k) ? code : CODE_ABSENT;
        (*truth)[k] = in_use(k) ? rounded((*truth)[k], coordinate_digits) : 0.0;
        const double off = code == CODE_FIXED || !in_use(k) ? 0.0 : random.between(-approximation, approximation);
        x[k] = rounded((*truth)[k] + off, coordinate_digits);
    }
}

// Names are held with blanks up to 8 characters.
void set_name(char name[12], char letter, size_t number)
{
    char text[24];
    snprintf(text, sizeof text, "%c%zu", letter, number);
    snprintf(name, 12, "%-8.8s", text);
}

void Survey::add_station(const Position &truth, double approximation, int code)
{
    station_input s = station_input();
    Position position = truth;
    set_name(s.name, 'S', network.stations.size() + 1);
    s.status = STATUS_ON;
    s.ilevel = 1;
    coordinates(s.x, s.ix, &position, approximation, code);
    for (int k = 0; k < 3; k++) s.ir[k] = k == 2 ? CODE_FREE : network.dimension == 3 ? CODE_FIXED : CODE_ABSENT;
    const double zero = random.between(0.0, 400.0);
    s.r[2] = -rounded(zero, 100.0) * gon; // approximate, to the centigon
    circle_zero.push_back(zero);
    network.stations.push_back(s);
    network.station_truth.push_back(position);
}

void Survey::add_target(const Position &truth, double approximation, int code)
{
    target_input t = target_input();
    Position position = truth;
    set_name(t.name, 'P', network.targets.size() + 1);
    t.status = STATUS_ON;
    coordinates(t.x, t.ix, &position, approximation, code);
    network.targets.push_back(t);
    network.target_truth.push_back(position);
}

void Survey::observe(std::vector<measure_input> *list, int kind, const char *from, const char *to, double val,
                     double sig)
{
    measure_input m = measure_input();
    const bool angle = kind == KIND_DIRECTION || kind == KIND_VERTICAL;
    const double digits = angle ? angle_digits : length_digits;
    m.typ = kind;
    memcpy(m.from, from, sizeof m.from);
    memcpy(m.to, to, sizeof m.to);
    m.sig = rounded(sig, digits);
    m.val = rounded(val + noise * m.sig * random.normal(), digits);
    list->push_back(m);
}

void Survey::height_difference(const Mark &from, const Mark &to, double sigma)
{
    observe(&network.heightdiffs, KIND_HEIGHT_DIFFERENCE, from.name, to.name, to.at[2] - from.at[2], sigma);
}

double horizontal(const Mark &from, const Mark &to) { return std::hypot(to.at[0] - from.at[0], to.at[1] - from.at[1]); }

// In the plane all heights are 0.
double spatial(const Mark &from, const Mark &to) { return std::hypot(horizontal(from, to), to.at[2] - from.at[2]); }

void Survey::distance(const Mark &from, const Mark &to, double sigma)
{
    observe(&network.distances, KIND_DISTANCE, from.name, to.name, spatial(from, to), sigma);
}

void Survey::direction(int istation, const Mark &to, double sigma)
{
    const Mark from = station(istation);
    const double azimuth = std::atan2(to.at[1] - from.at[1], to.at[0] - from.at[0]) / gon;
    observe(&network.directions, KIND_DIRECTION, from.name, to.name, full_circle(azimuth - circle_zero[istation]),
            sigma);
}

void Survey::zenith_angle(const Mark &from, const Mark &to, double sigma)
{
    const double zenith = std::atan2(horizontal(from, to), to.at[2] - from.at[2]) / gon;
    observe(&network.verticals, KIND_VERTICAL, from.name, to.name, zenith, sigma);
}

// A line of levelling: 1 mm times the root of its length in kilometres, which is its noise too.
void level(Survey *survey, int from, int to)
{
    const double kilometres = survey->random.between(0.6, 1.6);
    survey->height_difference(survey->target(from), survey->target(to), 0.001 * std::sqrt(kilometres));
}

const double plane_sigma_direction = 0.0005; // gon
const double plane_sigma_distance = 0.003;   // metres

// Directions to the 8 stations around, distances to the 4 near ones.
void observe_stations(Survey *survey, const Grid &grid, int i)
{
    for (int dy = -1; dy <= 1; dy++)
        for (int dx = -1; dx <= 1; dx++) {
            const int k = dx == 0 && dy == 0 ? -1 : grid.neighbour(i, dx, dy);
            if (k < 0) continue;
            survey->direction(i, survey->station(k), plane_sigma_direction);
            if (dx == 0 || dy == 0) survey->distance(survey->station(i), survey->station(k), plane_sigma_distance);
        }
}

// Directions and distances to the targets of the 4 cells around. cells holds the target
// of the cell to the upper right of each station, -1 without one.
void observe_targets(Survey *survey, const Grid &grid, const std::vector<int> &cells, int i)
{
    for (int dy = -1; dy <= 0; dy++)
        for (int dx = -1; dx <= 0; dx++) {
            const int k = grid.neighbour(i, dx, dy);
            if (k < 0 || cells[k] < 0) continue;
            survey->direction(i, survey->target(cells[k]), plane_sigma_direction);
            survey->distance(survey->station(i), survey->target(cells[k]), plane_sigma_distance);
        }
}

const double side = 200.0; // metres, of a cell of the plane network

// A target in each cell that has 4 stations.
std::vector<int> place_plane_targets(Survey *survey, const Grid &grid)
{
    std::vector<int> cells(grid.n, -1);
    for (int i = 0; i < grid.n; i++) {
        if (grid.neighbour(i, 1, 1) < 0) continue;
        cells[i] = (int)survey->network.targets.size();
        const double x = side * (grid.row(i) + survey->random.between(0.3, 0.7));
        const double y = side * (grid.column(i) + survey->random.between(0.3, 0.7));
        survey->add_target({x, y, 0.0}, 0.05, CODE_FREE);
    }
    return cells;
}

const double hall_length = 60.0, hall_width = 30.0, hall_height = 12.0; // metres

// The point of the walls at a way from the origin around the hall.
Position on_wall(double way, double height)
{
    if (way < hall_length) return {way, 0.0, height};
    if (way < hall_length + hall_width) return {hall_length, way - hall_length, height};
    if (way < 2.0 * hall_length + hall_width) return {2.0 * hall_length + hall_width - way, hall_width, height};
    return {0.0, 2.0 * (hall_length + hall_width) - way, height};
}

void place_hall_points(Survey *survey, int ntarget)
{
    const double corners[4] = {0.0, hall_length, hall_length + hall_width, 2.0 * hall_length + hall_width};
    for (int i = 0; i < 4; i++) survey->add_target(on_wall(corners[i], i % 2 == 0 ? 1.0 : 9.0), 0.0, CODE_FIXED);
    for (int i = 4; i < ntarget; i++) {
        const double way = survey->random.between(0.0, 2.0 * (hall_length + hall_width));
        survey->add_target(on_wall(way, survey->random.between(0.5, hall_height)), 0.03, CODE_FREE);
    }
    for (int i = 0; i < 4; i++) {
        const double x = hall_length * (i + 0.5) / 4.0, y = hall_width * (i % 2 == 0 ? 0.35 : 0.65);
        survey->add_station({x, y, survey->random.between(1.5, 1.8)}, 0.03, CODE_FREE);
    }
}

// Fisher and Yates (1938), as by Durstenfeld (1964).
void shuffle_targets(Survey *survey)
{
    Network &network = survey->network;
    for (size_t i = network.targets.size(); i > 1; i--) {
        const size_t k = (size_t)survey->random.between(0.0, (double)i);
        std::swap(network.targets[i - 1], network.targets[k]);
        std::swap(network.target_truth[i - 1], network.target_truth[k]);
    }
}

// Points at random heights, the first and the last of which are bench marks.
void place_heights(Survey *survey, int n)
{
    for (int i = 0; i < n; i++) {
        const int code = i == 0 || i == n - 1 ? CODE_FIXED : CODE_FREE;
        survey->add_target({0.0, 0.0, survey->random.between(400.0, 450.0)}, 0.05, code);
    }
}

template <class Record> void attach(std::vector<Record> &from, Record **array, int *count)
{
    *array = from.empty() ? nullptr : from.data();
    *count = (int)from.size();
}

} // namespace

Network levelling(const Recipe &recipe)
{
    Survey survey(recipe, 1, "Levelling network in a grid");
    const Grid grid(recipe.size);
    place_heights(&survey, grid.n);
    for (int i = 0; i < grid.n; i++) {
        const int right = grid.neighbour(i, 1, 0), up = grid.neighbour(i, 0, 1);
        if (right >= 0) level(&survey, i, right);
        if (up >= 0) level(&survey, i, up);
    }
    level(&survey, grid.n - 1, grid.n - grid.columns); // closes a loop when one point stands alone in the last row
    if (recipe.shuffled) shuffle_targets(&survey);
    return std::move(survey.network);
}

Network chain(const Recipe &recipe)
{
    Survey survey(recipe, 1, "Line of levelling");
    place_heights(&survey, recipe.size);
    for (int i = 0; i + 1 < recipe.size; i++) level(&survey, i, i + 1);
    for (int i = 0; i + 11 < recipe.size; i += 10) level(&survey, i, i + 11);
    if (recipe.shuffled) shuffle_targets(&survey);
    return std::move(survey.network);
}

Network plane(const Recipe &recipe)
{
    Survey survey(recipe, 2, "Plane network in a grid");
    const Grid grid(recipe.size);
    for (int i = 0; i < grid.n; i++) {
        const int code = i == 0 || i == grid.n - 1 ? CODE_FIXED : CODE_FREE;
        const double x = side * (grid.row(i) + survey.random.between(-0.1, 0.1));
        const double y = side * (grid.column(i) + survey.random.between(-0.1, 0.1));
        survey.add_station({x, y, 0.0}, 0.05, code);
    }
    const std::vector<int> cells = place_plane_targets(&survey, grid);
    for (int i = 0; i < grid.n; i++) {
        observe_stations(&survey, grid, i);
        observe_targets(&survey, grid, cells, i);
    }
    return std::move(survey.network);
}

Network hall(const Recipe &recipe)
{
    Survey survey(recipe, 3, "Targets on the walls of a hall");
    place_hall_points(&survey, recipe.size);
    for (int i = 0; i < (int)survey.network.stations.size(); i++)
        for (int k = 0; k < recipe.size; k++) {
            survey.direction(i, survey.target(k), 0.0003);
            survey.zenith_angle(survey.station(i), survey.target(k), 0.0005);
            survey.distance(survey.station(i), survey.target(k), 0.0005);
        }
    return std::move(survey.network);
}

// In space verticals are parallel: a sphere so large that its curvature does not count.
project Network::run(FILE *report, Feedback *feedback)
{
    project p = project();
    p.pfeedback = feedback;
    p.out = report;
    strcpy(p.filename, "bench.inp");
    p.dim = dimension;
    p.iearth = dimension == 3 ? 1 : 0;
    p.radius = dimension == 3 ? 1.0e12 : 6371000.0;
    p.itmax = 20;
    p.convergence = 1.0e-6;
    p.suv = p.sdist = p.sdifh = p.sdir1 = p.sdir2 = p.saz = p.sgps = 1.0;
    p.imixed = -1;
    p.iangle = ANGLE_GON;
    p.izenith = 1;
    attach(stations, &p.stations, &p.nstations);
    attach(targets, &p.targets, &p.ntargets);
    attach(distances, &p.distances, &p.ndistances);
    attach(heightdiffs, &p.heightdiffs, &p.nheightdiffs);
    attach(directions, &p.directions, &p.ndirections);
    attach(verticals, &p.verticals, &p.nverticals);
    return p;
}

} // namespace networks
