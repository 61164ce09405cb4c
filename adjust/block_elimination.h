// Null space of a tall sparse matrix whose columns come in small blocks.
//
// Blocks are eliminated one after the other by orthogonal transformations: all rows that see block b
// and no earlier one are reduced to a triangle over b and the later columns that they see; singular
// values of the part over b tell which directions of the block are determined, and what is left of
// the rows goes on to later blocks. A'A is never formed. A direction of block b that is not
// determined is a null vector: later columns 0, earlier ones by back-substitution. The cost is linear
// in the rows where few blocks share rows (orientations, tilts, cameras, then constants, then motions).

#ifndef VORNADJUST_BLOCK_ELIMINATION_H
#define VORNADJUST_BLOCK_ELIMINATION_H

#include <utility>
#include <vector>

#include "adjust/small_svd.h"

namespace vornadjust {

class BlockElimination {
public:
    // Blocks in the order of elimination; columns count through all of them.
    //   sizes  number of columns of each block, 0 allowed
    explicit BlockElimination(const std::vector<int> &sizes);

    int columns() const { return begin.back(); }
    int first_column(int block) const { return begin[block]; }

    // One row, with each column at most once, in any order.
    void add(std::vector<std::pair<int, double>> row);

    // Eliminates the next block; singular values below the threshold are taken for zero.
    void eliminate(double threshold);

    // Takes out the rows that are left for blocks behind the eliminated ones, as few as tell the same.
    std::vector<std::vector<std::pair<int, double>>> take_rest();

    // Directions of an eliminated block that its rows do not determine.
    int open(int block) const { return stages[block].open.cols; }

    // Null vector of open direction j of a block, of length 1 in the block.
    std::vector<double> null_vector(int block, int j) const;

    // Replaces the columns before a block by those that let the rows answer least, in the sense of
    // least squares, to what the vector has from that block on. Blocks before it are eliminated.
    void complete(std::vector<double> &vector, int block) const;

private:
    using Row = std::vector<std::pair<int, double>>;
    struct Bucket {
        std::vector<Row> rows;
        std::size_t limit = 64; // rows that are kept before they are reduced
    };
    struct Stage {
        std::vector<int> later; // columns that the block depends on
        Dense solve;            // block = solve * later
        Dense open;             // block by open directions
    };

    int block_of(int column) const;
    void pass_on(const std::vector<int> &columns, const Dense &rows, int first_row, int first_column);

    std::vector<int> begin;      // [blocks + 1]
    std::vector<Bucket> buckets; // rows by the first block that they see
    std::vector<Stage> stages;   // of eliminated blocks
};

} // namespace vornadjust

#endif
