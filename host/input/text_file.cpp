#include "host/input/text_file.h"

#include <stdio.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "host/input/file_pieces.h"
#include "host/input/utf8.h"

namespace vornhost {

namespace {

const char *const byte_order_mark = "\xEF\xBB\xBF";

// A UTF-16 file begins with its own byte order mark.
bool is_utf16(std::string_view text) { return text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF"; }

} // namespace

bool TextFile::read(const std::string &path, Source asked, Faults &faults, size_t largest)
{
    index = faults.add_file(path);
    if (asked.line == 0) asked.file = index;
    bytes.clear();
    line_start = 0;
    returns_only = false;
    const bool loaded = load(path, largest, asked, faults);
    find_lines();
    return loaded && check_encoding(faults);
}

bool TextFile::read_foreign(const std::string &path, Faults &faults)
{
    foreign = true;
    return read(path, Source(), faults);
}

bool TextFile::take(const std::string &name, std::string_view text, Faults &faults)
{
    index = faults.add_file(name);
    bytes.clear();
    line_start = 0;
    const bool accepted = accept(text.data(), text.size(), faults);
    find_lines();
    return accepted && check_encoding(faults);
}

// Room for the whole file is taken at once: a text that grows would be there twice for a moment.
bool TextFile::load(const std::string &path, size_t largest, Source asked, Faults &faults)
{
    std::error_code unknown;
    const uintmax_t whole = std::filesystem::file_size(path, unknown);
    if (!unknown && whole <= largest) bytes.reserve((size_t)whole);
    return read_pieces(path, asked, largest, faults,
                       [&](const char *piece, size_t size) { return accept(piece, size, faults); });
}

// The first piece tells how lines end: no line is as long as a piece.
void TextFile::take(const char *piece, size_t size)
{
    const size_t from = bytes.size();
    bytes.append(piece, size);
    if (from == 0) returns_only = bytes.find('\n') == std::string::npos && bytes.find('\r') != std::string::npos;
    if (returns_only) std::replace(bytes.begin() + (std::ptrdiff_t)from, bytes.end(), '\r', '\n');
}

// Takes a piece of the file unless it holds a NUL byte or makes a line too long.
bool TextFile::accept(const char *piece, size_t size, Faults &faults)
{
    const size_t from = bytes.size();
    take(piece, size);
    if (from == 0 && is_utf16(bytes)) {
        faults.add({index, 1, 1}, "text is UTF-16", "save it as UTF-8");
        return false;
    }
    if (from == 0 && bytes.compare(0, 3, byte_order_mark) == 0) bytes.erase(0, 3);
    const size_t nul = std::min(bytes.find('\0', from), bytes.size());
    size_t end = from;
    while ((end = bytes.find('\n', end)) < nul && end - line_start <= longest_line) line_start = ++end;
    if (std::min(end, nul) - line_start > longest_line) {
        find_lines();
        faults.add(place(line_start), "line is longer than " + std::to_string(longest_line) + " bytes",
                   "break it into lines");
        return false;
    }
    if (nul == bytes.size()) return true;
    find_lines();
    faults.add(place(nul), "NUL byte in the text", "save the file as plain text");
    return false;
}

bool TextFile::check_encoding(Faults &faults)
{
    const size_t bad = utf8_check(bytes);
    if (bad == bytes.size()) return true;
    if (foreign) {
        bytes = utf8_text(bytes);
        find_lines();
        return true;
    }
    char byte[8];
    snprintf(byte, sizeof byte, "%02X", (unsigned char)bytes[bad]);
    faults.add(place(bad), std::string("byte ") + byte + " is not UTF-8", "save the file as UTF-8");
    return false;
}

void TextFile::find_lines()
{
    lines.assign(1, 0);
    for (size_t end = bytes.find('\n'); end != std::string::npos; end = bytes.find('\n', end + 1))
        lines.push_back(end + 1);
}

Source TextFile::place(size_t offset) const
{
    const auto after = std::upper_bound(lines.begin(), lines.end(), offset);
    if (!origins.empty()) {
        const size_t line = (size_t)(after - lines.begin()) - 1;
        if (line >= origins.size()) return {index, 0, 0};
        return {index + origins[line].file, origins[line].line, 0};
    }
    const size_t start = *(after - 1);
    const std::string_view before = std::string_view(bytes).substr(start, offset - start);
    return {index, (int)(after - lines.begin()), (int)utf8_count(before) + 1};
}

size_t TextFile::offset(int line, int column) const
{
    if (line < 1 || (size_t)line > lines.size()) return bytes.size();
    size_t at = lines[(size_t)line - 1];
    for (int c = 1; c < column && at < bytes.size(); c++) at += std::max<size_t>(utf8_length(bytes, at), 1);
    return at;
}

} // namespace vornhost
