// The reference system of a network and of its tables, and what does not go together with it.

#include <optional>
#include <utility>

#include "host/earth/reference.h"
#include "host/input/angle.h"
#include "host/input/section.h"
#include "host/input/settings.h"

namespace vornhost {

namespace {

// A number, a file, or a plane through a place.
void read_geoid(Section &crs, Network &net)
{
    const toml::node *node = crs.find("geoid");
    Geoid &geoid = net.model.crs.geoid;
    if (!node) return;
    if (node->is_number()) {
        geoid.form = Geoid::Form::constant;
        geoid.undulation = crs.number("geoid", 0.0, sensible_length, "of metres");
        return;
    }
    if (const toml::value<std::string> *file = node->as_string()) {
        constexpr size_t longest_path = 4096;
        geoid.form = Geoid::Form::grid;
        geoid.file = data_file(net.faults, net.model.path, file->get(), place_of(node->source()), longest_path);
        return;
    }
    const toml::table *plane = node->as_table();
    if (!plane)
        return crs.fault(*node, crs.name("geoid") + " is no height, file or plane",
                         "write geoid = 47.2, geoid = \"NAME.gtx\" or geoid = { undulation = 47.2, latitude = 50, "
                         "longitude = 9, north = -0.012, east = 0.004 }");
    check_section({"crs.geoid", {"undulation", "latitude", "longitude", "north", "east"}}, *plane, net.faults);
    Section keys = crs.inner("geoid");
    constexpr double per_kilometre = 1e-3;
    geoid.form = Geoid::Form::plane;
    geoid.undulation = keys.number("undulation", 0.0, sensible_length, "of metres");
    geoid.latitude = to_radians(ANGLE_DEGREE, keys.number("latitude", 0.0, within_quarter, "between -90 and 90"));
    geoid.longitude = to_radians(ANGLE_DEGREE, keys.number("longitude", 0.0, within_turn, "from -360 to 360"));
    geoid.north = per_kilometre * keys.number("north", 0.0, sensible_slope, "of metres in a kilometre");
    geoid.east = per_kilometre * keys.number("east", 0.0, sensible_slope, "of metres in a kilometre");
}

// What does not go together.
void check_crs(const toml::table &root, Section &crs, Network &net)
{
    project &p = net.model.p;
    const Crs &c = net.model.crs;
    const auto at = [&](const char *key) { return crs.find(key) ? place_of(crs.find(key)->source()) : crs.place(); };
    if (c.network.empty())
        net.faults.add(at("network"), "network is missing in [crs]", "write network = \"EPSG:25832\" or \"local\"");
    if (p.dim == 1) net.faults.add(crs.place(), "heights alone have no reference system", "leave [crs] out");
    if (root["earth"].as_table())
        net.faults.add(Section(root, "earth", net.faults).place(), "[earth] and [crs] are both given",
                       "leave [earth] out");
    if (!c.local() && crs.find("scale"))
        net.faults.add(at("scale"), "scale in [crs] is for a local system", "leave it out: a projection has its own");
    if (!c.local() && !crs.find("heights"))
        net.faults.add(crs.place(), "heights is missing in [crs]",
                       "write heights = \"ellipsoidal\", or \"orthometric\" with a geoid");
    if (!c.local() && crs.find("heights") && c.ellipsoidal == (crs.find("geoid") != nullptr))
        net.faults.add(at(c.ellipsoidal ? "geoid" : "heights"),
                       c.ellipsoidal ? "ellipsoidal heights need no geoid" : "orthometric heights need a geoid",
                       c.ellipsoidal ? "leave it out" : "write geoid = 47.2 or a file; 0 neglects it");
    if (p.dim == 3 && crs.find("height"))
        net.faults.add(at("height"), "height in [crs] is for points of the plane", "write z for each point");
    if (p.dim == 2 && crs.find("coordinates"))
        net.faults.add(at("coordinates"), "geocentric coordinates are observed in space",
                       "write dimension = 3 in [run]");
    if (!c.local()) return;
    for (const char *key : {"stations", "targets", "coordinates", "heights", "geoid", "epoch"})
        if (crs.find(key))
            net.faults.add(at(key), std::string(key) + " in [crs] has no meaning for a local system", "leave it out");
    if (p.dim == 3) net.faults.add(at("network"), "a local system is for the plane", "leave [crs] out, or see [earth]");
    if (!c.height) net.faults.add(at("network"), "a local system needs the height of its level", "write height = 450");
}

// The systems of the network and of its tables.
void open_crs(Section &crs, Network &net)
{
    const Crs &c = net.model.crs;
    std::string fault;
    std::optional<Reference> reference = Reference::open(c, &fault);
    const auto fails = [&](const char *key) {
        const toml::node *node = crs.find(key);
        const char *const remedy = std::string(key) == "geoid" ? "name a grid that PROJ reads, GTX or GeoTIFF"
                                   : has_proj()                ? "write another one, such as EPSG:25832"
                                                : "take a program that was built with it, or leave [crs] out";
        net.faults.add(node ? place_of(node->source()) : crs.place(), fault, remedy);
    };
    if (!reference) return fails(fault.find("the geoid") != std::string::npos ? "geoid" : "network");
    net.places = std::make_unique<PlacesInput>(std::move(*reference), c);
    const std::pair<const char *, const std::string &> tables[] = {{"stations", c.stations}, {"targets", c.targets}};
    for (int k = 0; k < 2; k++) {
        fault.clear();
        net.places->set_table(k == 0, tables[k].second, &fault);
        if (!fault.empty()) fails(tables[k].first);
    }
    if (c.coordinates.empty()) return;
    fault.clear();
    if (const std::string word = net.places->no_geocentric(c.coordinates); !word.empty()) {
        fault = word;
        fails("coordinates");
    }
}

} // namespace

void read_crs(const toml::table &root, Network &net)
{
    static const Words heights = {{"orthometric", 0}, {"ellipsoidal", 1}};
    Section crs(root, "crs", net.faults);
    Crs &c = net.model.crs;
    if (!root["crs"].as_table()) return;
    const size_t before = net.faults.count();
    c.network = crs.text("network");
    c.stations = crs.text("stations");
    c.targets = crs.text("targets");
    c.coordinates = crs.text("coordinates");
    c.ellipsoidal = crs.word("heights", 0, heights) == 1;
    if (crs.find("height")) c.height = crs.number("height", 0.0, sensible_length, "of metres");
    if (crs.find("epoch")) c.epoch = crs.number("epoch", 0.0, sensible_year, "of a year");
    c.scale = crs.number("scale", 1.0, sensible_scale, "from 0.5 to 2");
    read_geoid(crs, net);
    check_crs(root, crs, net);
    if (net.faults.count() == before && !c.local()) open_crs(crs, net);
}

} // namespace vornhost
