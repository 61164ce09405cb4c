// Lists of coordinates with a heading: names, coordinates, separated by commas, semicolons or tabs.

#ifndef VORNHOST_CSV_POINTS_H
#define VORNHOST_CSV_POINTS_H

#include "host/formats/record_account.h"
#include "host/formats/record_lines.h"

namespace vornhost {

// Whether a line is a heading that names points and their coordinates.
bool looks_like_csv_points(std::string_view heading);

// Reads the lines into the points of the draft; all faults in one pass. False after a fault.
bool read_csv_points(const RecordLines &file, RecordAccount &account, Draft &draft, Faults &faults);

} // namespace vornhost

#endif
