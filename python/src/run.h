// A run in a thread of its own, while the thread that asked for it calls Python back and listens for Ctrl-C.

#ifndef VORNPYTHON_RUN_H
#define VORNPYTHON_RUN_H

#include <pybind11/pybind11.h>

#include "vorn/network.h"

namespace vornpython {

// Adjusts the network without the interpreter's lock. `progress` is None or takes a step and a share; it is called by
// the calling thread. What it raises, and KeyboardInterrupt, ends the run and goes on to the caller.
vornapi::Result run(const vornapi::Network &network, vornapi::Options options, const pybind11::object &progress);

} // namespace vornpython

#endif
