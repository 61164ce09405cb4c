// What is said of points that have no place: what was observed of them, what ties them to the rest, and what they need.

#ifndef VORNHOST_MISSING_WORDS_H
#define VORNHOST_MISSING_WORDS_H

#include <string>
#include <vector>

#include "host/own/numbers.h"
#include "host/preparation/start/start.h"

namespace vornhost {

std::string name_of(const Model &network, const Numbers &numbers, int point);

// "net.inp:12".
std::string where(const Model &network, const Numbers &numbers, int point);

// Keeps 20 lines and counts the others.
void cut(std::vector<std::string> *lines, const char *what);

// A line for each point, or for all of an island that hardly anything ties to the rest; then a remedy.
std::vector<std::string> missing_lines(const Model &network, const Numbers &numbers, const start::Start &start);

} // namespace vornhost

#endif
