// The closures of a network as JSON, for the check and for the page.

#ifndef VORNHOST_CLOSURE_JSON_H
#define VORNHOST_CLOSURE_JSON_H

#include <nlohmann/json_fwd.hpp>

#include "host/results/results.h"

namespace vornhost {

nlohmann::ordered_json closures_json(const Results &results);

} // namespace vornhost

#endif
