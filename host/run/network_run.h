// A run of a network by whichever road its solver names, with its one result.

#ifndef VORNHOST_NETWORK_RUN_H
#define VORNHOST_NETWORK_RUN_H

#include <stdio.h>

#include <string>

#include "host/results/results.h"
#include "host/run/run_watch.h"
#include "host/run/runner.h"

namespace vornhost {

struct NetworkRun {
    RunOutcome outcome;
    Results results;
    bool stopped = false; // by the watch: there is neither outcome nor result, and nothing was written
};

// Whether residuals are a list, or made while somebody goes through them; the model has then to last as long.
enum class Rows { kept, on_demand };

// "2026-03-31 14:05 UTC".
std::string utc_now();

// Adjusts the network. The report goes to report, notes and progress to feedback. Results of the engine are taken out
// of the model and released.
NetworkRun run_network(Model &model, FILE *report, Feedback &feedback, const std::string &version,
                       const RunWatch &watch = {}, Rows rows = Rows::kept);

// Says what the adjustment would be: the solver sparse iterates and judges as a run does, the engine's solvers go up to
// the check of the datum.
NetworkRun check_network(Model &model, FILE *report, Feedback &feedback, const std::string &version,
                         const RunWatch &watch = {});

} // namespace vornhost

#endif
