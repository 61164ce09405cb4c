#include "host/formats/xml_text.h"

#include "host/input/number.h"

namespace vornhost {

namespace {

double number_of(const XmlElement &element, Faults &faults)
{
    double value = 0.0;
    const std::string text = text_of(element);
    if (read_number(text, value) != Reading::Number)
        faults.add(element.at, quote(text) + " is not a number in " + element.name, number_remedy(text));
    return value;
}

} // namespace

std::string text_of(const XmlElement &element) { return std::string(without_space(element.text)); }

std::string text_of(const XmlElement &element, std::string_view child)
{
    const XmlElement *found = child_of(element, child);
    return found ? text_of(*found) : std::string();
}

double number_in(const XmlElement &element, std::string_view child, Faults &faults)
{
    const XmlElement *found = child_of(element, child);
    if (found) return number_of(*found, faults);
    faults.add(element.at, "element " + element.name + " has no " + std::string(child), "add it");
    return 0.0;
}

double number_in(const XmlElement &element, std::string_view child, double otherwise, Faults &faults)
{
    return text_of(element, child).empty() ? otherwise : number_in(element, child, faults);
}

} // namespace vornhost
