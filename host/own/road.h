// A run of the program's own adjustment on a network.

#ifndef VORNHOST_ROAD_H
#define VORNHOST_ROAD_H

#include <memory>
#include <string>
#include <vector>

#include "adjust/adjustment.h"
#include "host/earth/reference.h"
#include "host/own/numbers.h"
#include "host/results/results.h"
#include "host/preparation/closures/closures.h"
#include "host/run/run_watch.h"
#include "host/run/runner.h"

namespace vornhost {

// Why a run ended; the first means that the network was adjusted.
enum class Ending {
    adjusted,
    not_available,
    bad_import,
    no_first_coordinates,
    no_observations,
    bad_covariance,
    no_datum,
    undetermined,
    singular,
    no_convergence,
    stopped // by the watch
};

struct OwnOutcome {
    RunOutcome run; // words, notes, accounts, lost files; reached is Done or Refused
    Ending ending = Ending::not_available;
    std::string datum;  // what the search for open motions found, one line; empty when it was not made
    double seconds = 0; // of the computation
    Numbers numbers;
    std::vector<closures::Closures> closures;   // before the adjustment
    std::shared_ptr<const Reference> reference; // of the coordinates; null where the file gives none
    vornadjust::Outcome adjustment;
    std::vector<SnoopStep> snooping;
    std::vector<double> weights; // [observations] of robust estimation; empty for least squares
    std::vector<ComponentResult> components;

    vornadjust::Ranks *ranks = nullptr; // that have the other rows of the adjustment, and stand by; null: all are here

    bool adjusted() const { return ending == Ending::adjusted; }
};

// Adjusts the network; tells notes and progress to feedback. A check iterates and judges as a run does, but makes no
// precision and no files. Records of points get first coordinates, and those of observations that take no part are
// deselected. A run that was stopped has written nothing. Where processes share an adjusted network, the run returns on
// all of them: those other than the first then stand by to serve their rows (shared_rows.h).
OwnOutcome run_own(Model &network, Feedback &feedback, bool check = false, const RunWatch &watch = {});

} // namespace vornhost

#endif
