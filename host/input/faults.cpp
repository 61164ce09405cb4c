#include "host/input/faults.h"

#include <stdio.h>

#include <algorithm>
#include <tuple>

#include "host/input/utf8.h"

namespace vornhost {

namespace {

constexpr size_t longest_quote = 40; // characters

// Characters that would end a line, move the cursor or turn the writing direction.
bool is_control(char32_t c)
{
    if (c < 0x20 || (c >= 0x7F && c < 0xA0)) return true;
    if (c == 0x200E || c == 0x200F || c == 0xFEFF) return true;
    return (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// Appends the character at offset, escaped where needed; returns its length in bytes.
size_t append_printable(std::string &out, std::string_view text, size_t offset)
{
    const size_t length = utf8_length(text, offset);
    const char32_t value = length ? utf8_value(text, offset, length) : (unsigned char)text[offset];
    if (length && !is_control(value)) {
        out.append(text.substr(offset, length));
        return length;
    }
    char escaped[16];
    snprintf(escaped, sizeof escaped, value < 0x100 ? "\\x%02X" : "\\u%04X", (unsigned)value);
    out += escaped;
    return length ? length : 1;
}

bool before(Source a, Source b) { return std::tie(a.file, a.line, a.column) < std::tie(b.file, b.line, b.column); }

} // namespace

std::string printable(std::string_view text)
{
    const auto plain = [](char c) { return c >= ' ' && c <= '~'; };
    std::string out(text.begin(), std::find_if_not(text.begin(), text.end(), plain));
    for (size_t offset = out.size(); offset < text.size();) offset += append_printable(out, text, offset);
    return out;
}

std::string quote(std::string_view text)
{
    std::string out = "\"";
    size_t offset = 0;
    for (size_t n = 0; n < longest_quote && offset < text.size(); n++) offset += append_printable(out, text, offset);
    return out + (offset < text.size() ? "...\"" : "\"");
}

std::string Fault::line() const
{
    std::string out = file;
    if (at.line > 0) out += ":" + std::to_string(at.line);
    if (at.column > 0) out += ":" + std::to_string(at.column);
    out += ": " + what;
    if (!remedy.empty()) out += "; " + remedy;
    return printable(out);
}

int Faults::add_file(const std::string &path)
{
    files.push_back(path);
    return (int)files.size() - 1;
}

bool Faults::wants(Source at) const { return faults.size() < limit || before(at, faults.back().at); }

void Faults::add(Source at, std::string what, std::string remedy)
{
    total++;
    if (!wants(at)) return;
    const auto place = std::upper_bound(faults.begin(), faults.end(), at,
                                        [](Source a, const Fault &other) { return before(a, other.at); });
    const std::string name = (size_t)at.file < files.size() ? files[(size_t)at.file] : std::string();
    faults.insert(place, Fault{name, at, std::move(what), std::move(remedy)});
    if (faults.size() > limit) faults.pop_back();
}

std::vector<std::string> Faults::lines() const
{
    std::vector<std::string> out;
    for (const Fault &fault : faults) out.push_back(fault.line());
    const size_t more = total - faults.size();
    if (more > 0 && !files.empty())
        out.push_back(printable(files[0]) + ": " + std::to_string(more) + (more == 1 ? " more fault" : " more faults"));
    return out;
}

} // namespace vornhost
