#include "host/input/name_keys.h"

#include <string.h>

#include <algorithm>
#include <stdexcept>

namespace vornhost {

namespace {

constexpr char mark = '@';
constexpr size_t most = 9999999; // keys of 8 bytes

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Whether a key behind this character would be a piece of a longer word.
bool is_letter(char c)
{
    return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == mark || c == '_' || c == '-' ||
           (unsigned char)c >= 0x80;
}

std::string_view without_blanks(std::string_view field) { return field.substr(0, field.find_last_not_of(' ') + 1); }

} // namespace

std::string NameKeys::word(size_t index) { return mark + std::to_string(index + 1); }

void NameKeys::add(std::string_view name, const std::function<bool(std::string_view)> &taken)
{
    if (name.size() <= name_width || numbers.count(name)) return;
    while (taken(word(names.size()))) names.emplace_back();
    if (names.size() >= most) throw std::length_error("too many names of more than 8 bytes");
    names.emplace_back(name);
    numbers.emplace(names.back(), (int)names.size() - 1);
}

std::string NameKeys::key(std::string_view name) const
{
    size_t length = 0;
    if (name.size() <= name_width) {
        const bool a_key = index_at(name, &length) >= 0 && length == name.size();
        return a_key ? std::string() : std::string(name);
    }
    const auto found = numbers.find(name);
    return found == numbers.end() ? std::string() : word((size_t)found->second);
}

int NameKeys::index_at(std::string_view text, size_t *length) const
{
    if (numbers.empty() || text.size() < 2 || text[0] != mark || text[1] == '0') return -1;
    size_t n = 0, end = 1;
    for (; end < text.size() && end < name_width && is_digit(text[end]); end++) n = 10 * n + (size_t)(text[end] - '0');
    const bool whole = end > 1 && (end == text.size() || !is_digit(text[end]));
    if (!whole || n == 0 || n > names.size() || names[n - 1].empty()) return -1;
    *length = end;
    return (int)n - 1;
}

std::string_view NameKeys::name(std::string_view field) const
{
    const std::string_view bare = without_blanks(field);
    size_t length = 0;
    const int index = index_at(bare, &length);
    return index >= 0 && length == bare.size() ? std::string_view(names[(size_t)index]) : bare;
}

void NameKeys::replace(const char *line, char *out, size_t size) const
{
    const std::string_view text = line;
    size_t to = 0;
    const auto append = [&](std::string_view piece) {
        const size_t n = std::min(piece.size(), size - 1 - to);
        memcpy(out + to, piece.data(), n);
        to += n;
    };
    for (size_t at = 0; at < text.size();) {
        size_t length = 1;
        const bool inside = at > 0 && is_letter(text[at - 1]);
        const int index = inside ? -1 : index_at(text.substr(at), &length);
        append(index >= 0 ? std::string_view(names[(size_t)index]) : text.substr(at, length));
        at += length;
    }
    out[to] = '\0';
}

std::string NameKeys::replaced(const std::string &line) const
{
    if (numbers.empty()) return line;
    size_t longest = 0;
    for (const std::string &name : names) longest = std::max(longest, name.size());
    const size_t keys = (size_t)std::count(line.begin(), line.end(), mark);
    std::string out(line.size() + keys * longest + 1, '\0');
    replace(line.c_str(), &out[0], out.size());
    out.resize(strlen(out.c_str()));
    return out;
}

} // namespace vornhost
