// A network of which every process has read a part (host/input/file_share.h): what the processes tell one another of
// it, beside what the adjustment does.
//
// All have the same points, stands, set-ups and unknowns, under the same indexes; observations are those of the own
// part. The functions here are called by all processes in the same order. Of a network that is whole they do nothing.

#ifndef VORNHOST_PARTS_H
#define VORNHOST_PARTS_H

#include <string>
#include <vector>

#include "adjust/places.h"
#include "adjust/ranks.h"
#include "adjust/statistics.h"
#include "host/own/numbers.h"
#include "host/own/rounds.h"
#include "host/run/accounts.h"

namespace vornhost {

// Thrown on all processes where parts alone do not lead on: the first one has to read the whole network.
struct WholeWanted {
    bool was_read = true; // false: a part has a fault
};

// Whether any process says so.
bool any_has(vornadjust::Ranks &ranks, bool own);

// Throws std::runtime_error, on all processes alike, where they have read different files.
void agree_on_files(vornadjust::Ranks &ranks, const Model &network);

// Whether this process answers for a point: its record, or stations and then targets counted through.
bool is_own(const Model &network, int point);
bool is_own(const Model &network, const PointPlace &point);

// What starts at each stand and needs a set-up of it.
struct Sights {
    bool circle = false, any = false;
};

// Sights and orientations of the stands of all parts.
void share_stands(const Model &network, vornadjust::Ranks *ranks, std::vector<Sights> *sights, Rounds *rounds);

// Whether any process has each of them.
void share_flags(const Model &network, vornadjust::Ranks *ranks, std::vector<bool> *flags);

// First orientations and sets of the set-ups of all parts.
void share_setups(const Model &network, vornadjust::Ranks *ranks, Numbers *numbers);

// Numbers of the observations among those of all parts.
vornadjust::OwnObservations number_observations(const Model &network, const Numbers &numbers);

// What the others have, on the first process; nothing on the others. Lines that several have come once.
std::vector<std::string> lines_of_all(vornadjust::Ranks &ranks, const std::vector<std::string> &own);
std::vector<Account> accounts_of_all(vornadjust::Ranks &ranks, const std::vector<Account> &own);
std::vector<vornadjust::JointStatistics> joint_tests_of_all(vornadjust::Ranks &ranks,
                                                            const std::vector<vornadjust::JointStatistics> &own);

} // namespace vornhost

#endif
