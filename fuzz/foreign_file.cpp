// The bytes are a file of another program. What is imported is written as a network file, which must be read without a
// fault; a network in JSON may have faults of its own.

#include <stdlib.h>

#include <algorithm>

#include "host/formats/import.h"
#include "host/formats/network_writer.h"
#include "host/input/network_file.h"
#include "scratch.h"

using namespace vornhost;

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (enter_scratch(), 1);
    (void)ready;
    write_bytes("net.gkf", data, size);
    Draft draft;
    Faults faults;
    if (recognise_file("net.gkf") == Format::json) {
        Model model;
        std::vector<std::string> notes;
        read_any_network("net.gkf", model, notes, faults);
        faults.lines();
        return 0;
    }
    if (!import_file("net.gkf", std::nullopt, draft, faults)) {
        faults.lines();
        return 0;
    }
    // A list of points alone is no network.
    const bool observed =
        std::any_of(draft.rows.begin(), draft.rows.end(), [](const auto &rows) { return !rows.empty(); });
    if (!observed) return 0;
    const std::string text = write_network(draft).text;
    write_bytes("net.inp", reinterpret_cast<const uint8_t *>(text.data()), text.size());
    Model model;
    if (read_network("net.inp", model, faults)) return 0;
    for (const std::string &line : faults.lines()) fprintf(stderr, "%s\n", line.c_str());
    abort();
}
