#include "host/input/utf8.h"

#include <algorithm>
#include <iterator>

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

namespace {

struct Range {
    char32_t first, last;
};

bool within(const Range *begin, const Range *end, char32_t value)
{
    for (const Range *r = begin; r != end; r++)
        if (value >= r->first && value <= r->last) return true;
    return false;
}

// After Unicode Standard Annex 11, East Asian Width, W and F, by blocks.
bool is_wide(char32_t value)
{
    static const Range wide[] = {{0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xA960, 0xA97F},
                                 {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                                 {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};
    return within(std::begin(wide), std::end(wide), value);
}

// Combining marks and characters without width.
bool is_mark(char32_t value)
{
    static const Range marks[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x0610, 0x061A},
                                  {0x064B, 0x065F}, {0x0900, 0x0902}, {0x093C, 0x093C}, {0x0941, 0x0948},
                                  {0x094D, 0x094D}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},
                                  {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
                                  {0x3099, 0x309A}, {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
    return within(std::begin(marks), std::end(marks), value);
}

} // namespace

size_t utf8_width(std::string_view text)
{
    const auto is_plain = [](char c) { return c >= ' ' && c <= '~'; };
    if (std::all_of(text.begin(), text.end(), is_plain)) return text.size();
    size_t width = 0;
    for (size_t offset = 0; offset < text.size();) {
        const size_t length = utf8_length(text, offset);
        const char32_t value = length ? utf8_value(text, offset, length) : U'?';
        width += is_wide(value) ? 2 : is_mark(value) ? 0 : 1;
        offset += length ? length : 1;
    }
    return width;
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

std::string utf8_text(std::string_view bytes)
{
    if (utf8_check(bytes) == bytes.size()) return std::string(bytes);
    std::string text;
    for (const char c : bytes) utf8_append(text, (unsigned char)c);
    return text;
}

} // namespace vornhost
