// What a network may ask for and this version cannot do.

#include "host/input/faults.h"
#include "host/input/image_file.h"
#include "host/input/names.h"
#include "host/preparation/lump_checks.h"
#include "host/run/runner.h"
#include "host/preparation/simplex_input.h"

namespace vornhost {

namespace {

// The first point of a list that goes to a connected net or comes from one under a name that the engine does not hold.
template <class Record> std::string connected_by_key(const Model &model, const List<Record> &list)
{
    for (const Record &r : list.records)
        if (r.status > 0 && r.iconn > 0 && full_name(model, r.name).size() > name_width)
            return shown_name(model, r.name);
    return {};
}

// What the files that the engine itself reads and writes have no room for.
void check_names(const Model &model, std::vector<std::string> &lines)
{
    std::string connected = connected_by_key(model, model.stations);
    if (connected.empty()) connected = connected_by_key(model, model.targets);
    if (!connected.empty())
        lines.push_back("the connected nets of the engine hold names of 8 bytes, and " + quote(connected) +
                        " is longer: choose the solver sparse, or shorten it (" + model.path + ")");
    for (const image_input &image : model.images.records)
        if (image.status > 0 && is_wide_image_file(image.file))
            return lines.push_back("the engine reads image files whose names stand in the first 8 places only: choose "
                                   "the solver sparse (" +
                                   printable(image.file) + ")");
}

} // namespace

std::vector<std::string> not_available(const Model &model)
{
    std::vector<std::string> lines;
    if (model.solver == Solver::Simplex) lines = not_for_simplex(model);
    if (model.p.lumpmethod == 9 && model.mode == Mode::Propagation && has_lumps(model))
        lines.push_back("a propagation of errors has no coordinates of its own for each epoch: write method = 1 in "
                        "[lumps] (" +
                        model.path + ")");
    check_names(model, lines);
    return lines;
}

} // namespace vornhost
