// Connected nets of a run beyond what the engine sees to: a run does not go on without an
// import that was asked for, and the file of an export is whole or stays as it was.

#ifndef VORNHOST_CONNECTED_NET_H
#define VORNHOST_CONNECTED_NET_H

#include <optional>
#include <string>
#include <vector>

#include "host/input/model.h"

namespace vornhost {

// Why the network cannot import what it asks for, one sentence a line; empty when it can.
std::vector<std::string> import_faults(const Model &model);

// What an import takes away from the network, for the user; empty when nothing.
std::string import_note(const Model &model);

// Whether a file that the engine wrote, names in the first 8 characters of its lines, has numbers
// that are finite behind its heading; true when there is no such file.
bool finite_file(const std::string &path);

class ConnectedNet {
public:
    // Before the run: keeps the file that an export will write over.
    explicit ConnectedNet(const Model &model);

    // A line of the engine. Takes no memory: it is called from within the engine.
    void hear(const char *line);

    // The engine's words when it has turned the import off or takes only a part of it; empty otherwise.
    std::string import_refusal() const;

    // After the run: puts back the earlier file when the engine did not write a whole one.
    // Returns a note for the user, or nothing.
    std::string close(bool adjusted);

    // The numbers to export were not all finite; their file was not kept.
    bool spoilt() const { return not_finite; }

    // The system did not take a file that the run had to write.
    bool lost() const { return refused; }

private:
    std::string why_not(bool adjusted) const;
    void put_back() const;

    int exported;  // points to export
    int imported;  // points to import
    int dimension; // of the network
    Solver solver;
    Mode mode;
    std::string path; // of the export's file, in the working folder
    std::optional<std::string> earlier;
    char refusal[256] = ""; // the engine's line
    bool no_redundancy = false, incomplete = false, not_opened = false, cut = false;
    bool refused = false; // by the system
    bool not_finite = false;
};

} // namespace vornhost

#endif
