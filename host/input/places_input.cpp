#include "host/input/places_input.h"

namespace vornhost {

void PlacesInput::set_table(bool station, const std::string &system, std::string *fault)
{
    other[station] = !system.empty();
    (station ? stations : targets) = Conversion::open(network, system, fault);
}

bool PlacesInput::converts(bool station, bool geographic) const
{
    return of(station).has_value() && (other[station] || geographic);
}

bool PlacesInput::geographic(bool station) const { return of(station)->geographic(); }

std::string PlacesInput::no_geocentric(const std::string &system) const
{
    std::string fault;
    const std::optional<Conversion> way = Conversion::open(network, system, &fault);
    if (way && !way->geocentric()) fault = system + " is no geocentric reference system";
    return fault;
}

// Of a physical height the place counts, and the height stays. Heights above the ellipsoid of another datum change.
std::string PlacesInput::into_network(bool station, PointPlan &point) const
{
    const Conversion &convert = *of(station);
    if (convert.geocentric() && !point.has_third) return "geocentric coordinates need z";
    const double first = convert.geocentric() ? point.first : point.second;
    const double second = convert.geocentric() ? point.second : point.first;
    double third = point.has_third ? point.third : 0.0;
    if (!convert.geocentric() && point.has_third && !crs.ellipsoidal) {
        const auto near = convert(first, second, third);
        third += near ? network.undulation(near->at).value_or(0.0) : 0.0;
    }
    const std::optional<Place3> place = convert(first, second, third);
    const std::optional<GridPlace> grid = place ? network.grid(place->at) : std::nullopt;
    if (!grid) return "the point lies where the reference system of the network does not reach";
    const std::optional<double> undulation = network.undulation(place->at);
    if (!undulation) return "the point lies outside the geoid";
    point.x[0] = grid->north;
    point.x[1] = grid->east;
    point.x[2] = convert.geocentric() || crs.ellipsoidal ? place->height - *undulation : point.third;
    return {};
}

} // namespace vornhost
