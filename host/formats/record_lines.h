// The lines of a file that an instrument wrote, in whatever encoding and with whatever line ends.

#ifndef VORNHOST_RECORD_LINES_H
#define VORNHOST_RECORD_LINES_H

#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"
#include "host/input/utf8.h"

namespace vornhost {

struct RecordLine {
    std::string_view text; // without its end
    int line = 0;
};

// Keeps the bytes of a file and cuts them into lines, without a byte order mark and the marks of a serial transfer
// (bytes 2, 3 and 26).
class RecordLines {
public:
    static constexpr size_t largest_file = 500000000; // bytes

    // False after a fault.
    bool read(const std::string &path, Faults &faults);

    const std::vector<RecordLine> &lines() const { return all; }
    Source place(const RecordLine &line, size_t column) const { return {file, line.line, (int)column + 1}; }
    Source place(const RecordLine &line) const { return {file, line.line, 0}; }

private:
    void cut();

    std::string bytes;
    std::vector<RecordLine> all;
    int file = 0;
};

std::string_view trimmed(std::string_view text);

// Places first to last of a line, counted from 1, as far as there are any; without blanks at the ends.
std::string_view columns(std::string_view line, size_t first, size_t last);

// A name of a point; a fault where it is none.
std::string point_name(std::string_view bytes, Source at, Faults &faults);

} // namespace vornhost

#endif
