#include "host/input/own_rows.h"

#include "host/input/note_columns.h"

namespace vornhost {

namespace {

// Whether a row belongs to the own part; of others the set-up and the set are known all the same.
bool is_own(Network &net, const Row &row, RowStart start)
{
    const Model &model = net.model;
    const int point = net.points.find(row.name(start.point));
    const bool known = point >= 0 && (size_t)point < model.part_of.size();
    if ((known ? model.part_of[(size_t)point] : 0) == model.share.own) return true;
    know_stand(net, row, point, start.setup, start.set);
    return false;
}

} // namespace

size_t read_own_rows(Network &net, TableId id, const std::vector<Column> &columns, RowStart start, RowNumbers numbers,
                     const std::function<void(Row &)> &read)
{
    Table *table = net.tables[id].get();
    if (!table) return 0;
    const bool whole = net.model.share.whole();
    Row row(*table, 0, net.faults);
    const Table::TakeRow take = [&](size_t number) {
        if (!table->whole(0)) return;
        read(row);
        if (!whole) numbers.row.push_back((int)number);
    };
    const Table::IsWanted wanted = [&] { return is_own(net, row, start); };
    const size_t rows = net.each_row(*table, columns, take, whole ? Table::IsWanted() : wanted);
    if (!whole) numbers.rows = (int)rows;
    return rows;
}

} // namespace vornhost
