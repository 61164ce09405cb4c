// Results as GeoJSON (RFC 7946) for maps: points, lines between them, ellipses.
//
// A network knows no reference system, so positions are its own plane coordinates in metres, [right, up] or [right, up,
// height]; the member "crs", null, and "coordinates" say so. Points without a position have the geometry null.

#ifndef VORNHOST_GEOJSON_WRITER_H
#define VORNHOST_GEOJSON_WRITER_H

#include <string>

#include "host/results/plan.h"

namespace vornhost {

std::string to_geojson(const Results &results, Axes axes);

} // namespace vornhost

#endif
