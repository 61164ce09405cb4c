// Unit rows: scaling of rows and columns before rank and datum are judged.

#include "adjust/unit_rows.h"

#include <algorithm>
#include <cmath>

#include "adjust/over_ranks.h"

namespace vornadjust {

namespace {

// Derivatives by angles of set-ups below this (radians or pixels a radian) are rounding: a vertical angle by
// the orientation of an upright instrument.
constexpr double least_by_angle = 1e-12;

struct Length {
    double value = 0;         // of the coordinate part
    bool coordinates = false; // whether there is one
};

Length coordinate_part(const UnitRows &u, int row)
{
    const Equations &e = *u.equations;
    Length length;
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1]; k++) {
        if (!u.is_coordinate(e.column[k])) continue;
        length.coordinates = true;
        length.value = std::hypot(length.value, e.coefficient[k]);
    }
    return length;
}

double scaled_length(const UnitRows &u, int row)
{
    const Equations &e = *u.equations;
    double length = 0;
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1]; k++)
        length = std::hypot(length, e.coefficient[k] * u.column_factor[e.column[k]]);
    return length;
}

double reciprocal(double length) { return length > 0 && std::isfinite(length) ? 1 / length : 0; }

// Factors of the unknowns that are no coordinates; 1 for those that no row with coordinates sees.
void scale_columns(UnitRows &u)
{
    const Equations &e = *u.equations;
    const int first = 3 * u.model->n_points, n = u.model->n_unknowns() - first;
    std::vector<double> scaled(n, 0.0), by_angle(n, 0.0); // the largest entries
    for (int r = 0; r < u.rows(); r++)
        for (std::size_t k = e.begin[r]; k < e.begin[r + 1]; k++) {
            const int j = e.column[k] - first;
            if (j < 0) continue;
            scaled[j] = std::max(scaled[j], std::fabs(e.coefficient[k]) * u.row_factor[r]);
            by_angle[j] = std::max(by_angle[j], std::fabs(e.coefficient[k]));
        }
    most(u.ranks, scaled.data(), scaled.size());
    most(u.ranks, by_angle.data(), by_angle.size());
    for (int j = 0; j < n; j++) {
        if (scaled[j] > 0) u.column_factor[first + j] = 1 / scaled[j];
        if (u.model->meaning[first + j] == Meaning::angle && by_angle[j] < least_by_angle)
            u.column_factor[first + j] = 0;
    }
}

} // namespace

UnitRows unit_rows(const Model &model, const Equations &equations, Ranks *ranks)
{
    UnitRows u;
    u.model = &model;
    u.equations = &equations;
    u.ranks = ranks;
    u.row_factor.assign(equations.rows(), 0.0);
    u.column_factor.assign(model.n_unknowns(), 1.0);
    std::vector<int> without_coordinates;
    for (int r = 0; r < u.rows(); r++) {
        if (!equations.usable[r]) continue;
        const Length length = coordinate_part(u, r);
        if (length.coordinates)
            u.row_factor[r] = reciprocal(length.value);
        else
            without_coordinates.push_back(r);
    }
    scale_columns(u);
    for (int r : without_coordinates) u.row_factor[r] = reciprocal(scaled_length(u, r));
    return u;
}

double response(const UnitRows &rows, int row, const double *movement)
{
    const Equations &e = *rows.equations;
    double sum = 0;
    for (std::size_t k = e.begin[row]; k < e.begin[row + 1]; k++) sum += rows.entry(row, k) * movement[e.column[k]];
    return sum;
}

} // namespace vornadjust
