#include "host/formats/lines_text.h"

#include <algorithm>

namespace vornhost {

namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return std::string_view();
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// Items of the text that begins at this offset of the file.
std::vector<LineItem> items_of(const TextFile &file, std::string_view text, size_t offset)
{
    std::vector<LineItem> items;
    for (size_t at = text.find_first_not_of(blanks); at != std::string_view::npos;) {
        const size_t end = std::min(text.find_first_of(blanks, at), text.size());
        items.push_back({text.substr(at, end - at), file.place(offset + at)});
        at = text.find_first_not_of(blanks, end);
    }
    return items;
}

} // namespace

std::string capitals(std::string_view text)
{
    std::string out(text);
    for (char &c : out)
        if (c >= 'a' && c <= 'z') c = (char)(c - 'a' + 'A');
    return out;
}

std::vector<CodedLine> coded_lines(const TextFile &file)
{
    std::vector<CodedLine> lines;
    const std::string_view all = file.text();
    for (size_t begin = 0; begin < all.size();) {
        const size_t end = std::min(all.find('\n', begin), all.size());
        std::string_view text = all.substr(begin, end - begin);
        text = text.substr(0, text.find('#'));
        const size_t mark = std::min(text.find('\''), text.size());
        CodedLine line;
        line.description = trimmed(text.substr(std::min(mark + 1, text.size())));
        line.items = items_of(file, text.substr(0, mark), begin);
        begin = end + 1;
        if (line.items.empty()) continue;
        line.code = capitals(line.items[0].text);
        line.at = line.items[0].at;
        line.items.erase(line.items.begin());
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace vornhost
