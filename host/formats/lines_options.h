// Options between the lines of a coded text: units, order, layout. They hold from their line on.

#ifndef VORNHOST_LINES_OPTIONS_H
#define VORNHOST_LINES_OPTIONS_H

#include "host/formats/draft_builder.h"
#include "host/formats/lines_text.h"

namespace vornhost {

struct LineOptions {
    bool space = false; // lines are laid out for three dimensions
    bool layout_given = false, units_given = false;
    bool east_first = false;    // coordinates
    bool from_first = false;    // names of angles are from-at-to
    bool delta = false;         // horizontal distance and height difference in place of slope and zenith angle
    bool gons = false;          // otherwise degrees-minutes-seconds
    const char *length = "m";   // unit, a word of the network file
    double multiplier = 1.0;    // of lengths and their standard deviations
    bool correlations = false;  // of vectors: standard deviations and correlations in place of covariances
    double vector_factor = 1.0; // of standard deviations of vectors
    bool skipping = false;      // between .DATA OFF and .DATA ON
    bool ended = false;         // behind .END
};

// Takes an option line; a fault where it is not known or changes what is not taken over.
void read_line_option(const CodedLine &line, LineOptions &options, DraftBuilder &builder);

} // namespace vornhost

#endif
