#include "host/formats/xml_values.h"

#include <algorithm>

#include "host/input/number.h"

namespace vornhost {

namespace {

std::optional<double> number(std::string_view text, std::string_view name, Source at, Faults &faults)
{
    text = without_space(text);
    double value = 0.0;
    if (text.empty()) return std::nullopt;
    if (read_number(text, value) == Reading::Number) return value;
    faults.add(at, quote(text) + " in " + std::string(name) + " is not a number", number_remedy(text));
    return std::nullopt;
}

} // namespace

std::string_view local_name(const XmlElement &element)
{
    const std::string_view name(element.name);
    return name.substr(name.find(':') + 1); // npos + 1 is 0
}

const XmlElement *child_of(const XmlElement &element, std::string_view name)
{
    const auto found = std::find_if(element.children.begin(), element.children.end(),
                                    [name](const XmlElement &child) { return local_name(child) == name; });
    return found == element.children.end() ? nullptr : &*found;
}

std::string_view without_space(std::string_view text)
{
    constexpr std::string_view space = " \t\r\n";
    const size_t begin = text.find_first_not_of(space), end = text.find_last_not_of(space);
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin, end - begin + 1);
}

std::string_view child_text(const XmlElement &element, std::string_view name)
{
    const XmlElement *child = child_of(element, name);
    return child ? without_space(child->text) : std::string_view();
}

std::string_view attribute_text(const XmlElement &element, std::string_view name)
{
    const XmlAttribute *attribute = element.find(name);
    return attribute ? without_space(attribute->value) : std::string_view();
}

std::optional<double> child_number(const XmlElement &element, std::string_view name, Faults &faults)
{
    const XmlElement *child = child_of(element, name);
    return child ? number(child->text, name, child->at, faults) : std::nullopt;
}

std::optional<double> attribute_number(const XmlElement &element, std::string_view name, Faults &faults)
{
    const XmlAttribute *attribute = element.find(name);
    return attribute ? number(attribute->value, name, attribute->at, faults) : std::nullopt;
}

} // namespace vornhost
