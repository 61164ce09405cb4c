// Text tables: a heading line that names the columns, then a row a line.
//
// Cells stand between blanks, or between separators in files of their own, and may stand in quotation
// marks. "#" begins a comment, "-" (and an empty cell between separators)
// is a value that is not known. Every row has as many cells as the heading.

#ifndef VORNHOST_TABLE_H
#define VORNHOST_TABLE_H

#include <stddef.h>

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"
#include "host/input/text_file.h"

namespace vornhost {

// A text that stands in a file, and the place of each of its bytes there.
class Passage {
public:
    // The bytes begin to end of the file as they stand.
    Passage(const TextFile &file, size_t begin, size_t end);

    // The same with the backslash escapes of TOML replaced; they must be well formed.
    static Passage unescaped(const TextFile &file, size_t begin, size_t end);

    std::string_view text() const;
    Source place(size_t offset) const; // of the byte at offset in text()

private:
    void replace_escapes();

    const TextFile *file;
    size_t begin, end;
    bool replaced = false;
    std::string own;            // the text when escapes were replaced
    std::vector<size_t> origin; // offset in the file of each byte of own
};

enum class Layout { Blanks, Commas };

// How files of tables with separators are written. Headings are the words that stand for columns in one of them; where
// there are any, the columns that neither they nor this house name are passed over.
struct CsvForm {
    struct Heading {
        std::string column, word;
        Source at; // where the network file says so
    };
    char separator = ',';
    char decimal = '.';
    std::vector<Heading> headings;
};

struct Column {
    const char *name;
    bool required = false;
    bool open = false; // it may be missing in a plan, whose observations need no values
};

struct Cell {
    std::string_view text;
    size_t offset; // in the passage
};

// The cells of a table, addressed by row and by index of the column in the list of
// columns that the table may have.
class Table {
public:
    Table(std::string name, Passage passage, Layout layout, Source named_at, CsvForm form = CsvForm());
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;

    // Cuts the passage into cells, of a plan or not. The list must outlive the table.
    void parse(const std::vector<Column> &columns, Faults &faults, bool plan = false);

    // The same row by row: the table has one row, 0, with the cells of the one that take() is called for; its number
    // counts from 0. Where wanted() is given it is asked first whether the row that the table has is wanted: faults of
    // others are not reported, those of lines without cells as of a row without cells. A second call reports no faults
    // of the text. Returns how many rows there are.
    using TakeRow = std::function<void(size_t number)>;
    using IsWanted = std::function<bool()>;
    size_t each_row(const std::vector<Column> &columns, Faults &faults, bool plan, const TakeRow &take,
                    const IsWanted &wanted = IsWanted());

    // Keeps all rows of a table without faults that was read row by row.
    void keep_rows();

    const std::string &name() const { return label; }
    char decimal() const { return form.decimal; } // mark of decimals
    const char *column_name(int column) const { return (*known)[(size_t)column].name; }
    int columns() const { return (int)position.size(); } // that the table may have
    size_t rows() const { return row_begin.size(); }

    // False when the row has too few or too many cells; only cells that it has are given.
    bool whole(size_t row) const { return row_whole[row]; }

    bool has(int column) const { return position[(size_t)column] >= 0; }
    const Cell *cell(size_t row, int column) const; // null when the row has no such cell
    bool given(size_t row, int column) const;       // there is a cell, and it is known
    bool quoted(size_t row, int column) const;      // it stands in quotation marks

    Source heading_place() const { return passage.place(heading_offset); }

    // Place of the cell, or of the row's first cell when there is none.
    Source place(size_t row, int column) const;

private:
    struct Line {
        std::string_view text;
        size_t offset;
    };

    size_t begin(const std::vector<Column> &columns, bool plan, Faults &faults);
    bool next_line(size_t &at, Line &line) const;
    bool cut_row(Line line, Faults &faults);
    void clear_rows();
    void tell_empty(size_t rows, Faults &faults) const;
    void read_line(Line line, std::vector<Cell> &out, Faults &faults);
    void cut_at_blanks(Line line, std::vector<Cell> &out, Faults &faults);
    void cut_at_separators(Line line, std::vector<Cell> &out, Faults &faults);
    size_t quoted_cell(Line line, size_t at, std::vector<Cell> &out, Faults &faults);
    void stray_text(Line line, size_t from, size_t to, Faults &faults) const;
    void read_heading(const std::vector<Cell> &heading, bool plan, Faults &faults);
    int find_column(std::string_view name) const;
    int column_of(std::string_view heading) const;
    void check_headings(const std::vector<Cell> &heading, Faults &faults) const;
    std::vector<std::string> column_names() const;
    bool is_filling(char c) const;
    void unknown_column(const Cell &cell, Faults &faults) const;
    void require_columns(bool plan, Faults &faults) const;
    void add_row(Faults &faults);

    std::string label;
    Passage passage;
    Layout layout;
    Source named_at;
    CsvForm form;
    const std::vector<Column> *known = nullptr;
    std::vector<int> position; // of each known column in the heading, -1 when it is not there
    size_t width = 0;          // cells of the heading
    size_t heading_offset = 0; // of its first cell
    std::vector<Cell> cut;     // cells of the last line
    std::vector<Cell> cells;
    std::vector<size_t> row_begin; // first cell of each row
    std::vector<size_t> row_size;
    std::vector<bool> row_whole;
    std::deque<std::string> doubled; // texts of quoted cells that hold quotation marks
};

// Fault texts shared by headings, settings and words: what a wrong word could mean.
std::string suggestion(std::string_view wrong, const std::vector<std::string> &known, const char *kind);

} // namespace vornhost

#endif
