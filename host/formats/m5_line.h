// Lines of the format M5 (and R5, R4): fields between bars, an address, a kind with information, and up to three
// values, each with its type and its unit.

#ifndef VORNHOST_M5_LINE_H
#define VORNHOST_M5_LINE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/formats/field_book.h"
#include "host/formats/record_lines.h"

namespace vornhost {

struct M5Value {
    std::string_view type, number, unit;
    Source at;
};

struct M5Line {
    std::string_view kind;        // PI1, TI, KD1, TO, ...
    std::string_view information; // 27 places
    std::vector<M5Value> values;
    Source at;
    bool faulty = false; // marked so by the instrument

    const M5Value *find(std::string_view type) const;
    const M5Value *find_any(std::initializer_list<std::string_view> types) const;
    bool is_text() const { return kind.substr(0, 1) == "T"; }
    std::string_view information_at(size_t first, size_t last) const { return columns(information, first, last); }
};

// Whether a line begins as one of M5.
bool looks_like_m5(std::string_view line);

// False after a fault.
bool read_m5_line(const RecordLines &file, const RecordLine &line, M5Line &out, Faults &faults);

// Metres; nothing for a value that is missing, or after a fault.
std::optional<double> m5_length(const M5Value *value, Faults &faults);

// In the unit of the circle; the same.
std::optional<double> m5_angle(const M5Value *value, CircleUnit unit, Faults &faults);

// The unit of an angle, nothing where it is another.
std::optional<CircleUnit> m5_circle(const M5Value &value);

} // namespace vornhost

#endif
