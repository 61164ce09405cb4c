// A book of levelling: lines of stations, each with readings back and fore. Lengths in metres.

#ifndef VORNHOST_LEVEL_BOOK_H
#define VORNHOST_LEVEL_BOOK_H

#include <string>
#include <vector>

#include "host/formats/draft.h"
#include "host/formats/import_options.h"
#include "host/formats/record_account.h"
#include "host/input/faults.h"

namespace vornhost {

struct LevelReading {
    std::string point; // empty: a turning point without a name
    double value = 0.0;
    MaybeNumber distance; // from the level to the staff
    Source where;
};

struct LevelStation {
    std::vector<LevelReading> back, fore, side;

    bool empty() const { return back.empty() && fore.empty() && side.empty(); }
};

struct LevelLine {
    std::vector<LevelStation> stations;
    Source where;
};

struct LevelBook {
    std::vector<LevelLine> lines;
    std::vector<DraftPoint> points; // given heights
};

// Makes height differences of the stations: mean of the readings back less that of the readings fore. Turning points
// that come again in another line are points of their own there. False after a fault.
bool draft_level_book(LevelBook book, const ImportOptions &options, RecordAccount &account, Draft &draft,
                      Faults &faults);

} // namespace vornhost

#endif
