#include "host/formats/csv_points.h"

#include <algorithm>
#include <map>

#include "host/formats/field_book_draft.h"
#include "host/input/number.h"

namespace vornhost {

namespace {

enum Column { column_name, column_x, column_y, column_z, columns_known };

// Words of headings; what stands in brackets behind them is a unit.
const std::map<std::string, Column> words = {{"name", column_name},
                                             {"point", column_name},
                                             {"id", column_name},
                                             {"point id", column_name},
                                             {"pointid", column_name},
                                             {"point name", column_name},
                                             {"number", column_name},
                                             {"nr", column_name},
                                             {"no", column_name},
                                             {"punkt", column_name},
                                             {"punktnummer", column_name},
                                             {"x", column_x},
                                             {"north", column_x},
                                             {"northing", column_x},
                                             {"n", column_x},
                                             {"hochwert", column_x},
                                             {"y", column_y},
                                             {"east", column_y},
                                             {"easting", column_y},
                                             {"e", column_y},
                                             {"rechtswert", column_y},
                                             {"z", column_z},
                                             {"height", column_z},
                                             {"h", column_z},
                                             {"elevation", column_z},
                                             {"elev", column_z},
                                             {"hoehe", column_z},
                                             {"h\xC3\xB6he", column_z}};

char separator_of(std::string_view heading)
{
    for (const char c : {'\t', ';', ','})
        if (heading.find(c) != std::string_view::npos) return c;
    return '\0';
}

struct Cell {
    std::string text;
    size_t column; // in the line, from 0
};

// Cells in quotation marks may hold separators, and a quotation mark written twice.
std::vector<Cell> cells_of(std::string_view line, char separator)
{
    std::vector<Cell> cells(1, {"", 0});
    bool quoted = false;
    for (size_t i = 0; i < line.size(); i++) {
        Cell &cell = cells.back();
        if (line[i] == '"') {
            if (quoted && i + 1 < line.size() && line[i + 1] == '"')
                cell.text += line[i++];
            else
                quoted = !quoted;
        } else if (line[i] == separator && !quoted)
            cells.push_back({"", i + 1});
        else
            cell.text += line[i];
    }
    for (Cell &cell : cells) cell.text = std::string(trimmed(cell.text));
    return cells;
}

std::string plain(std::string text)
{
    if (const size_t bracket = text.find_first_of("[("); bracket != std::string::npos) text.erase(bracket);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? (char)(c - 'A' + 'a') : c; });
    return std::string(trimmed(text));
}

// Number of each known column in the heading, -1.
using Places = std::array<int, columns_known>;

Places places_of(const std::vector<Cell> &heading)
{
    Places places = {-1, -1, -1, -1};
    for (size_t i = 0; i < heading.size(); i++)
        if (const auto word = words.find(plain(heading[i].text)); word != words.end() && places[word->second] < 0)
            places[word->second] = (int)i;
    return places;
}

bool is_list(const Places &places)
{
    const bool plane = places[column_x] >= 0 && places[column_y] >= 0;
    return places[column_name] >= 0 && (plane || places[column_z] >= 0);
}

// Reads one list; the members are what its steps share.
class ListReader {
public:
    ListReader(const RecordLines &its_file, RecordAccount &its_account, Draft &its_draft, Faults &all)
        : file(its_file), account(its_account), draft(its_draft), faults(all)
    {
    }

    bool read()
    {
        bool headed = false;
        for (const RecordLine &line : file.lines()) {
            if (trimmed(line.text).empty()) continue;
            if (headed)
                read_row(line);
            else if (!read_heading(line))
                return false;
            headed = true;
        }
        if (!faults.empty()) return false;
        const bool heights = places[column_z] >= 0, plane = places[column_x] >= 0 && places[column_y] >= 0;
        draft.dimension = !plane ? 1 : heights ? 3 : 2;
        draft.units.length = "m";
        draft.units.sigma_length = "mm";
        add_draft_points(points, account, draft);
        return true;
    }

private:
    bool read_heading(const RecordLine &line)
    {
        separator = separator_of(line.text);
        const std::vector<Cell> heading = cells_of(line.text, separator);
        width = heading.size();
        places = places_of(heading);
        if (!is_list(places))
            faults.add(file.place(line, 0), "the heading does not name points and coordinates",
                       "write one like name,easting,northing,height");
        return is_list(places);
    }

    void read_row(const RecordLine &line)
    {
        account.read_one();
        const std::vector<Cell> cells = cells_of(line.text, separator);
        if (cells.size() != width) {
            faults.add(file.place(line, 0),
                       "the row has " + std::to_string(cells.size()) + " cells, the heading " + std::to_string(width),
                       "write a cell for each, with quotation marks around one that holds the separator");
            return;
        }
        DraftPoint point;
        const Cell &name = cells[(size_t)places[column_name]];
        point.name = point_name(name.text, file.place(line, name.column), faults);
        point.where = file.place(line);
        for (const Column axis : {column_x, column_y, column_z})
            if (places[axis] >= 0) point.value[axis - column_x] = number(line, cells[(size_t)places[axis]]);
        points.push_back(std::move(point));
    }

    // A decimal comma where commas do not separate cells.
    MaybeNumber number(const RecordLine &line, const Cell &cell)
    {
        std::string text = cell.text;
        if (text.empty() || text == "-") return std::nullopt;
        if (separator != ',' && text.find('.') == std::string::npos) std::replace(text.begin(), text.end(), ',', '.');
        double value = 0.0;
        if (read_number(text, value) == Reading::Number) return value;
        faults.add(file.place(line, cell.column), quote(cell.text) + " is not a number", number_remedy(cell.text));
        return std::nullopt;
    }

    const RecordLines &file;
    RecordAccount &account;
    Draft &draft;
    Faults &faults;
    char separator = ',';
    size_t width = 0;
    Places places = {-1, -1, -1, -1};
    std::vector<DraftPoint> points;
};

} // namespace

bool looks_like_csv_points(std::string_view heading)
{
    const char separator = separator_of(heading);
    return separator && is_list(places_of(cells_of(heading, separator)));
}

bool read_csv_points(const RecordLines &file, RecordAccount &account, Draft &draft, Faults &faults)
{
    return ListReader(file, account, draft, faults).read();
}

} // namespace vornhost
