// The rows of tables of observations: all of them, or those of the own part where a file is read by parts.

#ifndef VORNHOST_OWN_ROWS_H
#define VORNHOST_OWN_ROWS_H

#include <functional>
#include <vector>

#include "host/input/network_tables.h"

namespace vornhost {

// Columns of a table: of the point at which its rows begin, and of the stand of the instrument there (-1: none).
struct RowStart {
    int point = 0, setup = -1, set = -1;
};

// Where a list says which rows of its table it holds.
struct RowNumbers {
    std::vector<int> &row;
    int &rows;
};

// Reads the whole rows of the table, if it is in the file; each call of `read` makes one record. Rows that begin at
// points of other parts are passed over, and the faults in them. Returns how many rows the table has.
size_t read_own_rows(Network &net, TableId id, const std::vector<Column> &columns, RowStart start, RowNumbers numbers,
                     const std::function<void(Row &)> &read);

template <class Record>
size_t read_own_rows(Network &net, TableId id, const std::vector<Column> &columns, RowStart start, List<Record> &list,
                     const std::function<void(Row &)> &read)
{
    return read_own_rows(net, id, columns, start, RowNumbers{list.row, list.rows}, read);
}

} // namespace vornhost

#endif
