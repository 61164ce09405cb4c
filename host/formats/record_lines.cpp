#include "host/formats/record_lines.h"

#include <algorithm>

#include "host/input/file_pieces.h"

namespace vornhost {

namespace {

constexpr size_t longest_name = 40; // characters

} // namespace

bool RecordLines::read(const std::string &path, Faults &faults)
{
    file = faults.add_file(path);
    const bool good = read_pieces(path, {file, 0, 0}, largest_file, faults, [this](const char *piece, size_t size) {
        std::copy_if(piece, piece + size, std::back_inserter(bytes),
                     [](char c) { return c != '\x02' && c != '\x03' && c != '\x1A' && c != '\0'; });
        return true;
    });
    if (good) cut();
    return good;
}

// Lines end with a line feed, a carriage return, or both.
void RecordLines::cut()
{
    std::string_view rest(bytes);
    if (rest.substr(0, 3) == "\xEF\xBB\xBF") rest.remove_prefix(3);
    for (int line = 1; !rest.empty(); line++) {
        const size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
        all.push_back({rest.substr(0, end), line});
        rest.remove_prefix(end);
        if (rest.substr(0, 2) == "\r\n")
            rest.remove_prefix(2);
        else if (!rest.empty())
            rest.remove_prefix(1);
    }
}

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(" \t"), end = text.find_last_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin, end - begin + 1);
}

std::string_view columns(std::string_view line, size_t first, size_t last)
{
    return first > line.size() ? std::string_view() : trimmed(line.substr(first - 1, last - first + 1));
}

std::string point_name(std::string_view bytes, Source at, Faults &faults)
{
    std::string name = utf8_text(trimmed(bytes));
    if (name.empty())
        faults.add(at, "a name is missing", "write one");
    else if (utf8_count(name) > longest_name)
        faults.add(at, "name " + quote(name) + " is longer than 40 characters", "write a shorter one");
    else if (printable(name) != name)
        faults.add(at, "name " + quote(name) + " has a control character", "write it with letters and digits");
    return name;
}

} // namespace vornhost
