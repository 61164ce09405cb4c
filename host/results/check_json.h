// What a check says, for scripts and editors: faults of the input with their places, or the verdict.

#ifndef VORNHOST_CHECK_JSON_H
#define VORNHOST_CHECK_JSON_H

#include <string>

#include "host/input/faults.h"
#include "host/results/results.h"

namespace vornhost {

enum class CheckVerdict { BadInput, Refused, Unknown, CanBeAdjusted };

// As share/vorn-check-1.schema.json has it. With bad input the results need no more than program, version and file.
std::string check_json(CheckVerdict verdict, const Faults &faults, const Results &results);

} // namespace vornhost

#endif
