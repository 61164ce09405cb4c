// A draft in metres as DynaML, stations and measurements in one file: networks of vectors, observed points and straight
// distances in geocentric coordinates.

#ifndef VORNHOST_DYNAML_WRITER_H
#define VORNHOST_DYNAML_WRITER_H

#include <string>

#include "host/formats/draft.h"
#include "host/input/faults.h"

namespace vornhost {

// Empty after a fault: something has no words there. What is left out stands in the notes of the draft.
std::string write_dynaml(Draft &draft, Faults &faults);

} // namespace vornhost

#endif
