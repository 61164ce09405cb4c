// The answers of all rows to the motions of their parts and to unknowns that are no coordinates, as a
// sparse matrix whose columns come in blocks: what the search for open motions eliminates.
//
// Blocks in their order: unknowns that one part has alone, those with few rows first; motions of each part;
// unknowns that several parts share. Where ranks share a network, unknowns that this rank alone has come first of all,
// and those that others have alone are left out; all further blocks are common to the ranks, in one order.

#ifndef VORNADJUST_MOTION_ROWS_H
#define VORNADJUST_MOTION_ROWS_H

#include <array>
#include <utility>
#include <vector>

#include "adjust/parts.h"
#include "adjust/similarity.h"
#include "adjust/small_svd.h"
#include "adjust/unit_rows.h"

namespace vornadjust {

// Columns and entries of one row.
using Terms = std::vector<std::pair<int, double>>;
using Answers = std::array<double, n_motions>;

struct PartMotions {
    Similarity similarity;
    Dense basis; // 7 by combinations that move a point at all, orthonormal
    int block = -1;
    int column = 0; // first of the block
};

struct MotionRows {
    const UnitRows *rows = nullptr;
    Parts parts;
    std::vector<PartMotions> motions; // [parts]
    std::vector<int> sizes;           // of the blocks
    std::vector<int> column_of;       // [unknowns] of those that are no coordinates and take part, or -1
    int own_blocks = 0;               // blocks before those that are common to the ranks
    int own_columns = 0;              // of these blocks
    int before_parts = 0;             // blocks before the motions of the parts

    const Model &model() const { return *rows->model; }
    // Whether it is for this rank to tell what an unknown that is no coordinate does.
    bool tells(int unknown) const;
    // Part of a row's points, -1 for a row without points.
    int part_of_row(int row) const;
    // What a row answers to the seven basic motions of its part.
    Answers answers(int row, const Similarity &similarity) const;
    // What a coordinate answers to them when it is held.
    Answers answers_of_coordinate(int unknown, const Similarity &similarity) const;
    Terms terms(int row) const;
    void find_terms(int row, Terms *found) const; // the same, in memory that is there
    Terms terms_of_fixed(int unknown) const;
    // Whether a coordinate is held in a part.
    bool is_fixed(int unknown) const;
};

MotionRows motion_rows(const UnitRows &rows);

} // namespace vornadjust

#endif
