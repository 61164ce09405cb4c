// Values of XML elements by their local names, for formats whose writers use prefixes as they like.

#ifndef VORNHOST_XML_VALUES_H
#define VORNHOST_XML_VALUES_H

#include <optional>
#include <string>
#include <string_view>

#include "host/formats/xml.h"

namespace vornhost {

// Without its prefix.
std::string_view local_name(const XmlElement &element);

// The first child of this local name, or null.
const XmlElement *child_of(const XmlElement &element, std::string_view name);

// A text without the white space around it.
std::string_view without_space(std::string_view text);

// Text of a child; empty when there is none.
std::string_view child_text(const XmlElement &element, std::string_view name);

// Value of an attribute; empty when there is none.
std::string_view attribute_text(const XmlElement &element, std::string_view name);

// A number in a child or an attribute; nothing where it is missing or empty, or after a fault.
std::optional<double> child_number(const XmlElement &element, std::string_view name, Faults &faults);
std::optional<double> attribute_number(const XmlElement &element, std::string_view name, Faults &faults);

} // namespace vornhost

#endif
