#include "host/input/toml_texts.h"

#include <algorithm>

namespace vornhost {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }

bool is_key(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '.';
}

// Offset of the mark that closes a text which begins at from; the text's size when there is none. In a text of one line
// the line's end closes as well.
size_t closing(std::string_view toml, size_t from, std::string_view mark)
{
    const bool escapes = mark[0] == '"';
    const size_t next = std::min(toml.find(mark, from), toml.size());
    const std::string_view before = toml.substr(from, next - from);
    if (before.find(mark.size() == 1 ? '\n' : '\\') == std::string_view::npos &&
        before.find('\\') == std::string_view::npos)
        return next;
    for (size_t at = from; at < toml.size(); at++) {
        if (toml.substr(at, mark.size()) == mark) return at;
        if (mark.size() == 1 && toml[at] == '\n') return at;
        if (escapes && toml[at] == '\\') at++;
    }
    return toml.size();
}

// Whether a text holds neither escapes nor control characters but tabs and line ends.
bool is_plain(std::string_view text)
{
    bool plain = true;
    for (const char c : text)
        plain &= c != '\\' && c != '\x7F' && ((unsigned char)c >= ' ' || c == '\t' || c == '\n' || c == '\r');
    for (size_t at = text.find('\r'); plain && at != std::string_view::npos; at = text.find('\r', at + 1))
        plain = at + 1 < text.size() && text[at + 1] == '\n';
    return plain;
}

} // namespace

std::string_view key_before(std::string_view toml, size_t offset)
{
    const size_t newline = toml.substr(0, offset).rfind('\n');
    std::string_view line = toml.substr(newline + 1, offset - newline - 1);
    while (!line.empty() && is_blank(line.back())) line.remove_suffix(1);
    if (line.empty() || line.back() != '=') return {};
    line.remove_suffix(1);
    while (!line.empty() && is_blank(line.back())) line.remove_suffix(1);
    while (!line.empty() && is_blank(line.front())) line.remove_prefix(1);
    return std::all_of(line.begin(), line.end(), is_key) ? line : std::string_view();
}

std::optional<TomlText> next_text(std::string_view toml, size_t from)
{
    for (size_t at = from; at < toml.size(); at++) {
        if (toml[at] == '#') at = std::min(toml.find('\n', at), toml.size());
        if (at >= toml.size() || (toml[at] != '"' && toml[at] != '\'')) continue;
        const std::string three(3, toml[at]);
        TomlText text{at, 0, 0, 0, toml.substr(at, toml.substr(at, 3) == three ? 3 : 1), false};
        text.begin = at + text.marks.size();
        text.end = closing(toml, text.begin, text.marks);
        text.closed = text.end < toml.size();
        text.past = std::min(text.end + text.marks.size(), toml.size());
        const bool several = text.marks.size() == 3;
        while (several && text.past < toml.size() && toml[text.past] == text.marks[0])
            text.past++; // of the text itself
        return text;
    }
    return std::nullopt;
}

std::string without_rows(std::string_view toml, const std::vector<std::string_view> &keys)
{
    std::string out;
    size_t copied = 0, at = 0;
    while (const std::optional<TomlText> text = next_text(toml, at)) {
        at = text->past;
        const std::string_view inside = toml.substr(text->begin, text->end - text->begin);
        if (!text->closed || text->marks.size() == 1 || !is_plain(inside)) continue;
        if (std::find(keys.begin(), keys.end(), key_before(toml, text->opening)) == keys.end()) continue;
        const size_t first = inside.find('\n'), last = inside.rfind('\n');
        if (first == last) continue;
        const std::string_view rows = inside.substr(first, last - first);
        out += toml.substr(copied, text->begin + first - copied);
        out.append((size_t)std::count(rows.begin(), rows.end(), '\n'), '\n');
        copied = text->begin + last;
    }
    return out += toml.substr(copied);
}

} // namespace vornhost
