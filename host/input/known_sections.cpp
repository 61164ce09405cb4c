// The sections of a network file and the keys of each.

#include <algorithm>
#include <string>
#include <vector>

#include "host/input/table.h"
#include "host/input/section.h"
#include "host/input/settings.h"

namespace vornhost {

namespace {

const std::vector<SectionKeys> &all_sections()
{
    static const std::vector<SectionKeys> sections = {
        {"run", {"title", "date", "dimension", "solver", "mode", "iterations", "convergence", "trace"}},
        {"units", {"length", "angle", "vertical", "sigma_length", "sigma_angle"}},
        {"earth", {"model", "radius", "origin", "height", "latitude", "azimuth_rotation"}},
        {"crs", {"network", "stations", "targets", "coordinates", "heights", "geoid", "height", "scale", "epoch"}},
        {"reductions", {"distances", "atmosphere", "prism"}},
        {"apriori",
         {"distances", "height_differences", "directions", "vertical_angles", "azimuths", "baselines", "images",
          "horizontal_distances", "bearings", "angles", "coordinates", "coordinate_differences", "scale_bars"}},
        {"sigma",
         {"distances", "height_differences", "directions", "vertical_angles", "azimuths", "horizontal_distances",
          "bearings", "angles", "scale_bars", "distances_ppm", "height_difference_km", "height_difference_setup",
          "centring_instrument", "centring_target", "height_instrument", "height_target", "centring"}},
        {"baselines", {"datum_rule", "sigma_factor"}},
        {"lumps", {"method"}},
        {"connected_net", {"file"}},
        {"csv", {"separator", "decimal"}},
        {"tests",
         {"test", "level", "power", "correction", "global_level", "least_redundancy", "confidence", "precision",
          "suspects"}},
        {"covariances", {}}, // keys are names
        {"tables", std::vector<std::string>(table_names, table_names + TABLE_COUNT)},
    };
    return sections;
}

// A key of the file itself that is no section.
void stray_key(const toml::key &key, const toml::node &node, Faults &faults)
{
    const Source at = place_of(key.source());
    const std::string name(key.str());
    if (!node.is_table()) {
        for (const SectionKeys &section : all_sections())
            if (std::find(section.keys.begin(), section.keys.end(), name) != section.keys.end()) {
                faults.add(at, "key " + quote(name) + " stands outside a section",
                           "write it below [" + section.name + "]");
                return;
            }
    }
    std::vector<std::string> known;
    for (const SectionKeys &section : all_sections()) known.push_back("[" + section.name + "]");
    std::string remedy = faults.wants(at) ? suggestion("[" + name + "]", known, "known sections") : std::string();
    faults.add(at, std::string("unknown ") + (node.is_table() ? "section " : "key ") + quote(name), std::move(remedy));
}

} // namespace

void check_sections(const toml::table &root, Faults &faults)
{
    for (const auto &[key, node] : root) {
        const auto &sections = all_sections();
        const auto known = std::find_if(sections.begin(), sections.end(),
                                        [&name = key](const SectionKeys &section) { return name == section.name; });
        if (known == sections.end())
            stray_key(key, node, faults);
        else
            check_section(*known, node, faults);
    }
}

} // namespace vornhost
