// Transformation of one list of coordinates to another, matched by names.

#ifndef VORNHOST_TRANSFORM_H
#define VORNHOST_TRANSFORM_H

#include <optional>
#include <string>
#include <vector>

#include "adjust/fit.h"
#include "host/epochs/coordinate_list.h"
#include "host/epochs/fisher.h"

namespace vornhost {

struct TransformOptions {
    std::optional<int> parameters; // 3, 4, 6, 7; by default 7 where both lists have heights, otherwise 4
    bool no_scale = false;         // 4 becomes 3, 7 a shift and turn in space
    bool apriori = false;          // variance factor 1
    double level = usual_level;    // of each test; of all points together
};

struct FittedPoint {
    std::string name;
    double residual[3] = {0, 0, 0}, deviation[3] = {0, 0, 0};
    FisherTest test; // that the point fits the others
};

struct TransformedPoint {
    std::string name;
    bool common = false;
    double x[3] = {0, 0, 0}, deviation[3] = {0, 0, 0};
};

struct Transformation {
    std::vector<std::string> words; // why there is none
    std::vector<std::string> notes;
    vornadjust::FitModel model = vornadjust::FitModel::plane_similarity;
    std::string from, to;  // files
    bool weighted = false; // by standard deviations
    bool apriori = false;
    double level = usual_level, point_level = usual_level;
    vornadjust::Fit fit;
    VarianceFactor factor;
    double shift[3] = {0, 0, 0}, shift_deviation[3] = {0, 0, 0}; // to = shift + M from
    double angle[3] = {0, 0, 0};                                // M = s Rz(angle[2]) Ry(angle[1]) Rx(angle[0]), radians
    double angle_deviation[3] = {0, 0, 0}, scale_deviation = 0; // of small turns about the axes of `to`
    FisherTest agreement; // that the lists agree within their standard deviations; made of weighted ones
    std::vector<FittedPoint> points;
    std::vector<TransformedPoint> transformed; // all of the first list

    bool made() const { return words.empty(); }
};

Transformation transform(const CoordinateList &from, const CoordinateList &to, const TransformOptions &options);

std::string transform_report(const Transformation &transformation, const std::string &date);
std::string transform_json(const Transformation &transformation, const std::string &version);

// The first list in the system of the second: name, x, y, z, sx, sy, sz with commas.
std::string transformed_list(const Transformation &transformation);

} // namespace vornhost

#endif
