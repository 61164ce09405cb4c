// What a network may ask for and this version cannot do.

#include "host/preparation/lump_checks.h"
#include "host/run/runner.h"
#include "host/preparation/simplex_input.h"

namespace vornhost {

std::vector<std::string> not_available(const Model &model)
{
    std::vector<std::string> lines;
    if (model.solver == Solver::Simplex) lines = not_for_simplex(model);
    if (model.p.lumpmethod == 9 && model.mode == Mode::Propagation && has_lumps(model))
        lines.push_back("a propagation of errors has no coordinates of its own for each epoch: write method = 1 in "
                        "[lumps] (" +
                        model.path + ")");
    return lines;
}

} // namespace vornhost
