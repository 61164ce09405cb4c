#include "host/formats/usual_sigmas.h"

#include <cmath>

#include "host/formats/number_text.h"

namespace vornhost {

namespace {

struct Key {
    DraftKind kind;
    const char *word, *observation;
    bool angle;
};

const Key keys[] = {{DraftKind::distance, "distances", "distance", false},
                    {DraftKind::horizontal_distance, "horizontal_distances", "horizontal distance", false},
                    {DraftKind::height_difference, "height_differences", "height difference", false},
                    {DraftKind::direction, "directions", "direction", true},
                    {DraftKind::vertical_angle, "vertical_angles", "vertical angle", true},
                    {DraftKind::azimuth, "azimuths", "azimuth", true},
                    {DraftKind::angle, "angles", "angle", true}};

double metres_of(const std::string &unit)
{
    if (unit == "mm") return 0.001;
    if (unit == "ft") return 0.3048;
    return unit == "us_ft" ? 1200.0 / 3937.0 : 1.0;
}

double value_of(const std::map<std::string, double> &sigmas, const std::string &key)
{
    const auto found = sigmas.find(key);
    return found == sigmas.end() ? 0.0 : found->second;
}

// Gives the rows of one draft their standard deviations.
class Filler {
public:
    Filler(const std::map<std::string, double> &its_sigmas, Draft &its_draft) : sigmas(its_sigmas), draft(its_draft)
    {
        const DraftUnits &u = draft.units;
        metres = metres_of(u.length);
        sigma_metres = metres_of(u.sigma_length.empty() ? u.length : u.sigma_length);
        angle_unit = u.sigma_angle == "cc" ? 10.0 : u.sigma_angle == "gon" ? 0.001 : 1.0;
    }

    // In the units of the draft; 0 where nothing is said.
    double sigma(const Key &key, const DraftRow &row) const
    {
        double value = value_of(sigmas, key.word);
        if (key.angle) return value * angle_unit;
        const bool flat = key.kind == DraftKind::horizontal_distance;
        if (flat && value == 0.0) value = value_of(sigmas, "distances");
        if (flat || key.kind == DraftKind::distance)
            value += value_of(sigmas, "distances_ppm") * 1e-3 * row.value[0].value_or(0.0) * metres;
        else if (row.length)
            value =
                std::hypot(value, value_of(sigmas, "height_difference_km") * std::sqrt(*row.length * metres / 1000.0));
        return length(value);
    }

    // Of millimetres.
    double length(double value) const { return tidy(value * 0.001 / sigma_metres, value); }

private:
    const std::map<std::string, double> &sigmas;
    const Draft &draft;
    double metres = 1.0, sigma_metres = 1.0;
    double angle_unit = 1.0; // of the draft in one mgon, or one arc second
};

} // namespace

void apply_usual_sigmas(const std::map<std::string, double> &sigmas, Draft &draft, Faults &faults)
{
    const Filler filler(sigmas, draft);
    for (const Key &key : keys) {
        size_t missing = 0;
        Source first;
        for (DraftRow &row : draft.of(key.kind)) {
            const bool by_length = key.kind == DraftKind::height_difference && draft.sigma_per_root_km && row.length;
            if (row.sigma[0] || !row.covariance.empty() || by_length) continue;
            const double sigma = filler.sigma(key, row);
            if (sigma > 0.0 || !row.use)
                row.sigma[0] = sigma > 0.0 ? sigma : 1.0; // of what takes no part any will do
            else if (missing++ == 0)
                first = row.where;
        }
        if (missing == 0) continue;
        faults.add(first,
                   std::string(key.observation) + " without a standard deviation" +
                       (missing > 1 ? ", and " + std::to_string(missing - 1) + " more behind it" : std::string()),
                   std::string("write it in the file, or state it with --sigma ") + key.word + "=VALUE");
    }
    for (const char *key : {"height_instrument", "height_target", "centring_instrument", "centring_target"})
        if (const double length = filler.length(value_of(sigmas, key)); length > 0.0)
            draft.sigma.emplace_back(key, length);
}

} // namespace vornhost
