// The datum of a network that observations leave free to move: which of the solutions is meant, and its cofactors.
//
// G holds the open motions, a column each, over the columns of the normal system; B0 those at the first values with
// all rows but those of datum coordinates set to 0. Wanted is the solution with B0^T (x - x0) = 0. Some d unknowns are
// held instead, chosen by complete pivoting so that G over them is as far from singular as can be; the solution x- and
// the cofactors Q- of that minimal datum are transformed (Baarda's S-transformation):
//   c = (B0^T G)^-1 B0^T (x- - x0),   x = x- - G c
//   C = (B0^T G)^-1 B0^T,  W = Q- C^T,  Q_ij = Q-_ij - G_i W_j^T - W_i G_j^T + G_i (C W) G_j^T
// Metres, radians. Vectors over columns of the normal system stand one behind the other: G_k,j at motion[k n + j].

#ifndef VORNADJUST_FREE_DATUM_H
#define VORNADJUST_FREE_DATUM_H

#include <vector>

#include "adjust/datum.h"
#include "adjust/system.h"

namespace vornadjust {

struct FreeDatum {
    int open = 0;                  // d, 0 to 7
    int n = 0;                     // columns
    double size = 1.0;             // metres, of the network
    std::vector<double> condition; // [d][n] B0
    std::vector<double> motion;    // [d][n] G
    std::vector<double> closing;   // [d][d] (B0^T G)^-1 by rows
    Ranks *ranks = nullptr;        // that share the columns; B0 is 0 on each where others own a column
};

// Open motions of the network at the model's present values, with the system's rows filled there. With ranks the model
// gets the values of the whole network.
Datum find_datum(Model *model, const System &system);

// Of the open motions found at the first values, which come with the conditions.
FreeDatum free_datum(const Columns &columns, const Datum &found, const Share &share = {});

// Columns to be held in its place, those that this rank has.
std::vector<int> held_columns(const Model &model, const Columns &columns, const Datum &found);

// The same motions at later values.
void set_motions(const Columns &columns, const Dense &motions, FreeDatum *datum);

// x- to x.
//   from_start  in      [n] present values - first values
//   dx          in/out  [n] corrections of the minimal datum; becomes those of the wanted one. A solution
void transform(const FreeDatum &datum, const double *from_start, double *dx);

// x to (I - C^T G^T) x, the transposed of what transform() does to corrections. A contribution
void transform_back(const FreeDatum &datum, double *x);

// Cofactors of the wanted datum out of those of the minimal one.
struct CofactorTransform {
    std::vector<double> w;  // [d][n]
    std::vector<double> cw; // [d][d]
};

// d solves with the factor of the minimal datum.
CofactorTransform cofactor_transform(const FreeDatum &datum, const System &system);

// Q_ij out of Q-_ij.
double transformed(const FreeDatum &datum, const CofactorTransform &t, int i, int j, double q);

} // namespace vornadjust

#endif
