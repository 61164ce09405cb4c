#include "host/input/row.h"

#include <cmath>

#include "host/input/number.h"

namespace vornhost {

std::string_view Row::text(int column) const { return given(column) ? table.cell(index, column)->text : ""; }

// A point in a file of decimal commas groups digits, or was never meant.
std::string Row::figures(int column) const
{
    std::string figures(text(column));
    if (table.decimal() != ',') return figures;
    for (char &c : figures) c = c == ',' ? '.' : c == '.' ? ',' : c;
    return figures;
}

std::string_view Row::name(int column) const
{
    return table.quoted(index, column) ? table.cell(index, column)->text : text(column);
}

std::string Row::cell(int column) const { return quote(name(column)) + " in column " + table.column_name(column); }

void Row::fault(int column, const std::string &what, const std::string &remedy)
{
    faults.add(at(column), what, remedy);
}

void Row::missing(int column, const char *remedy)
{
    // A column that is not there at all has its own fault at the heading.
    if (!has_cell(column)) return;
    fault(column, std::string(table.column_name(column)) + " is not known in table " + table.name(), remedy);
}

bool Row::read(int column, double &value)
{
    if (!given(column)) return false;
    const std::string_view written = text(column);
    switch (table.decimal() == ',' ? read_number(figures(column), value) : read_number(written, value)) {
    case Reading::Number: return true;
    case Reading::NotFinite: fault(column, cell(column) + " is not a finite number", "write a number like 12.5"); break;
    case Reading::OutOfRange: fault(column, cell(column) + " is too large or too small", "check its exponent"); break;
    case Reading::None:
        fault(column, quote(written) + " is not a number in column " + table.column_name(column),
              table.decimal() == ',' ? "write a number like 12,5" : number_remedy(written));
    }
    return false;
}

double Row::number(int column, double otherwise)
{
    double value = otherwise;
    return read(column, value) ? value : otherwise;
}

double Row::needed(int column)
{
    if (!given(column)) missing(column, "write a number");
    return number(column, 0.0);
}

double Row::positive(int column, double otherwise)
{
    double value = otherwise;
    if (!read(column, value) || value > 0.0) return value;
    fault(column, cell(column) + " is not above 0", "write a number above 0");
    return otherwise;
}

double Row::length(int column, double otherwise)
{
    double value = otherwise;
    if (!read(column, value) || std::fabs(value) <= largest_length) return value;
    fault(column, cell(column) + " is out of range", "lengths and coordinates go from -1e12 to 1e12");
    return otherwise;
}

int Row::whole(int column, int otherwise, int least, int most)
{
    if (!given(column)) return otherwise;
    int value = 0;
    const Reading result = read_whole(text(column), value);
    const std::string range = "from " + std::to_string(least) + " to " + std::to_string(most);
    if (result == Reading::None) {
        fault(column, quote(text(column)) + " is not a whole number in column " + table.column_name(column),
              "write a whole number " + range);
    } else if (result != Reading::Number || value < least || value > most) {
        fault(column, cell(column) + " is out of range", "write a whole number " + range);
    } else {
        return value;
    }
    return otherwise;
}

bool Row::yes(int column, bool otherwise)
{
    if (!given(column)) return otherwise;
    if (text(column) == "yes") return true;
    if (text(column) == "no") return false;
    fault(column, cell(column) + " is not known", "write yes or no");
    return otherwise;
}

int Row::word(int column, int otherwise, const Words &words)
{
    if (!given(column)) return otherwise;
    const std::string_view written = text(column);
    int number = 0;
    const bool numeric = read_whole(written, number) == Reading::Number;
    for (const Word &word : words)
        if (written == word.word || (numeric && number == word.value)) return word.value;
    std::string remedy;
    if (faults.wants(at(column))) {
        std::vector<std::string> known;
        for (const Word &word : words) known.push_back(word.word);
        remedy = suggestion(written, known, "write one of");
    }
    fault(column, cell(column) + " is not known", remedy);
    return otherwise;
}

} // namespace vornhost
