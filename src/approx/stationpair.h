// Two stations for a start in a frame of their own.

#ifndef VORN_STATIONPAIR_H
#define VORN_STATIONPAIR_H

namespace vornengine {

struct stationpair {
    int it1, it2;  // -1: none
    int ncommon;   // common shots
    int ibar;      // index in dist of a scale bar for the frame, -1 none
    int nknown[3]; // common targets with known x1, x2, x3; of pairs that sighted each other
};

} // namespace vornengine

#endif
