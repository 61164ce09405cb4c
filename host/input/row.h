// One row of a table, read into the values of a record. Each getter reports what is
// wrong with its cell and then returns the value for a cell that is not known.

#ifndef VORNHOST_ROW_H
#define VORNHOST_ROW_H

#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"
#include "host/input/table.h"

namespace vornhost {

struct Word {
    const char *word;
    int value;
};
using Words = std::vector<Word>;

class Row {
public:
    Row(const Table &whole, size_t number, Faults &all) : table(whole), index(number), faults(all) {}

    bool given(int column) const { return table.given(index, column); }
    bool has_cell(int column) const { return table.cell(index, column) != nullptr; }
    std::string_view text(int column) const; // empty when it is not known
    std::string figures(int column) const;   // the same with a decimal point, whatever the file has
    std::string_view name(int column) const; // the same, but "-" in quotation marks is a name
    Source at(int column) const { return table.place(index, column); }
    Source at() const { return table.place(index, -1); }

    double number(int column, double otherwise);
    double needed(int column);                     // a number that must be known
    double positive(int column, double otherwise); // above 0
    double length(int column, double otherwise);   // within the largest length
    int whole(int column, int otherwise, int least, int most);
    bool yes(int column, bool otherwise);

    // One of the words; their numbers, from least to most, may be written as well.
    int word(int column, int otherwise, const Words &words);

    // The fault of a cell, and of a cell that must be known and is not.
    void fault(int column, const std::string &what, const std::string &remedy);
    void missing(int column, const char *remedy);

    // What the cell holds, for a message: "12,5" in column value.
    std::string cell(int column) const;

private:
    bool read(int column, double &value); // false when it is not known or no number

    const Table &table;
    size_t index;
    Faults &faults;
};

constexpr double largest_length = 1e12; // in any unit; what is larger was mistyped

} // namespace vornhost

#endif
