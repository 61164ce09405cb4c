// One run of the engine on a model.

#ifndef VORNHOST_RUNNER_H
#define VORNHOST_RUNNER_H

#include <stdio.h>

#include <string>
#include <vector>

#include "host/run/accounts.h"
#include "host/input/model.h"
#include "host/preparation/prepare.h"

namespace vornhost {

// What a network needs and this version cannot do, one clear line each; empty when all is there.
std::vector<std::string> not_available(const Model &model);

// Why a file that leaves values open for planning cannot be run in another mode; empty where it can.
std::string unknown_value(const Model &model);

enum class Stage { Refused, Loading, Solving, Done };

struct RunOutcome {
    Stage reached = Stage::Refused; // Done: adjusted; otherwise where it stopped
    int code = 0;                   // the engine's return code of that stage
    std::vector<std::string> words; // why it stopped, for the user: one sentence a line
    Prepared prepared;
    std::vector<Account> accounts;
    bool handed_over = true; // false: the engine stopped on the way; constants of groups are those before the run
    std::vector<std::string> spoilt; // files of the run with numbers that are not finite, one sentence each
    std::vector<std::string> lost;   // files of the run that the system did not take, one sentence each

    bool adjusted() const { return reached == Stage::Done; }
};

// Prepares the model, runs the engine with the solver and mode of the model and leaves the
// results in model.p.runresults (also after a failed run). The report goes to report; the
// notes of the preparation, the engine's lines and its questions go to feedback.
RunOutcome run(Model &model, FILE *report, Feedback &feedback);

// The same up to the check of the datum, without a solver: loads and numbers the unknowns.
RunOutcome check(Model &model, FILE *report, Feedback &feedback);

} // namespace vornhost

#endif
