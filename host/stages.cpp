// What a network may ask for and this version cannot do.

#include "lump_checks.h"
#include "runner.h"
#include "simplex_input.h"

namespace vornhost {

std::vector<std::string> not_available(const Model &model)
{
    std::vector<std::string> lines;
    if (model.solver == Solver::Simplex) lines = not_for_simplex(model);
    if (model.p.lumpmethod == 9 && has_lumps(model))
        lines.push_back("lumps are not compared after the adjustment by this version: write method = 1 in [lumps] (" +
                        model.path + ")");
    return lines;
}

} // namespace vornhost
