// Files of DynAdjust in fixed columns: stations (.stn) and measurements (.msr), versions 1.00, 3.00 and 3.01.

#ifndef VORNHOST_DNA_COLUMNS_H
#define VORNHOST_DNA_COLUMNS_H

#include "host/formats/dna.h"
#include "host/input/text_file.h"

namespace vornhost {

// Adds what a file holds. False after a fault.
bool read_dna_columns(const TextFile &file, DnaNetwork &network, Faults &faults);

} // namespace vornhost

#endif
