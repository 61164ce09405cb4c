// Results as JSON. docs/program.md lists every key.

#ifndef VORNHOST_JSON_WRITER_H
#define VORNHOST_JSON_WRITER_H

#include <string>

#include "host/results/json_text.h"
#include "host/results/results.h"

namespace vornhost {

// A JSON object with a line end behind it, piece by piece. Numbers read back exactly; what is absent has no key; a
// number that is not finite is null; bytes that are not UTF-8 are replaced.
void write_json(const Results &results, const JsonText::Take &take);

// The same as one text.
std::string to_json(const Results &results);

} // namespace vornhost

#endif
