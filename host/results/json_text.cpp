#include "host/results/json_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>

namespace vornhost {

namespace {

constexpr size_t piece = 1 << 16; // bytes handed on at once

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
    const char *end = std::to_chars(all, all + sizeof all, positive, std::chars_format::scientific).ptr;
    Digits d;
    const char *c = all;
    for (; c != end && *c != 'e'; c++)
        if (*c != '.') d.text[d.count++] = *c;
    d.point = std::atoi(std::string(c + 1, end).c_str()) + 1;
    return d;
}

void append_exponent(int exponent, std::string &text)
{
    text += exponent < 0 ? "e-" : "e+";
    const std::string number = std::to_string(std::abs(exponent));
    text += (number.size() < 2 ? "0" : "") + number;
}

// 1.0, 12.5, 0.00125, 1.25e-05: with a point or an exponent, so that it is read as a number that need not be whole.
void append_number(double number, std::string &text)
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

void JsonText::line()
{
    if (text.size() > piece) {
        take(text);
        text.clear();
    }
    text += '\n';
    text.append(2 * levels.size(), ' ');
}

// What stands before an element: a comma, and a line of its own. The value of a key stands behind it.
void JsonText::separate()
{
    if (keyed) {
        keyed = false;
        return;
    }
    if (levels.empty()) return;
    if (!levels.back().empty) text += ',';
    levels.back().empty = false;
    line();
}

JsonText &JsonText::key(std::string_view name)
{
    separate();
    text.append(1, '"').append(name).append("\": ");
    keyed = true;
    return *this;
}

void JsonText::open(char bracket)
{
    separate();
    text += bracket;
    levels.push_back({bracket == '{' ? '}' : ']'});
}

void JsonText::close()
{
    const Level level = levels.back();
    levels.pop_back();
    if (!level.empty) line();
    text += level.end;
}

void JsonText::value(double number)
{
    separate();
    if (std::isfinite(number))
        append_number(number, text);
    else
        text += "null";
}

void JsonText::value(int number)
{
    separate();
    char digits[16];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void JsonText::value(bool truth)
{
    separate();
    text += truth ? "true" : "false";
}

void JsonText::value(std::string_view words)
{
    separate();
    if (is_plain(words))
        text.append(1, '"').append(words).append(1, '"');
    else
        text += nlohmann::json(words).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

void JsonText::finish()
{
    text += '\n';
    take(text);
    text.clear();
}

} // namespace vornhost
