// XML files as trees of elements, with the line and column of everything in them.
//
// Nothing is fetched and no entity is expanded: a file that declares one, or uses another than the five of XML itself,
// is refused, and so is what is nested deeper or longer than any network needs.

#ifndef VORNHOST_XML_H
#define VORNHOST_XML_H

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"

namespace vornhost {

struct XmlAttribute {
    std::string name, value;
    Source at; // of the value
};

struct XmlElement {
    std::string name; // with its prefix
    std::vector<XmlAttribute> attributes;
    std::vector<XmlElement> children;
    std::string text; // without the text of the children
    Source at;

    // Where pieces of the text stand in the file.
    struct Mark {
        size_t offset; // in text
        Source at;
    };
    std::vector<Mark> marks;

    const XmlAttribute *find(std::string_view attribute) const;
    Source place(size_t offset) const; // of a byte of the text
};

constexpr size_t deepest_xml = 100;
constexpr size_t longest_xml_attribute = 10000; // bytes
constexpr size_t largest_xml = 500000000;       // bytes

// Whether this build has the parser.
bool xml_available();

// Reads the file. False after a fault: the first one ends the reading.
bool read_xml(const std::string &path, XmlElement &root, Faults &faults);

} // namespace vornhost

#endif
