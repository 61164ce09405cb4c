// Units of a LandXML file.

#ifndef VORNHOST_LANDXML_UNITS_H
#define VORNHOST_LANDXML_UNITS_H

#include <optional>
#include <string_view>

#include "host/formats/field_book.h"
#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

enum class LandAngle { radian, gon, degree, packed };

struct LandUnits {
    double metres = 1.0; // in a unit of length
    LandAngle angle = LandAngle::radian, direction = LandAngle::radian;

    CircleUnit circle() const; // in which readings are taken over
};

// False after a fault.
bool read_land_units(const XmlElement &root, LandUnits &units, Faults &faults);

// An angle of an attribute in the unit of the circle; nothing where it is missing, or after a fault.
std::optional<double> land_angle(const XmlElement &element, std::string_view name, LandAngle unit, CircleUnit circle,
                                 Faults &faults);

} // namespace vornhost

#endif
