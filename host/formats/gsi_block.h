// Blocks and words of the recording format GSI: a block a line, a word of 16 places (GSI-8) or of 24 (GSI-16, whose
// lines begin with an asterisk), each with an index, four places of information, a sign and its data.

#ifndef VORNHOST_GSI_BLOCK_H
#define VORNHOST_GSI_BLOCK_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/formats/field_book.h"
#include "host/formats/record_lines.h"

namespace vornhost {

struct GsiWord {
    int index = 0;
    char unit = '.', sign = '+';
    std::string_view data; // 8 or 16 places
    Source at;

    bool empty() const;       // no value, written with dashes or question marks
    std::string text() const; // without the zeros that fill it
};

struct GsiBlock {
    std::vector<GsiWord> words;
    Source at;

    const GsiWord *find(int index) const;
    bool has_any(std::initializer_list<int> indexes) const;
};

// Whether a line begins as a block.
bool looks_like_gsi(std::string_view line);

// Reads the words of a line by their places. False after a fault.
bool read_gsi_block(const RecordLines &file, const RecordLine &line, GsiBlock &block, Faults &faults);

// Length in metres; nothing for an empty word, or after a fault.
std::optional<double> gsi_length(const GsiWord &word, Faults &faults);

// Angle in gon or degrees; nothing for an empty word, or after a fault.
std::optional<double> gsi_angle(const GsiWord &word, CircleUnit unit, Faults &faults);

// The unit of the circle in which a word is written, nothing where it names none.
std::optional<CircleUnit> gsi_circle(const GsiWord &word);

} // namespace vornhost

#endif
