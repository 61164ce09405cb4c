// The columns of observations that say what a row belongs to and what it is called: id, remark, covariance, setup, set.

#ifndef VORNHOST_NOTE_COLUMNS_H
#define VORNHOST_NOTE_COLUMNS_H

#include "host/input/network_tables.h"

namespace vornhost {

constexpr size_t longest_word = 40; // bytes of a set-up, set or covariance

// Where they stand in the list of columns of a table; -1 for those that it does not have.
struct NoteColumns {
    int id = -1, remark = -1, covariance = -1, setup = -1, set = -1;
};

// Whether the row says a column that its table may not have.
inline bool says(const Row &row, int column) { return column >= 0 && row.given(column); }

// Reads the notes of the row that comes next in the list. station is the number of the point at which the instrument
// stood. Returns the set-up of the row, -1 where it has none of its own.
int read_notes(Network &net, Row &row, const NoteColumns &columns, int station, RowNotes &notes, size_t index);

// Numbers the set-up and the set of a row that is passed over, without faults, so that all parts of a file number them
// alike.
void know_stand(Network &net, const Row &row, int station, int setup_column, int set_column);

// Index of a set-up of a station in Model::setups, made with defaults where it is new. The empty word stands for the
// set-up that rows without one belong to.
int setup_of(Network &net, int station, std::string_view word, Source at);

// The set-up of rows of a station that name none, -1 where the table setups does not describe it.
int own_setup(const Network &net, int station);

// Word of a cell; a fault when it is too long or holds control characters.
std::string_view read_word(Row &row, int column);

} // namespace vornhost

#endif
