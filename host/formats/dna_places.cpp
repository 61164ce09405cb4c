#include "host/formats/dna_places.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/formats/geocentric.h"
#include "host/formats/plate_motion.h"
#include "host/formats/number_text.h"
#include "host/formats/writer_table.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr double radian = 3.14159265358979323846 / 180.0;
constexpr double widest_zone = 30.0; // degrees of longitude to either side, where a transverse Mercator is exact

// UTM zone of a station that is written in it: "S55", "55S", "55".
std::string utm_system(const DnaStation &station)
{
    std::string digits;
    bool south = station.zone.empty() || station.zone.find_first_of("Ss") != std::string::npos;
    for (const char c : station.zone)
        if (c >= '0' && c <= '9') digits += c;
    if (station.zone.find_first_of("Nn") != std::string::npos) south = false;
    return "+proj=utm +zone=" + digits + (south ? " +south" : "") + " +ellps=GRS80 +units=m +no_defs";
}

// Latitudes and longitudes in degrees of those stations that have them without a projection.
struct Extent {
    double south = 90, north = -90, west = 360, east = -360;
    std::vector<std::string> zones; // of stations in UTM

    void take(double latitude, double longitude)
    {
        south = std::min(south, latitude);
        north = std::max(north, latitude);
        west = std::min(west, longitude);
        east = std::max(east, longitude);
    }
    bool any() const { return south <= north; }
};

Extent extent_of(const DnaNetwork &network)
{
    Extent e;
    for (const DnaStation &s : network.stations) {
        if (s.type == "LLH" || s.type == "LLh") e.take(s.value[0], s.value[1]);
        if (s.type == "XYZ") {
            const Geodetic g = geodetic(s.value);
            e.take(g.latitude / radian, g.longitude / radian);
        }
        if (s.type == "UTM") e.zones.push_back(utm_system(s));
    }
    return e;
}

// The grid of the frame in the zone of the network's middle; an oblique one for a network as wide as a continent.
std::string projection_of(const DnaNetwork &network, const Extent &e)
{
    if (!e.any() && !e.zones.empty()) return e.zones[0];
    const double longitude = e.any() ? 0.5 * (e.west + e.east) : 0.0,
                 latitude = e.any() ? 0.5 * (e.south + e.north) : 0.0;
    const int zone = std::clamp((int)std::floor((longitude + 180.0) / 6.0) + 1, 1, 60);
    const double meridian = 6.0 * zone - 183.0;
    const bool narrow = e.east - meridian < widest_zone && meridian - e.west < widest_zone;
    if (!narrow && e.any())
        return "+proj=stere +lat_0=" + std::to_string((int)std::lround(latitude)) +
               " +lon_0=" + std::to_string((int)std::lround(longitude)) + " +ellps=GRS80 +units=m +no_defs";
    if (network.frame == "GDA2020" && zone >= 46 && zone <= 59) return "EPSG:" + std::to_string(7800 + zone);
    if (network.frame == "GDA94" && zone >= 46 && zone <= 59) return "EPSG:" + std::to_string(28300 + zone);
    return "+proj=utm +zone=" + std::to_string(zone) + (latitude < 0.0 ? " +south" : "") +
           " +ellps=GRS80 +units=m +no_defs";
}

// Whether anything counts heights from the geoid.
bool has_geoid_heights(const DnaNetwork &network)
{
    const bool held = std::any_of(network.stations.begin(), network.stations.end(), [](const DnaStation &s) {
        return (s.type == "LLH" || s.type == "UTM") && s.constraints.find_first_of("Cc") != std::string::npos;
    });
    return held || std::any_of(network.measures.begin(), network.measures.end(), [](const DnaMeasure &m) {
               return !m.ignored && (m.type == 'H' || m.type == 'L' || m.type == 'M' ||
                                     (m.type == 'Y' && m.coordinates != "XYZ" && m.coordinates != "LLh"));
           });
}

} // namespace

std::string geocentric_system(const std::string &frame)
{
    static const std::pair<const char *, int> systems[] = {
        {"GDA2020", 7842},  {"GDA94", 4938},    {"ITRF2020", 9988}, {"ITRF2014", 7789}, {"ITRF2008", 5332},
        {"ITRF2005", 4896}, {"ITRF2000", 4919}, {"ITRF1997", 4918}, {"ITRF97", 4918},   {"ITRF1996", 4917},
        {"ITRF96", 4917},   {"ITRF1994", 4916}, {"ITRF94", 4916},   {"ITRF1993", 4915}, {"ITRF1992", 4914},
        {"ITRF1991", 4913}, {"ITRF1990", 4912}, {"ITRF1989", 4911}, {"ITRF1988", 4910}};
    for (const auto &[name, code] : systems)
        if (frame == name) return "EPSG:" + std::to_string(code);
    return {};
}

std::optional<DnaPlaces> DnaPlaces::open(const DnaNetwork &network, const std::string &geoid, std::string *fault)
{
    Crs crs;
    crs.network = projection_of(network, extent_of(network));
    crs.ellipsoidal = geoid.empty() && !has_geoid_heights(network);
    std::vector<std::pair<std::string, std::string>> keys = {
        {"network", toml_text(crs.network)}, {"heights", crs.ellipsoidal ? "\"ellipsoidal\"" : "\"orthometric\""}};
    if (!crs.ellipsoidal) {
        const bool number = !geoid.empty() && read_number(geoid, crs.geoid.undulation) == Reading::Number;
        crs.geoid.form = geoid.empty() || number ? Geoid::Form::constant : Geoid::Form::grid;
        if (crs.geoid.form == Geoid::Form::grid) crs.geoid.file = std::filesystem::absolute(geoid).string();
        keys.emplace_back("geoid", crs.geoid.form == Geoid::Form::grid ? toml_text(crs.geoid.file)
                                                                       : number_text(crs.geoid.undulation));
    }
    crs.epoch = year_of(network.epoch);
    if (crs.epoch) keys.emplace_back("epoch", number_text(std::round(*crs.epoch * 1e4) / 1e4));
    std::optional<Reference> reference = Reference::open(crs, fault);
    if (!reference) return std::nullopt;
    DnaPlaces places(std::move(crs), std::move(*reference));
    places.crs_keys = std::move(keys);
    return places;
}

std::optional<double> DnaPlaces::undulation(double latitude, double longitude) const
{
    return reference.undulation({latitude * radian, longitude * radian});
}

std::optional<double> DnaPlaces::from_ellipsoid(double latitude, double longitude, double height) const
{
    const std::optional<double> n = undulation(latitude, longitude);
    return n ? std::optional<double>(height - *n) : std::nullopt;
}

std::optional<std::array<double, 3>> DnaPlaces::place(const DnaStation &s) const
{
    if (s.type == "LLH") return s.value;
    std::array<double, 3> at = s.value;
    if (s.type == "UTM") {
        std::string fault;
        const auto way = Conversion::open(reference, utm_system(s), &fault);
        const std::optional<Place3> p = way ? (*way)(s.value[0], s.value[1], 0.0) : std::nullopt;
        if (!p) return std::nullopt;
        return std::array<double, 3>{p->at.latitude / radian, p->at.longitude / radian, s.value[2]};
    }
    if (s.type == "XYZ") {
        const Geodetic g = geodetic(s.value);
        at = {g.latitude / radian, g.longitude / radian, g.height};
    } else if (s.type != "LLh") {
        return std::nullopt;
    }
    const std::optional<double> height = from_ellipsoid(at[0], at[1], at[2]);
    if (!height) return std::nullopt;
    at[2] = *height;
    return at;
}

std::optional<DnaPlaces::InGrid> DnaPlaces::in_grid(double latitude, double longitude) const
{
    const LatLon at{latitude * radian, longitude * radian};
    const std::optional<GridPlace> grid = reference.grid(at);
    const std::optional<GridAxes> axes = grid ? reference.axes(at) : std::nullopt;
    if (!axes) return std::nullopt;
    return InGrid{grid->north, grid->east, axes->convergence};
}

} // namespace vornhost
