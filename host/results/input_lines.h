// The lines of the files that a network was read from, for results that show where an observation stands. Files are
// those of the model and of its images; one that is gone or too large has no lines.

#ifndef VORNHOST_INPUT_LINES_H
#define VORNHOST_INPUT_LINES_H

#include <stddef.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

class InputLines {
public:
    InputLines() = default;

    // Reads the files again; to be called before the working folder changes.
    explicit InputLines(const Model &model);

    // The line without its end, cut to a length that people read; empty when it is not there. Lines count from 1.
    std::string line(const std::string &file, int number) const;

private:
    struct Text {
        std::string bytes;
        std::vector<size_t> starts; // of each line, and the end of the last
    };
    void read(const std::string &file);

    std::map<std::string, Text> texts;
};

} // namespace vornhost

#endif
