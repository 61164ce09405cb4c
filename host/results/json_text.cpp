#include "host/results/json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "host/system/decimal.h"

namespace vornhost {

namespace {

bool is_plain(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

// Shortest decimal digits that read back as the number, and where its point stands:
// 0.digits times 10 to the power of `point`.
struct Digits {
    char text[24];
    int count = 0, point = 0;
};

Digits digits_of(double positive)
{
    char all[40];
    const char *end = to_chars(all, all + sizeof all, positive, std::chars_format::scientific).ptr;
    Digits d;
    const char *c = all;
    for (; c != end && *c != 'e'; c++)
        if (*c != '.') d.text[d.count++] = *c;
    int exponent = 0;
    for (const char *e = c + 2; e < end; e++) exponent = 10 * exponent + (*e - '0'); // behind e and its sign
    d.point = (c[1] == '-' ? -exponent : exponent) + 1;
    return d;
}

// A short text of its own: no number takes more.
struct Number {
    char text[40];
    size_t size = 0;

    Number &operator+=(char c)
    {
        text[size++] = c;
        return *this;
    }
    Number &operator+=(const char *words)
    {
        while (*words != 0) *this += *words++;
        return *this;
    }
    void append(const char *from, size_t n)
    {
        for (size_t i = 0; i < n; i++) *this += from[i];
    }
    void append(size_t n, char c)
    {
        for (size_t i = 0; i < n; i++) *this += c;
    }
};

void append_exponent(int exponent, Number &text)
{
    text += exponent < 0 ? "e-" : "e+";
    const int size = std::abs(exponent);
    if (size >= 100) text += (char)('0' + size / 100);
    text += (char)('0' + size / 10 % 10);
    text += (char)('0' + size % 10);
}

// 1.0, 12.5, 0.00125, 1.25e-05: with a point or an exponent, so that it is read as a number that need not be whole.
void append_number(double number, Number &text)
{
    constexpr int longest = 15, smallest = -4; // places of the point without an exponent
    if (std::signbit(number)) text += '-';
    if (number == 0.0) {
        text += "0.0";
        return;
    }
    const Digits d = digits_of(std::fabs(number));
    const auto zeros = [&](int n) { text.append((size_t)n, '0'); };
    if (d.point > longest || d.point <= smallest) {
        text += d.text[0];
        if (d.count > 1) text += '.';
        text.append(d.text + 1, (size_t)d.count - 1);
        append_exponent(d.point - 1, text);
    } else if (d.point <= 0) {
        text += "0.";
        zeros(-d.point);
        text.append(d.text, (size_t)d.count);
    } else if (d.point < d.count) {
        text.append(d.text, (size_t)d.point);
        text += '.';
        text.append(d.text + d.point, (size_t)(d.count - d.point));
    } else {
        text.append(d.text, (size_t)d.count);
        zeros(d.point - d.count);
        text += ".0";
    }
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

// What stands before an element: a comma, and outside rows a line of its own. The value of a key stands behind it.
void JsonText::separate()
{
    if (keyed) {
        keyed = false;
        return;
    }
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
    add('"');
    add(name);
    add("\": ");
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
    Number digits;
    append_number(number, digits);
    add({digits.text, digits.size});
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
