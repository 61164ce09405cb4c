#include "host/formats/gkf_tag.h"

#include <algorithm>
#include <cmath>

#include "host/input/network_tables.h"
#include "host/input/number.h"
#include "host/input/table.h"
#include "host/input/utf8.h"

namespace vornhost {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && is_blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

std::string_view without_sign(std::string_view text)
{
    const bool sign = !text.empty() && (text[0] == '-' || text[0] == '+');
    return sign ? text.substr(1) : text;
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A part of degrees-minutes-seconds: digits, for seconds with a point.
bool read_part(std::string_view text, bool point, double &value)
{
    if (text.empty() || !is_digit(text[0])) return false;
    for (const char c : text)
        if (!is_digit(c) && !(point && c == '.')) return false;
    return read_number(text, value) == Reading::Number;
}

// "-57-32-28.428" as decimal degrees.
bool read_dms(std::string_view text, double &degrees)
{
    const std::string_view parts = without_sign(text);
    const size_t first = parts.find('-');
    const size_t second = first == std::string_view::npos ? first : parts.find('-', first + 1);
    if (second == std::string_view::npos) return false;
    double d = 0, m = 0, s = 0;
    const bool good = read_part(parts.substr(0, first), false, d) &&
                      read_part(parts.substr(first + 1, second - first - 1), false, m) &&
                      read_part(parts.substr(second + 1), true, s);
    if (!good || m >= 60.0 || s >= 60.0) return false;
    degrees = ((s / 60.0 + m) / 60.0 + d) * (text[0] == '-' ? -1.0 : 1.0);
    return true;
}

const char *fault_of(Reading reading)
{
    if (reading == Reading::NotFinite) return " is not a finite number";
    return reading == Reading::OutOfRange ? " is a number out of range" : " is not a number";
}

} // namespace

bool looks_like_dms(std::string_view text)
{
    const std::string_view parts = without_sign(trimmed(text));
    for (size_t at = parts.find('-'); at != std::string_view::npos; at = parts.find('-', at + 1))
        if (at > 0 && parts[at - 1] != 'e' && parts[at - 1] != 'E') return true;
    return false;
}

GkfTag::GkfTag(const XmlElement &its_element, const std::vector<std::string> &known, Faults &all)
    : tag(its_element), faults(all)
{
    for (const XmlAttribute &attribute : tag.attributes) {
        if (std::find(known.begin(), known.end(), attribute.name) != known.end()) continue;
        const std::string remedy =
            faults.wants(attribute.at) ? suggestion(attribute.name, known, "known attributes") : "";
        faults.add(attribute.at, "unknown attribute " + quote(attribute.name) + " of " + tag.name, remedy);
    }
}

Source GkfTag::at(const char *attribute) const
{
    const XmlAttribute *found = tag.find(attribute);
    return found ? found->at : tag.at;
}

std::optional<std::string_view> GkfTag::text(const char *attribute) const
{
    const XmlAttribute *found = tag.find(attribute);
    if (!found) return std::nullopt;
    return trimmed(found->value);
}

std::optional<std::string> GkfTag::id(const char *attribute)
{
    const std::optional<std::string_view> written = text(attribute);
    if (!written) return std::nullopt;
    std::string name;
    for (const char c : *written)
        if (!is_blank(c))
            name += c;
        else if (name.back() != ' ')
            name += ' ';
    if (name.empty())
        fault(attribute, std::string("empty name in ") + attribute, "write the id of a point");
    else if (utf8_count(name) > longest_name)
        fault(attribute, "name " + quote(name) + " is longer than " + std::to_string(longest_name) + " characters",
              "shorten it");
    else if (printable(name) != name)
        fault(attribute, "name " + quote(name) + " holds a control character", "remove it");
    else
        return name;
    return std::nullopt;
}

std::optional<double> GkfTag::number(const char *attribute)
{
    const std::optional<std::string_view> written = text(attribute);
    if (!written) return std::nullopt;
    double value = 0.0;
    const Reading reading = read_number(*written, value);
    if (reading == Reading::Number && std::fabs(value) <= largest_length) return value;
    if (reading == Reading::Number)
        fault(attribute, quote(*written) + " is too large in " + attribute, "write a number up to 1e12");
    else
        fault(attribute, quote(*written) + fault_of(reading) + " in " + attribute, number_remedy(*written));
    return std::nullopt;
}

std::optional<double> GkfTag::positive(const char *attribute)
{
    const std::optional<double> value = number(attribute);
    if (!value || *value > 0.0) return value;
    fault(attribute, quote(*text(attribute)) + " is not above 0 in " + attribute, "write a number above 0");
    return std::nullopt;
}

std::optional<int> GkfTag::whole(const char *attribute, int least)
{
    const std::optional<std::string_view> written = text(attribute);
    if (!written) return std::nullopt;
    int value = 0;
    if (read_whole(*written, value) == Reading::Number && value >= least) return value;
    const std::string range = "a whole number from " + std::to_string(least);
    fault(attribute, quote(*written) + " is not " + range + " in " + attribute, "write " + range);
    return std::nullopt;
}

std::optional<GkfAngle> GkfTag::angle(const char *attribute)
{
    const std::optional<std::string_view> written = text(attribute);
    if (!written) return std::nullopt;
    GkfAngle angle;
    angle.dms = looks_like_dms(*written);
    if (angle.dms && read_dms(*written, angle.value)) return angle;
    if (angle.dms) {
        fault(attribute, quote(*written) + " is not degrees-minutes-seconds in " + attribute,
              "write minutes and seconds below 60, like 57-32-28.4");
        return std::nullopt;
    }
    const std::optional<double> gon = number(attribute);
    if (!gon) return std::nullopt;
    angle.value = *gon;
    return angle;
}

void GkfTag::fault(const char *attribute, const std::string &what, const std::string &remedy)
{
    faults.add(at(attribute), what, remedy);
}

void GkfTag::missing(const char *attribute, const std::string &remedy)
{
    faults.add(at(), tag.name + " has no attribute " + attribute, remedy);
}

void unknown_element(const XmlElement &element, const std::vector<std::string> &known, Faults &faults)
{
    const std::string remedy = faults.wants(element.at) ? suggestion(element.name, known, "known here") : "";
    faults.add(element.at, "unknown element " + quote(element.name), remedy);
}

} // namespace vornhost
