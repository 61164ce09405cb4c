// Standard deviations and factors of whole tables, centring.

#include <utility>

#include "host/input/angle.h"
#include "host/input/section.h"
#include "host/input/settings.h"

namespace vornhost {

namespace {

// Tables with a standard deviation for all rows, and whether it is an angle.
const std::pair<TableId, bool> sigma_tables[] = {{TABLE_DISTANCES, false}, {TABLE_HEIGHT_DIFFERENCES, false},
                                                 {TABLE_DIRECTIONS, true}, {TABLE_VERTICAL_ANGLES, true},
                                                 {TABLE_AZIMUTHS, true},   {TABLE_HORIZONTAL_DISTANCES, false},
                                                 {TABLE_BEARINGS, true},   {TABLE_ANGLES, true},
                                                 {TABLE_SCALE_BARS, false}};

} // namespace

void read_weights(const toml::table &root, Network &net)
{
    project &p = net.model.p;
    Section apriori(root, "apriori", net.faults), sigma(root, "sigma", net.faults);
    Model::Apriori &own = net.model.apriori;
    const std::pair<const char *, double *> lists[] = {{"distances", &p.sdist},
                                                       {"height_differences", &p.sdifh},
                                                       {"directions", &p.sdir1},
                                                       {"vertical_angles", &p.sdir2},
                                                       {"azimuths", &p.saz},
                                                       {"baselines", &p.sgps},
                                                       {"images", &p.suv},
                                                       {"horizontal_distances", &own.horizontal_distance},
                                                       {"bearings", &own.bearing},
                                                       {"angles", &own.angle},
                                                       {"coordinates", &own.coordinate},
                                                       {"coordinate_differences", &own.coordinate_difference},
                                                       {"scale_bars", &own.scale_bar}};
    for (const auto &[key, value] : lists) *value = apriori.number(key, 1.0, above_zero, "above 0");
    for (const auto &[id, angle] : sigma_tables) {
        const char *const key = table_names[id];
        const double value = sigma.number(key, 0.0, above_zero, "above 0");
        if (angle && !readable_angle(net.sigma_angle, value))
            sigma.fault(*sigma.find(key), sigma.name(key) + " has minutes or seconds of 60 or more",
                        "write degrees as ddd.mmss");
        net.sigma[(size_t)id] = value;
    }
    net.stated.ppm = sigma.number("distances_ppm", 0.0, above_zero, "above 0");
    net.stated.per_km = sigma.number("height_difference_km", 0.0, above_zero, "above 0");
    net.stated.per_setup = sigma.number("height_difference_setup", 0.0, above_zero, "above 0");
    Model::Centring &c = net.model.centring;
    const std::pair<const char *, double *> centring[] = {{"centring_instrument", &c.instrument},
                                                          {"centring_target", &c.target},
                                                          {"height_instrument", &c.instrument_height},
                                                          {"height_target", &c.target_height}};
    for (const auto &[key, value] : centring) *value = sigma.number(key, 0.0, above_zero, "above 0") * net.sigma_metres;
    c.shared = sigma.word("centring", 0, {{"each_sight", 0}, {"each_stand", 1}}) == 1;
    if (c.shared && !c.any())
        sigma.fault(*sigma.find("centring"), "[sigma] centring shares out standard deviations that are not there",
                    "write centring_instrument or centring_target");
}

} // namespace vornhost
