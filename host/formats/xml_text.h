// Texts of XML elements as words and numbers.

#ifndef VORNHOST_XML_TEXT_H
#define VORNHOST_XML_TEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "host/formats/xml.h"

namespace vornhost {

// The name without its prefix.
std::string_view local_name(const XmlElement &element);

// The first child of this name, null where there is none.
const XmlElement *child_of(const XmlElement &element, std::string_view name);

// The text without blanks at its ends; of a child, empty where there is none.
std::string text_of(const XmlElement &element);
std::string text_of(const XmlElement &element, std::string_view child);

// A number in a child; a fault where it is missing or none.
double number_in(const XmlElement &element, std::string_view child, Faults &faults);

// The same, `otherwise` where the child is missing or empty.
double number_in(const XmlElement &element, std::string_view child, double otherwise, Faults &faults);

} // namespace vornhost

#endif
