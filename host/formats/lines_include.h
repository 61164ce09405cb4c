// Coded lines with those of the files that .INCLUDE names in their places. Such files stand in the folder of the text
// or below it.

#ifndef VORNHOST_LINES_INCLUDE_H
#define VORNHOST_LINES_INCLUDE_H

#include <map>
#include <memory>
#include <vector>

#include "host/formats/lines_options.h"

namespace vornhost {

struct IncludedLines {
    std::vector<CodedLine> lines;
    std::vector<std::unique_ptr<TextFile>> files; // included; the lines are views of them
    std::map<int, Source> named;                  // of each: the line of the first text that leads to it
};

// A file that is not there, lies elsewhere or includes itself is a fault at the line that names it.
IncludedLines with_included(const TextFile &file, Faults &faults);

// Places in included files become those of the first text; notes keep theirs in words.
void place_in_first(const IncludedLines &included, const Faults &faults, Draft &draft);

} // namespace vornhost

#endif
