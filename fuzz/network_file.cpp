// The bytes are the network file; the whole way from the file to the model is taken.
// A network without faults and of modest size is adjusted as well: by its own solver, and by
// one of the engine where it names none.

#include "host/input/network_file.h"
#include "scratch.h"

using namespace vornhost;

static void adjust(Model &model, Solver solver)
{
    constexpr size_t most = 40;
    if (model.stations.size() + model.targets.size() > most) return;
    model.p.itmax = model.p.itmax < 5 ? model.p.itmax : 5;
    adjust_silently(model, solver);
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (enter_scratch(), 1);
    (void)ready;
    write_bytes("net.inp", data, size);
    Model model;
    Faults faults;
    if (!read_network("net.inp", model, faults)) {
        faults.lines();
        return 0;
    }
    const bool own = model.solver == Solver::Sparse;
    adjust(model, model.solver);
    Model again;
    if (own && read_network("net.inp", again, faults)) adjust(again, Solver::Compact);
    return 0;
}
