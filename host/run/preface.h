// What stands above a report of the engine where its names and units are not those of the network file.

#ifndef VORNHOST_PREFACE_H
#define VORNHOST_PREFACE_H

#include <string>

#include "host/input/model.h"

namespace vornhost {

// Empty where the report names and measures as the file does.
std::string report_preface(const Model &model);

} // namespace vornhost

#endif
