// Observations from a field book: one direction, zenith angle and distance a target, from both faces and all sets.

#ifndef VORNHOST_FIELD_BOOK_DRAFT_H
#define VORNHOST_FIELD_BOOK_DRAFT_H

#include "host/formats/field_book.h"
#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/input/faults.h"

namespace vornhost {

// Makes the draft of the book. What the instrument's errors and the scatter of the sets are is noted for each set-up.
// False after a fault.
bool draft_field_book(const FieldBook &book, const ImportOptions &options, RecordAccount &account, Draft &draft,
                      Faults &faults);

// Units of a draft with angles of this kind.
DraftUnits field_units(CircleUnit unit);

// The points of the draft: those that are given with coordinates, and all that observations name. Coordinates that
// come again and differ are left out with a note; points that no observation names are off where there are any.
void add_draft_points(const std::vector<DraftPoint> &given, RecordAccount &account, Draft &draft);

} // namespace vornhost

#endif
