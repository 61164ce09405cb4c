// A network file as JSON, whole: its sections as objects, its tables as arrays of objects with a key a column, those
// that stand in files of their own too. Numbers keep their values to the last digit, words and names are texts, and
// what a table leaves open is left out.
//
//   {"vorn_network": 1, "run": {"dimension": 2}, "tables": {"distances": [{"from": "A", "to": "P", "value": 12.5}]}}

#ifndef VORNHOST_NETWORK_JSON_H
#define VORNHOST_NETWORK_JSON_H

#include <string>
#include <string_view>

#include "host/input/faults.h"
#include "host/input/network_file.h"

namespace vornhost {

// Of the text of a network file by that name; empty after a fault.
std::string write_network_json(const std::string &name, std::string_view text, Faults &faults);

// The network file that such a JSON is; false after a fault. Places in tables count their rows.
bool read_network_json(const std::string &path, MadeText &made, Faults &faults);

} // namespace vornhost

#endif
