// The text of several lines in a TOML file whose closing marks are missing. The parser says where it lost its way,
// which is at the next text or at the end of the file; a user looks for the line where the text begins.

#ifndef VORNHOST_OPEN_TEXT_H
#define VORNHOST_OPEN_TEXT_H

#include <stddef.h>

#include <optional>
#include <string>
#include <string_view>

namespace vornhost {

struct OpenText {
    size_t offset; // of its opening marks
    std::string key;
    std::string marks; // """ or '''
};

// Nothing when all texts are closed. A text that ends where a line "key = " wants to begin another one is open too.
std::optional<OpenText> find_open_text(std::string_view toml);

} // namespace vornhost

#endif
