// Texts in quotation marks in a TOML file, found without a parser, and the file without the rows of its tables: what a
// parser of settings has to read of it.

#ifndef VORNHOST_TOML_TEXTS_H
#define VORNHOST_TOML_TEXTS_H

#include <stddef.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornhost {

// Offsets: of the opening marks, of the text between the marks, and behind all marks.
struct TomlText {
    size_t opening, begin, end, past;
    std::string_view marks; // " or ', once or three times
    bool closed;
};

// The first text from `from` on, which stands outside texts and comments.
std::optional<TomlText> next_text(std::string_view toml, size_t from);

// The key of a line that reads "key = " up to offset; empty when it reads otherwise.
std::string_view key_before(std::string_view toml, size_t offset);

// The file with line ends alone where texts of these keys have whole lines, so that everything else keeps its line and
// column. Texts with escapes or with characters that TOML does not allow stay as they are.
std::string without_rows(std::string_view toml, const std::vector<std::string_view> &keys);

} // namespace vornhost

#endif
