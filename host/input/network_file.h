// Reads the network file NAME.inp: settings as TOML, lists as text tables that stand in
// the file or in comma-separated files of their own. docs/network-file.md is its reference.

#ifndef VORNHOST_NETWORK_FILE_H
#define VORNHOST_NETWORK_FILE_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/input/faults.h"
#include "host/input/model.h"

namespace vornhost {

// Fills the model from the file and attaches its arrays. Returns false, with every fault
// of the file in faults and the model empty, when something in it is wrong.
//
// The project is complete but for pfeedback and out. Paths of image files and of the
// connected net are absolute, so that a run may work in another folder. Codes of what
// the dimension excludes are CODE_ABSENT. A file that names no mode has the usual one.
//
// Of a file that is read by parts the model has all points, set-ups and settings, but only the rows of observations
// that begin at points of the own part (observed coordinates: of these points; angles: taken there), with the faults of
// these rows only. Rows that begin at no known point are those of part 0.
bool read_network(const std::string &path, Model &model, Faults &faults, Mode usual = Mode::Statistics,
                  FileShare share = FileShare());

// The same for the text of a network file that goes by that name. Files that it names are looked for in the folder of
// the name, which need not exist itself.
bool read_network_text(const std::string &name, std::string_view text, Model &model, Faults &faults,
                       Mode usual = Mode::Statistics);

// A text that was made of something else: of the file of another program, of arrays.
struct MadeText {
    std::string text;
    std::vector<Source> origins;      // of each line; file 0 is the name of the network, 1 the first of the sources
    std::vector<std::string> sources; // what else it was made of, as places name it
};

// The same for such a text: places are those of its origins.
bool read_network_text(const std::string &name, MadeText made, Model &model, Faults &faults);

class Table;

// Hands on the tables of the text of a network file as they are cut into cells; false after a fault of the file.
bool visit_tables(const std::string &name, std::string_view text, Faults &faults,
                  const std::function<void(const Table &)> &take);

} // namespace vornhost

#endif
