#include "host/input/covariances.h"

#include <algorithm>
#include <cmath>

#include "host/input/angle.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

const double pi = 4.0 * std::atan(1.0);

// Radians in a unit of standard deviations of angles: seconds of arc stand in the fourth decimal of packed degrees.
double radians_per_unit(int unit) { return unit == ANGLE_PACKED ? pi / 648000.0 * 1e4 : to_radians(unit, 1.0); }

int components(const measure_input &) { return 1; }
int components(const gps_input &) { return 3; }
int components(const SightRow &) { return 1; }
int components(const VectorRow &row) { return row.components(); }

// ---- which rows belong to a covariance ----

// The unit of each component of each covariance, in metres or radians; negative for zenith angles, which are observed
// as elevations.
class Places {
public:
    explicit Places(Network &network) : units(network.model.covariances.size()) {}

    template <class Record> void number(List<Record> &list, double unit)
    {
        for (size_t i = 0; i < list.notes.covariance.size(); i++) {
            const int c = list.notes.covariance[i];
            if (c < 0) continue;
            set_note(list.notes.place, i, (int)units[(size_t)c].size(), -1);
            units[(size_t)c].insert(units[(size_t)c].end(), (size_t)components(list.records[i]), unit);
        }
    }

    std::vector<std::vector<double>> units;
};

Places number_rows(Network &net)
{
    Places places(net);
    Model &m = net.model;
    const double length = net.sigma_metres, angle = radians_per_unit(net.sigma_angle);
    places.number(m.distances, length);
    places.number(m.horizontal_distances, length);
    places.number(m.heightdiffs, length);
    places.number(m.directions, angle);
    places.number(m.verticals, m.p.izenith == 1 ? -angle : angle);
    places.number(m.azimuths, angle);
    places.number(m.bearings, angle);
    places.number(m.angles, angle);
    places.number(m.baselines, length);
    places.number(m.coordinates, length);
    places.number(m.coordinate_differences, length);
    places.number(m.scale_bars, length);
    return places;
}

// ---- the numbers of a section ----

// Elements of a form with n components.
size_t count_of(MatrixForm form, size_t n, size_t width)
{
    if (form == MatrixForm::full) return n * n;
    if (form == MatrixForm::band && width < n) return n * (width + 1) - width * (width + 1) / 2;
    return n * (n + 1) / 2;
}

bool read_numbers(const Passage &passage, std::vector<double> &numbers, Faults &faults)
{
    static constexpr const char *blanks = " \t\r\n,;";
    const std::string_view text = passage.text();
    for (size_t at = text.find_first_not_of(blanks); at < text.size();) {
        const size_t end = std::min(text.find_first_of(blanks, at), text.size());
        double value = 0;
        if (read_number(text.substr(at, end - at), value) != Reading::Number) {
            faults.add(passage.place(at), quote(text.substr(at, end - at)) + " is not a number in the matrix",
                       number_remedy(text.substr(at, end - at)));
            return false;
        }
        numbers.push_back(value);
        at = text.find_first_not_of(blanks, end);
    }
    return true;
}

// Place of element (i, j), i <= j, among the numbers.
size_t place_of(const MatrixText &text, size_t n, size_t i, size_t j)
{
    switch (text.form) {
    case MatrixForm::full: return i * n + j;
    case MatrixForm::lower: return j * (j + 1) / 2 + i;
    case MatrixForm::upper: return i * n - i * (i + 1) / 2 + j;
    default: break;
    }
    const size_t width = std::min((size_t)text.width, n - 1), whole = n - width; // rows of full width
    const size_t cut = i > whole ? (i - whole) * (i - whole + 1) / 2 : 0;
    return i * (width + 1) - cut + (j - i);
}

bool symmetric(const std::vector<double> &numbers, size_t n)
{
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < i; j++) {
            const double size = std::sqrt(std::fabs(numbers[i * n + i] * numbers[j * n + j]));
            if (std::fabs(numbers[i * n + j] - numbers[j * n + i]) > 1e-6 * size) return false;
        }
    return true;
}

std::string counted(size_t n, const char *what) { return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s"); }

// Elements in the file's units, times the square of the factor; false with a fault.
bool fill(const MatrixText &text, size_t n, CovarianceRecord &c, Faults &faults)
{
    std::vector<double> numbers;
    if (!text.numbers || !read_numbers(*text.numbers, numbers, faults)) return false;
    const size_t needed = count_of(text.form, n, (size_t)text.width);
    const std::string name = "covariance " + c.name;
    if (n == 0)
        faults.add(text.at, name + " belongs to no observation", "name it in their column covariance, or remove it");
    else if (numbers.size() != needed)
        faults.add(text.at,
                   name + " holds " + counted(numbers.size(), "number") + ", its " + counted(n, "component") +
                       (n == 1 ? " needs " : " need ") + std::to_string(needed),
                   "check its form, and which rows name it");
    else if (text.form == MatrixForm::full && !symmetric(numbers, n))
        faults.add(text.at, name + " is not symmetric", "check its rows, or write form = \"lower\"");
    else {
        c.size = (int)n;
        c.width = text.form == MatrixForm::band ? std::min(text.width, c.size - 1) : c.size - 1;
        c.elements.assign(n * ((size_t)c.width + 1), 0.0);
        for (size_t i = 0; i < n; i++)
            for (size_t j = i; j < n && j <= i + (size_t)c.width; j++)
                c.elements[i * ((size_t)c.width + 1) + (j - i)] =
                    text.sigma_factor * text.sigma_factor * numbers[place_of(text, n, i, j)];
        return true;
    }
    return false;
}

void to_metres_and_radians(const std::vector<double> &units, CovarianceRecord &c)
{
    for (int i = 0; i < c.size; i++)
        for (int j = i; j <= i + c.width && j < c.size; j++)
            c.elements[(size_t)i * ((size_t)c.width + 1) + (size_t)(j - i)] *= units[(size_t)i] * units[(size_t)j];
}

// ---- standard deviations of rows that give none ----

double deviation(const CovarianceRecord &c, int place) { return std::sqrt(std::fmax(0.0, c(place, place))); }

// In the units of the records.
void take(const CovarianceRecord &c, int place, double unit, measure_input &m) { m.sig = deviation(c, place) / unit; }

void take(const CovarianceRecord &c, int place, double, SightRow &row) { row.sigma = deviation(c, place); }

void take(const CovarianceRecord &c, int place, double, VectorRow &row)
{
    for (int k = 0; k < 3; k++)
        if (row.given[k]) row.sigma[k] = deviation(c, place++);
}

void take(const CovarianceRecord &c, int place, double, gps_input &g)
{
    for (int i = 0, at = 0; i < 3; i++)
        for (int j = i; j < 3; j++) g.cov[at++] = c(place + i, place + j);
}

template <class Record> void take_deviations(const Network &net, List<Record> &list, double unit = 1.0)
{
    for (size_t i = 0; i < list.notes.place.size(); i++) {
        const int c = list.notes.covariance[i], place = list.notes.place[i];
        if (place < 0) continue;
        const CovarianceRecord &covariance = net.model.covariances.records[(size_t)c];
        if (place + components(list.records[i]) <= covariance.size) take(covariance, place, unit, list.records[i]);
    }
}

} // namespace

void complete_covariances(Network &net, const std::vector<MatrixText> &texts)
{
    const Places places = number_rows(net);
    Model &m = net.model;
    for (size_t c = 0; c < texts.size(); c++)
        if (fill(texts[c], places.units[c].size(), m.covariances.records[c], net.faults))
            to_metres_and_radians(places.units[c], m.covariances.records[c]);
    for (List<measure_input> *list : {&m.distances, &m.heightdiffs}) take_deviations(net, *list, metres_per_unit(m.p));
    for (List<measure_input> *list : {&m.directions, &m.verticals, &m.azimuths})
        take_deviations(net, *list, radians_per_unit(m.p.iangle));
    for (List<SightRow> *list : {&m.horizontal_distances, &m.bearings, &m.angles, &m.scale_bars})
        take_deviations(net, *list);
    take_deviations(net, m.baselines);
    take_deviations(net, m.coordinates);
    take_deviations(net, m.coordinate_differences);
}

} // namespace vornhost
