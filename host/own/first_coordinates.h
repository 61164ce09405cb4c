// The numbers of a network with first values of all that the file does not give, for the program's own adjustment.

#ifndef VORNHOST_FIRST_COORDINATES_H
#define VORNHOST_FIRST_COORDINATES_H

#include <string>
#include <vector>

#include "host/input/model.h"
#include "host/own/numbers.h"

namespace vornhost {

struct FirstNumbers {
    Numbers numbers;
    std::vector<std::string> notes; // what was computed, and what does not fit; one line each
    std::vector<std::string> words; // why not all could be, for the user; empty when nothing is missing
};

// Records of used points with status compute get their first coordinates and status on. They come from observed values,
// and so are not made for planned networks. Where no way of the program's own leads on, the engine's is tried.
// Networks that ranks have read by parts have coordinates.
FirstNumbers make_first_numbers(Model &network, const Reference *reference, vornadjust::Ranks *ranks = nullptr);

} // namespace vornhost

#endif
