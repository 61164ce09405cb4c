// A table of a network file in the making: cells by columns, blanks between them, so that a person can read it.

#ifndef VORNHOST_WRITER_TABLE_H
#define VORNHOST_WRITER_TABLE_H

#include <string>
#include <string_view>
#include <vector>

namespace vornhost {

enum class CellKind { word, number };

class WriterTable {
public:
    explicit WriterTable(size_t its_rows) : rows(its_rows) {}

    // A column of a cell a row; an empty text is a value that is not known. The column is left out when all are empty
    // and it is not required.
    void add(const std::string &heading, CellKind kind, std::vector<std::string> cells, bool required = false);

    // The heading and the rows, a line each, between quotation marks of TOML that fit what is in them.
    std::string text() const;

private:
    struct Column {
        std::string heading;
        CellKind kind;
        std::vector<std::string> cells;
    };

    size_t rows;
    std::vector<Column> columns;
};

// A word as a cell: in quotation marks where it needs them.
std::string word_cell(std::string_view word);

// A text as TOML writes it on one line.
std::string toml_text(std::string_view text);

} // namespace vornhost

#endif
