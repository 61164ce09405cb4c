#include "host/formats/m5_line.h"

#include <algorithm>

#include "host/formats/number_text.h"
#include "host/formats/packed_degrees.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

constexpr double foot = 0.3048; // metres

std::optional<double> number(const M5Value &value, Faults &faults)
{
    if (value.number.empty() || value.number.find_first_not_of("-# ") == std::string_view::npos) return std::nullopt;
    double out = 0.0;
    if (read_number(value.number, out) == Reading::Number) return out;
    faults.add(value.at, quote(value.number) + " of " + std::string(value.type) + " is not a number",
               "write it with a decimal point");
    return std::nullopt;
}

void unit_fault(const M5Value &value, const char *remedy, Faults &faults)
{
    faults.add(value.at, quote(value.unit) + " is not a unit of " + std::string(value.type), remedy);
}

// "SD          6.552 m": a type, a number and a unit with blanks between.
M5Value value_of(std::string_view field, Source at)
{
    M5Value value;
    value.at = at;
    field = trimmed(field);
    const auto word = [&field] {
        const size_t end = std::min(field.find_first_of(" \t"), field.size());
        const std::string_view text = field.substr(0, end);
        field = trimmed(field.substr(end));
        return text;
    };
    value.type = word();
    value.number = word();
    value.unit = word();
    return value;
}

} // namespace

const M5Value *M5Line::find(std::string_view type) const
{
    const auto found =
        std::find_if(values.begin(), values.end(), [type](const M5Value &value) { return value.type == type; });
    return found == values.end() ? nullptr : &*found;
}

const M5Value *M5Line::find_any(std::initializer_list<std::string_view> types) const
{
    for (const std::string_view type : types)
        if (const M5Value *value = find(type)) return value;
    return nullptr;
}

bool looks_like_m5(std::string_view line)
{
    if (line.size() < 7 || line.substr(0, 3) != "For" || (line[3] != ' ' && line[3] != '_')) return false;
    const std::string_view name = line.substr(4, 2);
    return (name == "M5" || name == "R5" || name == "R4") && line[6] == '|';
}

bool read_m5_line(const RecordLines &file, const RecordLine &line, M5Line &out, Faults &faults)
{
    out = M5Line();
    out.at = file.place(line);
    if (!looks_like_m5(line.text)) {
        faults.add(out.at, "the line does not begin with \"For M5|\", \"For R5|\" or \"For R4|\"",
                   "take it out, or write it so");
        return false;
    }
    std::vector<std::pair<std::string_view, size_t>> fields;
    for (size_t at = 7; at <= line.text.size();) {
        const size_t end = std::min(line.text.find('|', at), line.text.size());
        fields.emplace_back(line.text.substr(at, end - at), at);
        at = end + 1;
    }
    size_t k = 0;
    if (k < fields.size() && fields[k].first.substr(0, 3) == "Adr") k++;
    constexpr size_t head = 4; // places of the kind and the blank behind it
    if (k == fields.size() || fields[k].first.size() < 2) {
        faults.add(out.at, "the line has no kind of information behind its address", "write it between bars");
        return false;
    }
    out.kind = trimmed(fields[k].first.substr(0, head - 1));
    if (fields[k].first.size() > head) out.information = fields[k].first.substr(head);
    for (k++; k < fields.size(); k++) {
        if (trimmed(fields[k].first) == "e") out.faulty = true;
        const M5Value value = value_of(fields[k].first, file.place(line, fields[k].second));
        if (!value.number.empty()) out.values.push_back(value);
    }
    return true;
}

std::optional<double> m5_length(const M5Value *value, Faults &faults)
{
    const std::optional<double> length = value ? number(*value, faults) : std::nullopt;
    if (!length || value->unit == "m") return length;
    if (value->unit == "ft") return *length * foot;
    unit_fault(*value, "write m or ft", faults);
    return std::nullopt;
}

std::optional<double> m5_angle(const M5Value *value, CircleUnit unit, Faults &faults)
{
    std::optional<double> angle = value ? number(*value, faults) : std::nullopt;
    if (!angle) return std::nullopt;
    double own = 400.0;
    if (value->unit == "DEG")
        own = 360.0;
    else if (value->unit == "DMS") {
        own = 360.0;
        angle = packed_degrees(value->number);
        if (!angle) {
            faults.add(value->at, quote(value->number) + " is not ddd.mmss", "minutes and seconds are below 60");
            return std::nullopt;
        }
    } else if (value->unit == "mil")
        own = 6400.0;
    else if (value->unit != "gon" && value->unit != "grd") {
        unit_fault(*value, "write gon, grd, DEG, DMS or mil", faults);
        return std::nullopt;
    }
    const double circle = full_circle(unit);
    return own == circle ? *angle : tidy(*angle / own * circle, circle);
}

std::optional<CircleUnit> m5_circle(const M5Value &value)
{
    if (value.unit == "DEG") return CircleUnit::degree;
    if (value.unit == "DMS") return CircleUnit::dms;
    if (value.unit == "gon" || value.unit == "grd" || value.unit == "mil") return CircleUnit::gon;
    return std::nullopt;
}

} // namespace vornhost
