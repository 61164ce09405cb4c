// The steps of make_numbers; each takes one table of the network into the numbers.

#ifndef VORNHOST_BUILDER_H
#define VORNHOST_BUILDER_H

#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/earth/reference.h"
#include "host/own/numbers.h"
#include "host/own/parts.h"
#include "host/own/rounds.h"

namespace vornhost {

// A component of an observation that shares a covariance.
struct CovarianceMember {
    int covariance, place, observation, component;
};

struct Builder {
    explicit Builder(Model &its_network) : network(its_network), units(its_network.p), metres(metres_per_unit(units)) {}

    Model &network;
    project units; // its conversions
    const double metres;
    Numbers numbers;
    std::unordered_map<std::string, int> points; // by name in a record
    std::pair<std::string, int> last{"", -1};    // first end that was looked up last
    std::vector<int> setups;                     // [stands] the first set-up of each or -1
    Rounds rounds;                               // a set-up for each orientation, one behind the other
    std::vector<int> constants;                  // [stands] or -1
    vornadjust::Ranks *ranks = nullptr;          // that have read the network by parts
    const Reference *reference = nullptr;        // of the coordinates; null where the file gives none
    std::vector<CovarianceMember> members;       // components that share a covariance
    std::map<std::pair<int, int>, int> motions;  // of a lump at an epoch
    std::vector<int> transformations;            // [records of transformations] motion or -1

    int point(const char *name) const;
    int first_point(const char *name);                // the same, for names that come again and again
    const station_input *station_of(int point) const; // null for a target
    int lump_of(int point) const;
    int motion_at(int point, int epoch) const; // -1: unmoved
    int stand(int point, int setup) const;     // of a station and the note of a row; -1 for a target
    void observe(const vornadjust::Observation &observation, const ItemPlace &place);
    // Of the observation made last, the component that stands `offset` behind the first of its row.
    void correlate(const RowNotes &notes, size_t row, int offset, int component);
    bool leave_out(const vornadjust::Observation &observation, Source at); // where it needs an absent coordinate
};

void set_frame(Builder &b);
void add_points(Builder &b);
void add_setups(Builder &b);
void add_constants(Builder &b);
void add_cameras(Builder &b);
void add_motions(Builder &b);
void add_transformations(Builder &b);
void add_deflections(Builder &b);

void add_measures(Builder &b);
void add_baselines(Builder &b);
void add_field_kinds(Builder &b);
void add_observed_points(Builder &b);
bool is_geocentric(const Model &network, size_t row); // of observed coordinates
void add_images(Builder &b);
void add_weighted(Builder &b);
void observe_unknown(Builder &b, int unknown, double sigma, const ItemPlace &place); // a weighted one, at its value
void add_weighted_on_earth(Builder &b);
void add_imports(Builder &b);
void add_covariances(Builder &b);
void add_centring(Builder &b);

} // namespace vornhost

#endif
