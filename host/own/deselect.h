// Rows of the tables that a run leaves out.

#ifndef VORNHOST_DESELECT_H
#define VORNHOST_DESELECT_H

#include <optional>

#include "host/input/network_tables.h"
#include "host/own/numbers.h"

namespace vornhost {

// The table of observations that an item is a row of.
std::optional<TableId> table_of(const ItemPlace &item);

// Accounts name what is deselected. Lines of image files have an account of their own; weighted and imported values
// have none. Returns the place of the row, line 0 where there is none.
Source deselect(Model &network, const ItemPlace &item);

} // namespace vornhost

#endif
