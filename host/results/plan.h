// The plan of a network for maps and drawings: where points lie on paper, one line for each pair of points with
// observations between them, and ellipses, magnified to be seen. x points upwards and y to the right, as directions
// turn; with Axes::xy x points to the right. Metres and radians.

#ifndef VORNHOST_PLAN_H
#define VORNHOST_PLAN_H

#include <stddef.h>

#include <optional>
#include <string>
#include <vector>

#include "host/results/results.h"

namespace vornhost {

enum class Axes { yx, xy }; // what points to the right, what upwards

struct PlanPoint {
    size_t point = 0; // in Results::points
    double right = 0, up = 0;
    std::optional<double> height;
};

struct PlanLine {
    size_t from = 0, to = 0;          // in Plan::points
    std::vector<size_t> observations; // in Results::residuals
    std::optional<double> worst;      // the largest normalised residual, without its sign
    bool suspicious = false;          // one of them is beyond the limit for the largest of all
};

struct PlanEllipse {
    size_t at = 0;       // in Plan::points
    double a = 0, b = 0; // semi-axes as they are, not magnified
    double angle = 0;    // of the major axis from the right, anticlockwise, radians
};

struct Plan {
    std::vector<PlanPoint> points; // those with a position
    std::vector<PlanLine> lines;
    std::vector<PlanEllipse> ellipses;
    double left = 0, right = 0, bottom = 0, top = 0; // of the points
    double magnification = 1;                        // of ellipses: a round number

    double size() const; // the longer side, at least a millimetre
};

// Adjusted positions, or approximate ones where there are none. A network of heights has none.
Plan make_plan(const Results &results, Axes axes);

// "fixed", "partly fixed", "weighted", "free", "free, not in the datum".
std::string role_of(const PointResult &point);

// Corner k of n of an ellipse as it is drawn.
void ellipse_corner(const Plan &plan, const PlanEllipse &ellipse, int k, int n, double *right, double *up);

// Whether every point with a position has one on maps.
bool is_mapped(const Results &results);

// Degrees in WGS 84.
struct MapCorner {
    double longitude = 0, latitude = 0;
};

// A place of the plan near the centre of an ellipse, on maps.
MapCorner map_corner(const Results &results, const Plan &plan, const PlanEllipse &ellipse, Axes axes, double right,
                     double up);

// Text of XML; control characters have no place there.
std::string xml_text(const std::string &text);

} // namespace vornhost

#endif
