// Foreign files as drafts, whatever their format.

#ifndef VORNHOST_IMPORT_H
#define VORNHOST_IMPORT_H

#include <optional>
#include <string>
#include <vector>

#include "host/formats/draft.h"
#include "host/formats/import_options.h"
#include "host/input/faults.h"
#include "host/input/model.h"
#include "host/input/network_file.h"

namespace vornhost {

// Reads the file; its format, any but JSON, is recognised from the content where none is named. False after a fault.
bool import_file(const std::string &path, const ImportOptions &options, Draft &draft, Faults &faults);

// The text of the network file that is made of such a file, and of one in JSON. The lines of notes say what was left
// out or assumed.
bool import_text(const std::string &path, const ImportOptions &options, MadeText &made, std::vector<std::string> &notes,
                 Faults &faults);

// Reads a network file, or a file of another program as the network file that would be made of it. The lines of notes
// say what was left out or assumed then.
bool read_any_network(const std::string &path, Model &model, std::vector<std::string> &notes, Faults &faults,
                      const ImportOptions &options = ImportOptions(), Mode usual = Mode::Statistics);

} // namespace vornhost

#endif
