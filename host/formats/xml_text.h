// Texts of XML elements as words and numbers that have to be there.

#ifndef VORNHOST_XML_TEXT_H
#define VORNHOST_XML_TEXT_H

#include <string>
#include <string_view>

#include "host/formats/xml_values.h"

namespace vornhost {

// The text without blanks at its ends; of a child, empty where there is none.
std::string text_of(const XmlElement &element);
std::string text_of(const XmlElement &element, std::string_view child);

// A number in a child; a fault where it is missing or none.
double number_in(const XmlElement &element, std::string_view child, Faults &faults);

// The same, `otherwise` where the child is missing or empty.
double number_in(const XmlElement &element, std::string_view child, double otherwise, Faults &faults);

} // namespace vornhost

#endif
