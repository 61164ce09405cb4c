#include "host/input/open_text.h"

#include <algorithm>

namespace vornhost {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t'; }

bool is_key(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '.';
}

// The key of a line that reads "key = " up to offset; empty when it reads otherwise.
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

// Offset of the mark that closes a text which begins at from; the text's size when there is none. In a text of one line
// the line's end closes as well.
size_t closing(std::string_view toml, size_t from, std::string_view mark)
{
    const bool escapes = mark[0] == '"';
    for (size_t at = from; at < toml.size(); at++) {
        if (toml.substr(at, mark.size()) == mark) return at;
        if (mark.size() == 1 && toml[at] == '\n') return at;
        if (escapes && toml[at] == '\\') at++;
    }
    return toml.size();
}

} // namespace

std::optional<OpenText> find_open_text(std::string_view toml)
{
    for (size_t at = 0; at < toml.size(); at++) {
        if (toml[at] == '#') at = std::min(toml.find('\n', at), toml.size());
        if (at >= toml.size() || (toml[at] != '"' && toml[at] != '\'')) continue;
        const std::string three(3, toml[at]);
        const std::string_view mark = toml.substr(at, toml.substr(at, 3) == three ? 3 : 1);
        const size_t end = closing(toml, at + mark.size(), mark);
        const bool open = end == toml.size() || !key_before(toml, end).empty();
        if (mark.size() == 3 && open) return OpenText{at, std::string(key_before(toml, at)), three};
        at = end + mark.size() - 1;
        while (mark.size() == 3 && at + 1 < toml.size() && toml[at + 1] == mark[0]) at++; // marks of the text itself
    }
    return std::nullopt;
}

} // namespace vornhost
