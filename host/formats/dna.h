// Stations and measurements of DynAdjust as its files hold them, whether in fixed columns or in DynaML. Lengths in
// metres; angles in decimal degrees, their standard deviations in arc seconds.

#ifndef VORNHOST_DNA_H
#define VORNHOST_DNA_H

#include <array>
#include <string>
#include <vector>

#include "host/formats/draft.h"
#include "host/formats/geocentric.h"
#include "host/input/faults.h"

namespace vornhost {

struct DnaStation {
    std::string name, constraints, type; // type LLH, LLh, UTM, XYZ, ENU
    std::string zone;                    // of UTM, with its hemisphere: "S55"
    std::array<double, 3> value = {};    // as the type says; latitude and longitude in degrees
    Source where;
};

struct DnaDirection {
    std::string target;
    double value = 0, sigma = 0;
    bool ignored = false;
    Source where;
};

// A baseline of a record G or X, a point of a record Y.
struct DnaMember {
    std::string first, second;
    std::array<double, 3> value = {};
    std::array<double, 6> covariance = {};    // xx, xy, yy, xz, yz, zz
    std::vector<std::array<double, 9>> later; // with each member behind it, row by row
    Source where;
};

struct DnaMeasure {
    char type = ' ';
    bool ignored = false;
    std::string first, second, third;
    double value = 0, sigma = 0;
    double instrument_height = 0, target_height = 0;
    std::vector<DnaDirection> directions;        // of D, the reference target first
    std::array<double, 4> scalar = {1, 1, 1, 1}; // V, P, L, H
    std::string frame, epoch, coordinates;       // coordinates: the type of Y
    std::vector<DnaMember> members;
    std::string id;
    Source where;
};

struct DnaNetwork {
    std::string frame, epoch;
    std::vector<DnaStation> stations;
    std::vector<DnaMeasure> measures;
};

// Makes the draft; all faults in one pass. False after a fault. geoid: a grid file, metres, or empty.
bool draft_dna(const DnaNetwork &network, Source file, const std::string &geoid, Draft &draft, Faults &faults);

// Degrees of D.MMSSsss, whatever number of digits; false where it is none.
bool read_packed(std::string_view text, double &degrees);

// Whether the value of a type is an angle.
bool is_dna_angle(char type);

// Whether a measurement of that type is known.
bool is_dna_type(char type);

} // namespace vornhost

#endif
