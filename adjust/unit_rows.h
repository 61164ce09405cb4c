// The rows of a network without weights and units, as rank and datum are judged by them.
//
// Each usable row is divided by the length of its coordinate part, held coordinates included, so
// that rows of angles and of lengths weigh the same. Each unknown that is no coordinate is scaled so
// that its largest entry is 1. Neither changes which movements the rows leave open. A row whose
// coordinate part vanishes says nothing; a row of other unknowns alone (a weighted constant) gets
// length 1.
//
//   entry(k) of row r and unknown u:  coefficient[k] * row_factor[r] * column_factor[u]
//   a movement in scaled unknowns, times column_factor, is one in metres and radians.
//
// Where ranks share a network, each has its own rows; unknowns are scaled alike on all.

#ifndef VORNADJUST_UNIT_ROWS_H
#define VORNADJUST_UNIT_ROWS_H

#include <vector>

#include "adjust/equations.h"
#include "adjust/model.h"
#include "adjust/ranks.h"

namespace vornadjust {

// Refers to the model and the equations that it was made of; both must outlive it unchanged.
struct UnitRows {
    const Model *model = nullptr;
    const Equations *equations = nullptr;
    Ranks *ranks = nullptr;            // that have the other rows of the network; none: all rows are here
    std::vector<double> row_factor;    // [rows] 0: the row says nothing
    std::vector<double> column_factor; // [unknowns] 1 for coordinates, 0 for angles to which no row answers

    int rows() const { return equations->rows(); }
    bool tells(int row) const { return row_factor[row] > 0; }
    bool is_coordinate(int unknown) const { return unknown < 3 * model->n_points; }
    double entry(int row, std::size_t k) const
    {
        return equations->coefficient[k] * row_factor[row] * column_factor[equations->column[k]];
    }
};

// Equations are to be filled with invariant derivatives. All ranks call it, at the same values.
UnitRows unit_rows(const Model &model, const Equations &equations, Ranks *ranks = nullptr);

// Sum of entry times movement (scaled unknowns) over a row.
double response(const UnitRows &rows, int row, const double *movement);

} // namespace vornadjust

#endif
