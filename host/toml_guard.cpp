#include "toml_guard.h"

#include <algorithm>
#include <string_view>

#include "utf8.h"

namespace vornhost {

namespace {

bool check_depth(const TextFile &file, Faults &faults)
{
    constexpr int most = 1000;
    int points = 0;
    const std::string &text = file.text();
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] == '\n') points = 0;
        if (text[i] != '.' || ++points <= most) continue;
        faults.add(file.place(i), "line has more than " + std::to_string(most) + " points", "break it into lines");
        return false;
    }
    return true;
}

// Number of equal quotation marks at offset.
size_t count_marks(std::string_view text, size_t offset)
{
    size_t end = offset;
    while (end < text.size() && text[end] == text[offset]) end++;
    return end - offset;
}

// Offset behind a text of one line that begins at offset. One that is not closed ends
// with its line, where the parser stops.
size_t behind_short_text(std::string_view text, size_t offset)
{
    const char mark = text[offset];
    size_t i = offset + 1;
    while (i < text.size() && text[i] != mark && text[i] != '\n') i += mark == '"' && text[i] == '\\' ? 2 : 1;
    return std::min(i + 1, text.size());
}

// Offset behind a text between three marks; up to two marks more belong to the text.
size_t behind_long_text(std::string_view text, size_t offset)
{
    const char mark = text[offset];
    size_t i = offset + 3;
    while (i < text.size()) {
        const size_t marks = text[i] == mark ? count_marks(text, i) : 0;
        if (marks >= 3) return i + std::min<size_t>(marks, 5);
        i += marks > 0 ? marks : mark == '"' && text[i] == '\\' ? 2 : 1;
    }
    return text.size();
}

size_t behind_text(std::string_view text, size_t offset)
{
    return count_marks(text, offset) >= 3 ? behind_long_text(text, offset) : behind_short_text(text, offset);
}

// Offset of the first character beyond ASCII outside of texts and comments, or the size.
size_t find_stray_character(std::string_view text)
{
    size_t i = 0;
    while (i < text.size() && (unsigned char)text[i] < 0x80) {
        if (text[i] == '#')
            i = std::min(text.find('\n', i), text.size());
        else if (text[i] == '"' || text[i] == '\'')
            i = behind_text(text, i);
        else
            i++;
    }
    return i;
}

bool check_characters(const TextFile &file, Faults &faults)
{
    const std::string_view text = file.text();
    const size_t stray = find_stray_character(text);
    if (stray >= text.size()) return true;
    faults.add(file.place(stray),
               "character " + quote(text.substr(stray, utf8_length(text, stray))) + " outside of quotation marks",
               "write texts in quotation marks, keys in plain letters");
    return false;
}

} // namespace

bool check_toml(const TextFile &file, Faults &faults)
{
    return check_depth(file, faults) && check_characters(file, faults);
}

} // namespace vornhost
