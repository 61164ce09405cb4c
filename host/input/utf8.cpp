#include "host/input/utf8.h"

namespace vornhost {

namespace {

bool continues(std::string_view text, size_t offset)
{
    return offset < text.size() && ((unsigned char)text[offset] & 0xC0) == 0x80;
}

size_t lead_length(unsigned char lead)
{
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

} // namespace

char32_t utf8_value(std::string_view text, size_t offset, size_t length)
{
    const unsigned char lead = (unsigned char)text[offset];
    if (length == 1) return lead;
    char32_t value = lead & (0x7Fu >> length);
    for (size_t i = 1; i < length; i++) value = (value << 6) | ((unsigned char)text[offset + i] & 0x3Fu);
    return value;
}

size_t utf8_length(std::string_view text, size_t offset)
{
    const size_t length = lead_length((unsigned char)text[offset]);
    for (size_t i = 1; i < length; i++)
        if (!continues(text, offset + i)) return 0;
    if (length < 3) return length;
    const char32_t value = utf8_value(text, offset, length);
    const char32_t least = length == 3 ? 0x800 : 0x10000;
    const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
    return value < least || value > 0x10FFFF || surrogate ? 0 : length;
}

size_t utf8_check(std::string_view text)
{
    size_t offset = 0;
    while (offset < text.size()) {
        const size_t length = utf8_length(text, offset);
        if (length == 0) return offset;
        offset += length;
    }
    return offset;
}

size_t utf8_count(std::string_view text)
{
    size_t count = 0;
    for (size_t offset = 0; offset < text.size(); count++) {
        const size_t length = utf8_length(text, offset);
        offset += length ? length : 1;
    }
    return count;
}

void utf8_append(std::string &text, char32_t value)
{
    if (value < 0x80) {
        text += (char)value;
    } else if (value < 0x800) {
        text += (char)(0xC0 | (value >> 6));
        text += (char)(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        text += (char)(0xE0 | (value >> 12));
        text += (char)(0x80 | ((value >> 6) & 0x3F));
        text += (char)(0x80 | (value & 0x3F));
    } else {
        text += (char)(0xF0 | (value >> 18));
        text += (char)(0x80 | ((value >> 12) & 0x3F));
        text += (char)(0x80 | ((value >> 6) & 0x3F));
        text += (char)(0x80 | (value & 0x3F));
    }
}

} // namespace vornhost
