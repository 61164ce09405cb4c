// UTF-8 text, a character at a time.

#ifndef VORNHOST_UTF8_H
#define VORNHOST_UTF8_H

#include <stddef.h>

#include <string>
#include <string_view>

namespace vornhost {

// Length in bytes (1 to 4) of the character at offset, 0 when the bytes there are not
// UTF-8 (overlong forms, surrogates and values above U+10FFFF included).
size_t utf8_length(std::string_view text, size_t offset);

// Offset of the first byte that is not UTF-8, or the text's size.
size_t utf8_check(std::string_view text);

// Characters in a text; a broken byte counts as one.
size_t utf8_count(std::string_view text);

// Columns that a text takes on a screen: two for a character of the wide East Asian scripts, none for a mark that
// joins the one before; a broken byte takes one.
size_t utf8_width(std::string_view text);

// Value of the character of the given length at offset.
char32_t utf8_value(std::string_view text, size_t offset, size_t length);

void utf8_append(std::string &text, char32_t value);

// A text as UTF-8: bytes that are not are taken for Latin-1, so that different names stay different.
std::string utf8_text(std::string_view bytes);

} // namespace vornhost

#endif
