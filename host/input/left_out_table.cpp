// Rows of observations that tests have left out, named by table and number of the row. The table says how many rows
// the other table had and which points the row names, so that it is not taken for another table's state.

#include "host/input/names.h"
#include "host/input/observation_rows.h"

namespace vornhost {

namespace {

enum { TABLE, ROW, OF, FROM, TO, AT, REASON };

const std::vector<Column> left_out_columns = {{"table", true}, {"row", true}, {"of", true}, {"from", true},
                                              {"to"},          {"at"},        {"reason"}};

constexpr int most_rows = 1000000000;

const Words &observation_tables()
{
    static const Words words = [] {
        Words all;
        for (int id = 0; id < TABLE_COUNT; id++)
            if (Model none; with_rows(none, (TableId)id, [](const auto &) {})) all.push_back({table_names[id], id});
        return all;
    }();
    return words;
}

// What a row says of the points that it names; "" where a column is empty.
bool names(const Network &net, const Row &row, const RowEnds &ends)
{
    const auto is = [&](int column, const std::string &record) {
        return row.name(column) == (record.empty() ? "" : full_name(net.model, record.c_str()));
    };
    return is(FROM, ends.from) && is(TO, ends.to) && is(AT, ends.at);
}

template <class Record> void leave_out_row(Network &net, Row &row, int id, List<Record> &list)
{
    const std::string table = table_names[id];
    const int number = row.whole(ROW, 0, 1, most_rows), of = row.whole(OF, 0, 1, most_rows);
    if (number == 0 || of == 0) return;
    if (!net.model.share.whole()) { // the row may be one of another part
        net.model.left_out.add({id, (size_t)number - 1, std::string(row.text(REASON)), Source()}, row.at());
        return;
    }
    if ((size_t)of != list.size() || number > of) {
        row.fault(OF,
                  "table " + table + " has " + std::to_string(list.size()) + " rows, not " + std::to_string(of) +
                      " as when this one was written",
                  "let the program write it again, or write no into the column use of the rows");
        return;
    }
    const size_t i = (size_t)number - 1;
    if (!names(net, row, ends_of(net.model, list.records[i]))) {
        row.fault(FROM, "row " + std::to_string(number) + " of table " + table + " is one between other points",
                  "let the program write this table again, or write no into the column use of the rows");
        return;
    }
    leave_out(list.records[i]);
    net.model.left_out.add({id, i, std::string(row.text(REASON)), list.where[i]}, row.at());
}

void read_left_out_row(Network &net, Row &row)
{
    if (!row.given(TABLE)) row.missing(TABLE, "write the name of a table of observations");
    const int id = row.given(TABLE) ? row.word(TABLE, -1, observation_tables()) : -1;
    for (const int column : {ROW, OF})
        if (!row.given(column)) row.missing(column, "write a whole number");
    if (id >= 0) with_rows(net.model, (TableId)id, [&](auto &list) { leave_out_row(net, row, id, list); });
}

} // namespace

RowEnds ends_of(const Model &model, const SightRow &row)
{
    const auto name = [&](int point) { return record_name(model, point); };
    if (row.third < 0) return {name(row.from), name(row.to), ""};
    return {name(row.to), name(row.third), name(row.from)};
}

RowEnds ends_of(const Model &model, const VectorRow &row)
{
    return {record_name(model, row.from), row.to < 0 ? "" : record_name(model, row.to), ""};
}

void read_left_out(Network &net) { read_rows(net, TABLE_LEFT_OUT, left_out_columns, read_left_out_row); }

} // namespace vornhost
