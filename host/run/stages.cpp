// What a network may ask for and this version cannot do.

#include "host/preparation/lump_checks.h"
#include "host/run/runner.h"
#include "host/preparation/simplex_input.h"

namespace vornhost {

namespace {

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
    for (const std::string &text : found)
        if (!text.empty()) return text;
    return {};
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
    if (const std::string own = own_matter(model); !own.empty())
        lines.push_back("the engine does not take " + own + ": choose the solver sparse");
    return lines;
}

} // namespace vornhost
