// Text of coded lines: a line is a code of one or two letters, or a point and a word of an option, and items between
// blanks. # begins a comment, ' a description.

#ifndef VORNHOST_LINES_TEXT_H
#define VORNHOST_LINES_TEXT_H

#include <string>
#include <string_view>
#include <vector>

#include "host/input/text_file.h"

namespace vornhost {

struct LineItem {
    std::string_view text;
    Source at;
};

struct CodedLine {
    std::string code; // in capital letters; of an option with its point
    Source at;
    std::vector<LineItem> items; // behind the code
    std::string description;
};

// The lines that say something, in their order.
std::vector<CodedLine> coded_lines(const TextFile &file);

std::string capitals(std::string_view text);

} // namespace vornhost

#endif
