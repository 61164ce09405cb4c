// An element of a .gkf file with its attributes read and checked: numbers with blanks around them, angles in gon or as
// degrees-minutes-seconds, words. Each getter reports what is wrong with its attribute and then says that it has none.

#ifndef VORNHOST_GKF_TAG_H
#define VORNHOST_GKF_TAG_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/formats/xml.h"
#include "host/input/faults.h"

namespace vornhost {

// An angle as written: gon, or decimal degrees where it was written as degrees-minutes-seconds.
struct GkfAngle {
    double value = 0;
    bool dms = false;
};

// Whether the text has the form of degrees-minutes-seconds, right or wrong.
bool looks_like_dms(std::string_view text);

class GkfTag {
public:
    // Attributes that are not known, or known more than once, are faults.
    GkfTag(const XmlElement &its_element, const std::vector<std::string> &known, Faults &all);

    const XmlElement &element() const { return tag; }
    Source at() const { return tag.at; }
    Source at(const char *attribute) const; // of its value, or of the element
    bool given(const char *attribute) const { return tag.find(attribute) != nullptr; }

    // Blanks at the ends are cut off.
    std::optional<std::string_view> text(const char *attribute) const;
    // Runs of blanks become one.
    std::optional<std::string> id(const char *attribute);
    std::optional<double> number(const char *attribute);
    std::optional<double> positive(const char *attribute);
    std::optional<int> whole(const char *attribute, int least);
    std::optional<GkfAngle> angle(const char *attribute);

    void fault(const char *attribute, const std::string &what, const std::string &remedy);
    void missing(const char *attribute, const std::string &remedy);

private:
    const XmlElement &tag;
    Faults &faults;
};

// A fault for the element, which the file format does not have at this place.
void unknown_element(const XmlElement &element, const std::vector<std::string> &known, Faults &faults);

} // namespace vornhost

#endif
