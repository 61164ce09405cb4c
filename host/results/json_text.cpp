#include "host/results/json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/system/decimal.h"

namespace vornhost {

namespace {

bool is_plain(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

constexpr size_t longest_number = 40; // bytes

// 1.0, 12.5, 0.00125, 1.25e-05: the shortest digits that read back as the number, with a point or an exponent, so that
// it is read as one that need not be whole. Returns the end.
char *write_number(double number, char *text)
{
    constexpr double least = 1e-4, beyond = 1e15; // sizes without an exponent, of which every whole digit counts
    const double size = std::fabs(number);
    const bool plain = number == 0.0 || (size >= least && size < beyond);
    char *end =
        to_chars(text, text + longest_number, number, plain ? std::chars_format::fixed : std::chars_format::scientific)
            .ptr;
    if (!plain || std::find(text, end, '.') != end) return end;
    *end++ = '.';
    *end++ = '0';
    return end;
}

} // namespace

void JsonText::hand_on()
{
    if (used > 0) take({text.data(), used});
    used = 0;
}

void JsonText::add_beyond(std::string_view words)
{
    hand_on();
    if (words.size() > room) return take(words);
    add(words);
}

// What stands before an element that is no value of a key: a comma, and outside rows a line of its own.
void JsonText::separate_elements()
{
    if (levels.empty()) return;
    Level &level = levels.back();
    const bool first = level.empty;
    level.empty = false;
    if (level.row) return first ? void() : add(", ");
    if (!first) add(',');
    add(start);
}

JsonText &JsonText::key(std::string_view name)
{
    separate();
    const size_t marks = 4; // and the blank
    if (name.size() + marks > room - used) {
        add('"');
        add(name);
        add("\": ");
    } else {
        char *to = text.data() + used;
        *to++ = '"';
        to = std::copy(name.begin(), name.end(), to);
        *to++ = '"';
        *to++ = ':';
        *to++ = ' ';
        used += name.size() + marks;
    }
    keyed = true;
    return *this;
}

void JsonText::open(char bracket)
{
    separate();
    add(bracket);
    const bool row = !levels.empty() && (levels.back().row || (bracket == '{' && levels.back().end == ']'));
    levels.push_back({bracket == '{' ? '}' : ']', row});
    if (!row) start += "  ";
}

void JsonText::close()
{
    const Level level = levels.back();
    levels.pop_back();
    if (!level.row) start.resize(start.size() - 2);
    if (!level.empty && !level.row) add(start);
    add(level.end);
}

void JsonText::value(double number)
{
    separate();
    if (!std::isfinite(number)) return add("null");
    if (room - used < longest_number) hand_on();
    used = (size_t)(write_number(number, text.data() + used) - text.data());
}

void JsonText::null()
{
    separate();
    add("null");
}

void JsonText::value(int number)
{
    separate();
    char digits[16];
    add({digits, (size_t)(std::to_chars(digits, digits + sizeof digits, number).ptr - digits)});
}

void JsonText::value(bool truth)
{
    separate();
    add(truth ? "true" : "false");
}

void JsonText::value(std::string_view words)
{
    separate();
    if (!is_plain(words))
        return add(nlohmann::json(words).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    add('"');
    add(words);
    add('"');
}

void JsonText::finish()
{
    add('\n');
    hand_on();
}

} // namespace vornhost
