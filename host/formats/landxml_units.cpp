#include "host/formats/landxml_units.h"

#include <map>

#include "host/formats/number_text.h"
#include "host/formats/packed_degrees.h"
#include "host/formats/xml_values.h"

namespace vornhost {

namespace {

const std::map<std::string_view, double> lengths = {
    {"millimeter", 0.001}, {"centimeter", 0.01}, {"meter", 1.0},     {"kilometer", 1000.0},
    {"foot", 0.3048},      {"inch", 0.0254},     {"mile", 1609.344}, {"USSurveyFoot", 1200.0 / 3937.0}};
const std::map<std::string_view, LandAngle> angles = {{"radians", LandAngle::radian},
                                                      {"grads", LandAngle::gon},
                                                      {"decimal degrees", LandAngle::degree},
                                                      {"decimal dd.mm.ss", LandAngle::packed}};

template <class Value>
void read_word(const XmlElement &element, const char *name, const std::map<std::string_view, Value> &words,
               Value &value, Faults &faults)
{
    const XmlAttribute *attribute = element.find(name);
    if (!attribute) return;
    const auto found = words.find(without_space(attribute->value));
    if (found != words.end()) {
        value = found->second;
        return;
    }
    std::string known;
    for (const auto &[word, meaning] : words) known += (known.empty() ? "" : ", ") + std::string(word);
    faults.add(attribute->at, quote(attribute->value) + " is not known for " + name, "write one of " + known);
}

} // namespace

CircleUnit LandUnits::circle() const
{
    if (angle == LandAngle::degree) return CircleUnit::degree;
    return angle == LandAngle::packed ? CircleUnit::dms : CircleUnit::gon;
}

bool read_land_units(const XmlElement &root, LandUnits &units, Faults &faults)
{
    const XmlElement *element = child_of(root, "Units");
    const XmlElement *system = element ? child_of(*element, "Metric") : nullptr;
    if (element && !system) system = child_of(*element, "Imperial");
    if (!system) {
        faults.add(root.at, "no element Units with Metric or Imperial", "write the units of lengths and angles there");
        return false;
    }
    read_word(*system, "linearUnit", lengths, units.metres, faults);
    read_word(*system, "angularUnit", angles, units.angle, faults);
    read_word(*system, "directionUnit", angles, units.direction, faults);
    return faults.empty();
}

std::optional<double> land_angle(const XmlElement &element, std::string_view name, LandAngle unit, CircleUnit circle,
                                 Faults &faults)
{
    constexpr double two_pi = 6.28318530717958647693;
    const double full = full_circle(circle);
    if (unit == LandAngle::packed) {
        const std::string_view text = attribute_text(element, name);
        if (text.empty()) return std::nullopt;
        const std::optional<double> degrees = packed_degrees(text);
        if (!degrees)
            faults.add(element.find(name)->at, quote(text) + " is not ddd.mmss", "minutes and seconds are below 60");
        return degrees && full != 360.0 ? tidy(*degrees / 360.0 * full, full) : degrees;
    }
    const std::optional<double> value = attribute_number(element, name, faults);
    const double own = unit == LandAngle::radian ? two_pi : unit == LandAngle::gon ? 400.0 : 360.0;
    return value && own != full ? *value / own * full : value;
}

} // namespace vornhost
