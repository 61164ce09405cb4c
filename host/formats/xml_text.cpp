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

std::string_view local_name(const XmlElement &element)
{
    const std::string_view name = element.name;
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

const XmlElement *child_of(const XmlElement &element, std::string_view name)
{
    for (const XmlElement &child : element.children)
        if (local_name(child) == name) return &child;
    return nullptr;
}

std::string text_of(const XmlElement &element)
{
    const size_t begin = element.text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return std::string();
    return element.text.substr(begin, element.text.find_last_not_of(" \t\r\n") - begin + 1);
}

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
