// A text file in memory, checked to be UTF-8 text of sensible lines, and the places in it.

#ifndef VORNHOST_TEXT_FILE_H
#define VORNHOST_TEXT_FILE_H

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"

namespace vornhost {

class TextFile {
public:
    static constexpr size_t longest_line = 100000;                                                   // bytes
    static constexpr size_t largest_file = (size_t)(sizeof(size_t) > 4 ? 100000000000 : 1000000000); // bytes

    // Reads the file in pieces and stops at the first that cannot be text. A byte order
    // mark is left out; lines that end with a carriage return alone get line ends. Faults of the whole file are placed
    // at asked, the place that named the file, or at the file itself when asked has no line. Returns false after a
    // fault.
    bool read(const std::string &path, Source asked, Faults &faults, size_t largest = largest_file);

    // The same for a file of another program: a text that is not UTF-8 is taken for Latin-1.
    bool read_foreign(const std::string &path, Faults &faults);

    // The same as read() for a text that is there already and goes by that name.
    bool take(const std::string &name, std::string_view text, Faults &faults);

    // Says that the text was made of another file, in which line i + 1 stands at its_origins[i]: places are those
    // there, and have no line where that has none.
    void stands_for(std::vector<Source> its_origins) { origins = std::move(its_origins); }

    const std::string &text() const { return bytes; }
    int file() const { return index; } // its number in places

    // Place of the byte at offset; columns count characters.
    Source place(size_t offset) const;

    // Offset of a place, at most the text's size.
    size_t offset(int line, int column) const;

private:
    bool load(const std::string &path, size_t largest, Source asked, Faults &faults);
    bool accept(const char *piece, size_t size, Faults &faults);
    void take(const char *piece, size_t size);
    bool check_encoding(Faults &faults);
    void find_lines();

    std::string bytes;
    std::vector<size_t> lines;   // offset of the first byte of each
    std::vector<Source> origins; // empty: the text is the file itself
    size_t line_start = 0;       // of the last line read so far
    int index = 0;
    bool foreign = false;
    bool returns_only = false; // lines end with a carriage return alone
};

} // namespace vornhost

#endif
