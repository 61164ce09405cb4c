#include "host/input/table.h"

#include <stdlib.h>

#include <algorithm>

#include "host/input/names.h"
#include "host/input/utf8.h"

namespace vornhost {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string_view trimmed(std::string_view text, size_t &offset)
{
    while (!text.empty() && is_blank(text.front())) {
        text.remove_prefix(1);
        offset++;
    }
    while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
    return text;
}

bool unknown(std::string_view text) { return text.empty() || text == "-"; }

// The character that a one-letter escape stands for, 0 when it is none.
char escaped_letter(char letter)
{
    static constexpr std::string_view letters = "btnfr\"\\", values = "\b\t\n\f\r\"\\";
    const size_t at = letters.find(letter);
    return at == std::string_view::npos ? '\0' : values[at];
}

std::string count_of(size_t n, const char *thing) { return std::to_string(n) + " " + thing + (n == 1 ? "" : "s"); }

} // namespace

Passage::Passage(const TextFile &text_file, size_t first, size_t past) : file(&text_file), begin(first), end(past) {}

Passage Passage::unescaped(const TextFile &file, size_t begin, size_t end)
{
    Passage passage(file, begin, end);
    if (passage.text().find('\\') != std::string_view::npos) passage.replace_escapes();
    return passage;
}

void Passage::replace_escapes()
{
    const std::string_view raw = std::string_view(file->text()).substr(begin, end - begin);
    for (size_t at = 0; at < raw.size();) {
        const size_t from = begin + at;
        if (raw[at] != '\\' || at + 1 == raw.size()) {
            own += raw[at++];
        } else if (const char letter = escaped_letter(raw[at + 1])) {
            own += letter;
            at += 2;
        } else if (raw[at + 1] == 'u' || raw[at + 1] == 'U') {
            const size_t digits = raw[at + 1] == 'u' ? 4 : 8;
            utf8_append(own, (char32_t)strtoul(std::string(raw.substr(at + 2, digits)).c_str(), nullptr, 16));
            at = std::min(at + 2 + digits, raw.size());
        } else { // a backslash at the end of a line joins it with the next text
            for (at++; at < raw.size() && (is_blank(raw[at]) || raw[at] == '\n');) at++;
        }
        origin.resize(own.size(), from);
    }
    replaced = true;
}

std::string_view Passage::text() const
{
    return replaced ? std::string_view(own) : std::string_view(file->text()).substr(begin, end - begin);
}

Source Passage::place(size_t offset) const
{
    if (!replaced) return file->place(begin + offset);
    return file->place(offset < origin.size() ? origin[offset] : end);
}

std::string suggestion(std::string_view wrong, const std::vector<std::string> &known, const char *kind)
{
    Similar similar(wrong);
    for (const std::string &word : known) similar.offer(word);
    if (!similar.best().empty()) return "did you mean " + std::string(similar.best()) + "?";
    std::string list;
    for (const std::string &word : known) list += (list.empty() ? "" : ", ") + word;
    return std::string(kind) + ": " + list;
}

Table::Table(std::string name, Passage text, Layout how, Source at, CsvForm csv)
    : label(std::move(name)), passage(std::move(text)), layout(how), named_at(at), form(std::move(csv))
{
}

void Table::parse(const std::vector<Column> &columns, Faults &faults, bool plan)
{
    clear_rows();
    Line line;
    for (size_t at = begin(columns, plan, faults); next_line(at, line);) {
        read_line(line, cut, faults);
        if (!cut.empty()) add_row(faults);
    }
    tell_empty(rows(), faults);
}

size_t Table::each_row(const std::vector<Column> &columns, Faults &faults, bool plan, const TakeRow &take,
                       const IsWanted &wanted)
{
    Faults unsaid;
    Faults &first = known ? unsaid : faults, &said = wanted ? unsaid : first;
    Line line;
    size_t count = 0;
    for (size_t at = begin(columns, plan, first); next_line(at, line);) {
        bool row = cut_row(line, said);
        if (wanted && (row || !unsaid.empty())) {
            const bool mine = wanted();
            if (mine && !unsaid.empty()) cut_row(line, first);
            unsaid = Faults();
            count += row && !mine;
            row = row && mine;
        }
        if (row) take(count++);
    }
    tell_empty(count, first);
    clear_rows();
    return count;
}

void Table::keep_rows()
{
    Faults none;
    if (known) parse(*known, none, true);
}

// Takes the heading; returns the offset behind its line.
size_t Table::begin(const std::vector<Column> &columns, bool plan, Faults &faults)
{
    known = &columns;
    position.assign(columns.size(), -1);
    width = 0;
    size_t at = 0;
    for (Line line; width == 0 && next_line(at, line);) {
        read_line(line, cut, faults);
        if (!cut.empty()) read_heading(cut, plan, faults);
    }
    return at;
}

// The line that begins at `at`, and where the next one begins; false at the end.
bool Table::next_line(size_t &at, Line &line) const
{
    const std::string_view text = passage.text();
    if (at >= text.size()) return false;
    const size_t line_end = std::min(text.find('\n', at), text.size());
    line = {text.substr(at, line_end - at), at};
    at = line_end + 1;
    return true;
}

// Makes a line the one row of the table; false, and no row has cells, where the line has none.
bool Table::cut_row(Line line, Faults &faults)
{
    clear_rows();
    read_line(line, cut, faults);
    if (!cut.empty()) add_row(faults);
    if (cut.empty()) row_begin.push_back(0), row_size.push_back(0), row_whole.push_back(false);
    return !cut.empty();
}

void Table::clear_rows()
{
    cells.clear();
    row_begin.clear();
    row_size.clear();
    row_whole.clear();
    doubled.clear();
}

void Table::tell_empty(size_t rows, Faults &faults) const
{
    if (rows > 0) return;
    const char *const missing = width == 0 ? " is empty" : " has a heading but no rows";
    faults.add(named_at, "table " + label + missing, "add rows or remove the table");
}

void Table::read_line(Line line, std::vector<Cell> &out, Faults &faults)
{
    out.clear();
    if (layout == Layout::Blanks) {
        cut_at_blanks(line, out, faults);
        return;
    }
    cut_at_separators(line, out, faults);
    const bool nothing = std::all_of(out.begin(), out.end(), [](const Cell &cell) { return cell.text.empty(); });
    if (nothing) out.clear();
    // Spreadsheets write empty cells behind the last column.
    while (out.size() > std::max<size_t>(width, 1) && out.back().text.empty()) out.pop_back();
}

void Table::cut_at_blanks(Line line, std::vector<Cell> &out, Faults &faults)
{
    const std::string_view text = line.text;
    for (size_t at = 0; at < text.size() && text[at] != '#';) {
        if (is_blank(text[at])) {
            at++;
        } else if (text[at] == '"') {
            at = quoted_cell(line, at, out, faults);
        } else {
            const size_t from = at;
            while (at < text.size() && text[at] != '#' && !is_blank(text[at])) at++;
            out.push_back({text.substr(from, at - from), line.offset + from});
        }
    }
}

// Blanks around a cell, of which a tab that separates is none.
bool Table::is_filling(char c) const { return is_blank(c) && c != form.separator; }

void Table::cut_at_separators(Line line, std::vector<Cell> &out, Faults &faults)
{
    const std::string_view text = line.text;
    const char ends[] = {form.separator, '#', '\0'};
    size_t at = 0;
    while (true) {
        while (at < text.size() && is_filling(text[at])) at++;
        if (at < text.size() && text[at] == '"') {
            at = quoted_cell(line, at, out, faults);
        } else {
            const size_t cell_end = std::min(text.find_first_of(ends, at), text.size());
            size_t offset = line.offset + at;
            const std::string_view cell = trimmed(text.substr(at, cell_end - at), offset);
            out.push_back({cell, offset});
            at = cell_end;
        }
        if (at >= text.size() || text[at] != form.separator) return;
        at++;
    }
}

// Takes the cell whose quotation mark stands at at; returns where the separator after it, a
// comment or the line's end stands.
size_t Table::quoted_cell(Line line, size_t at, std::vector<Cell> &out, Faults &faults)
{
    const std::string_view text = line.text;
    const size_t from = at + 1;
    bool has_marks = false;
    for (at = from; at < text.size(); at++) {
        if (text[at] != '"') continue;
        if (at + 1 == text.size() || text[at + 1] != '"') break;
        has_marks = true;
        at++;
    }
    const bool closed = at < text.size();
    size_t offset = line.offset + from;
    std::string_view cell = text.substr(from, at - from);
    if (has_marks) {
        std::string &plain = doubled.emplace_back();
        for (size_t i = 0; i < cell.size(); i++) {
            plain += cell[i];
            if (cell[i] == '"') i++;
        }
        cell = plain;
    }
    out.push_back({trimmed(cell, offset), offset});
    if (!closed)
        faults.add(passage.place(line.offset + from - 1), "quotation mark is not closed on its line",
                   "add a second \"");
    if (!closed) return text.size();
    const char separators[] = {form.separator, '#', '\0'};
    const size_t next =
        std::min(text.find_first_of(layout == Layout::Commas ? separators : " \t\r#", at + 1), text.size());
    stray_text(line, at + 1, next, faults);
    return next;
}

void Table::stray_text(Line line, size_t from, size_t to, Faults &faults) const
{
    size_t offset = line.offset + from;
    if (trimmed(line.text.substr(from, to - from), offset).empty()) return;
    faults.add(passage.place(offset), "text after the closing quotation mark",
               layout == Layout::Blanks ? "put a blank before it"
               : form.separator == ','  ? "put a comma before it"
                                        : "put the separator before it");
}

int Table::find_column(std::string_view name) const
{
    for (size_t i = 0; i < known->size(); i++)
        if (name == (*known)[i].name) return (int)i;
    return -1;
}

// The column that a word of the heading names. A word that the file's form gives to a column goes before the column's
// own name, which then stands for nothing.
int Table::column_of(std::string_view heading) const
{
    bool renamed = false;
    for (const CsvForm::Heading &h : form.headings) {
        if (heading == h.word) return find_column(h.column);
        renamed = renamed || heading == h.column;
    }
    return renamed ? -1 : find_column(heading);
}

// Words that the form gives to columns must stand in the heading, and the columns must be some of the table's.
void Table::check_headings(const std::vector<Cell> &heading, Faults &faults) const
{
    for (const CsvForm::Heading &h : form.headings) {
        const bool there = std::any_of(heading.begin(), heading.end(), [&](const Cell &c) { return c.text == h.word; });
        if (find_column(h.column) < 0)
            faults.add(h.at, "unknown column " + quote(h.column) + " in table " + label,
                       faults.wants(h.at) ? suggestion(h.column, column_names(), "known columns") : std::string());
        else if (!there)
            faults.add(h.at, quote(h.word) + " does not stand in the heading of table " + label,
                       "write it as the file does");
    }
}

std::vector<std::string> Table::column_names() const
{
    std::vector<std::string> names;
    for (const Column &column : *known) names.push_back(column.name);
    return names;
}

void Table::unknown_column(const Cell &cell, Faults &faults) const
{
    const Source at = passage.place(cell.offset);
    std::string remedy;
    const size_t other = layout == Layout::Commas ? cell.text.find_first_of(";,\t") : std::string_view::npos;
    if (other != std::string_view::npos) {
        const char mark = cell.text[other];
        remedy = std::string("write separator = \"") + (mark == '\t' ? "tab" : std::string(1, mark)) + "\" in [csv]";
    } else if (layout == Layout::Blanks && cell.text.find(',') != std::string_view::npos) {
        remedy = "separate the cells with blanks";
    } else if (faults.wants(at)) {
        remedy = suggestion(cell.text, column_names(), "known columns");
    }
    faults.add(at, "unknown column " + quote(cell.text) + " in table " + label, remedy);
}

void Table::read_heading(const std::vector<Cell> &heading, bool plan, Faults &faults)
{
    width = heading.size();
    heading_offset = heading[0].offset;
    for (size_t i = 0; i < width; i++) {
        const int column = column_of(heading[i].text);
        if (column < 0 && !form.headings.empty()) continue;
        if (column < 0) {
            unknown_column(heading[i], faults);
        } else if (position[(size_t)column] >= 0) {
            faults.add(passage.place(heading[i].offset),
                       "column " + std::string(heading[i].text) + " stands twice in table " + label,
                       "remove one of the two");
        } else {
            position[(size_t)column] = (int)i;
        }
    }
    check_headings(heading, faults);
    require_columns(plan, faults);
}

void Table::require_columns(bool plan, Faults &faults) const
{
    for (size_t i = 0; i < known->size(); i++) {
        const Column &column = (*known)[i];
        if (!column.required || position[i] >= 0 || (column.open && plan)) continue;
        faults.add(heading_place(), "column " + std::string(column.name) + " is missing in table " + label,
                   column.open ? "add it to the heading; only a plan (mode = \"propagation\") needs no values"
                               : "add it to the heading");
    }
}

// The cells of the last line as a row.
void Table::add_row(Faults &faults)
{
    row_begin.push_back(cells.size());
    row_size.push_back(cut.size());
    row_whole.push_back(cut.size() == width);
    cells.insert(cells.end(), cut.begin(), cut.end());
    if (cut.size() == width) return;
    const bool few = cut.size() < width;
    const Source at = passage.place(few ? cut[0].offset : cut[width].offset);
    faults.add(at, "row has " + count_of(cut.size(), "cell") + ", the heading has " + std::to_string(width),
               few ? "write - for a value that is not known" : "remove what is too much or name its column");
}

const Cell *Table::cell(size_t row, int column) const
{
    const int at = position[(size_t)column];
    if (at < 0 || (size_t)at >= row_size[row]) return nullptr;
    return &cells[row_begin[row] + (size_t)at];
}

bool Table::given(size_t row, int column) const
{
    const Cell *found = cell(row, column);
    return found && !unknown(found->text);
}

// No cell without quotation marks begins directly behind one.
bool Table::quoted(size_t row, int column) const
{
    const Cell *found = cell(row, column);
    return found && found->offset > 0 && passage.text()[found->offset - 1] == '"';
}

Source Table::place(size_t row, int column) const
{
    const Cell *found = column < 0 ? nullptr : cell(row, column);
    return passage.place(found ? found->offset : cells[row_begin[row]].offset);
}

} // namespace vornhost
