// What a network may ask for and this version cannot do.

#include <cmath>

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

// "directions in their column set (net.inp:12)" of the first row that says something; empty where none does.
std::string first_said(const Model &model, const std::vector<Source> &where, const std::vector<int> &notes,
                       const std::string &what)
{
    for (size_t i = 0; i < notes.size(); i++)
        if (notes[i] >= 0) return what + " (" + place(model, where[i]) + ")";
    return {};
}

// What only the program's own adjustment takes, the first of it in the file; empty where there is nothing.
std::string own_matter(const Model &m)
{
    const auto table = [&](const auto &list, const char *name) {
        return list.size() > 0 ? std::string("table ") + name + " (" + place(m, list.where[0]) + ")" : std::string();
    };
    std::vector<std::string> found = {
        m.crs.given() ? "[crs] (" + m.path + ")" : std::string(),
        table(m.setups, "setups"),
        table(m.horizontal_distances, "horizontal_distances"),
        table(m.bearings, "bearings"),
        table(m.angles, "angles"),
        table(m.coordinates, "coordinates"),
        table(m.coordinate_differences, "coordinate_differences"),
        table(m.scale_bars, "scale_bars"),
        first_said(m, m.baselines.where, m.baselines.notes.covariance, "column covariance of table baselines")};
    const std::pair<const List<measure_input> *, const char *> lists[] = {{&m.distances, "distances"},
                                                                          {&m.heightdiffs, "height_differences"},
                                                                          {&m.directions, "directions"},
                                                                          {&m.verticals, "vertical_angles"},
                                                                          {&m.azimuths, "azimuths"}};
    for (const auto &[list, name] : lists) {
        found.push_back(first_said(m, list->where, list->notes.set, std::string("column set of table ") + name));
        found.push_back(
            first_said(m, list->where, list->notes.covariance, std::string("column covariance of table ") + name));
    }
    for (size_t i = 0; i < m.verticals.size(); i++)
        if (!std::isnan(note_at(m.verticals.notes.refraction, i, unknown_note))) {
            found.push_back("column refraction of table vertical_angles (" + place(m, m.verticals.where[i]) + ")");
            break;
        }
    for (size_t i = 0; i < m.baselines.size(); i++)
        if (note_at(m.baselines.notes.h1, i, 0.0) != 0.0 || note_at(m.baselines.notes.h2, i, 0.0) != 0.0) {
            found.push_back("heights of antennas in table baselines (" + place(m, m.baselines.where[i]) + ")");
            break;
        }
    if (m.centring.any()) found.push_back("centring in [sigma] (" + m.path + ")");
    for (const std::string &text : found)
        if (!text.empty()) return text;
    return {};
}

} // namespace

std::string unknown_value(const Model &model)
{
    if (model.mode == Mode::Propagation || model.unknown_value.line == 0) return {};
    return "a value is not known (" + place(model, model.unknown_value) +
           "): write it, or choose the mode propagation, which needs none";
}

std::vector<std::string> not_available(const Model &model)
{
    std::vector<std::string> lines;
    if (model.solver == Solver::Simplex) lines = not_for_simplex(model);
    if (model.p.lumpmethod == 9 && model.mode == Mode::Propagation && has_lumps(model))
        lines.push_back("a propagation of errors has no coordinates of its own for each epoch: write method = 1 in "
                        "[lumps] (" +
                        model.path + ")");
    check_names(model, lines);
    if (const std::string unknown = unknown_value(model); !unknown.empty()) lines.push_back(unknown);
    if (const std::string own = own_matter(model); !own.empty())
        lines.push_back("the engine does not take " + own + ": choose the solver sparse");
    return lines;
}

} // namespace vornhost
