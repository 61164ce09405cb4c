// Congruence of the epochs of a network: whether points kept their places to one another, and which did not.
//
// Epochs e = 0 ... m have the same n coordinates, with values x_e and cofactors Q_e, each in a datum of its own. G (n
// by d, orthonormal) holds the motions that at least one of the epochs leaves open. The differences y_e = x_e - x_0 of
// points that stayed are errors and a motion G t_e of each epoch:
//   y = (y_1, ..., y_m),  Q has Q_0 in every block, and Q_e more in block (e, e)
//   H = diag(G, ..., G),  P = (Q + k H H^T)^-1,  W = P - P H (H^T P H)^-1 H^T P
//   q = y^T W y,  h = m (n - d)
// W depends neither on k > 0 nor on the datum of any epoch. q is what v^T P v of all epochs grows by when they are
// adjusted together, with a motion for each epoch and one place for each point (Pelzer, Zur Analyse geodaetischer
// Deformationsmessungen, 1971). Where point i is left out,
//   W becomes W_rr - W_ri W_ii^+ W_ir,  q falls by (W y)_i^T W_ii^+ (W y)_i,  h by the rank of W_ii,
// so that a search through all points costs no more than one inverse (Niemeier, Deformationsanalyse, 1985).
// Metres.

#ifndef VORNADJUST_CONGRUENCE_H
#define VORNADJUST_CONGRUENCE_H

#include <vector>

#include "adjust/small_svd.h"

namespace vornadjust {

struct EpochValues {
    std::vector<double> x; // [n]
    std::vector<double> q; // [n][n] cofactors with the weights of all epochs: variance factor 1
};

struct Epochs {
    std::vector<int> first = {0};    // [points + 1] first coordinate of each point
    std::vector<EpochValues> values; // at least two
    Dense motions;                   // n by d, orthonormal; of rows 0 where nothing is open

    int points() const { return (int)first.size() - 1; }
    int n() const { return first.back(); }
};

// What the test of congruence has of squares and degrees of freedom, or what a point takes from it.
struct Squares {
    double q = 0.0;
    int h = 0;
};

class Congruence {
public:
    // With all points. Throws std::bad_alloc.
    explicit Congruence(const Epochs &epochs);

    // Whether the cofactors are positive definite beside the motions; nothing else holds otherwise.
    bool good() const { return is_good; }
    Squares test() const { return total; }
    bool has(int point) const { return in[point]; }

    // What the test loses without a point that it has.
    Squares share(int point) const;
    void remove(int point);

private:
    std::vector<int> places(int point) const;
    Dense pseudo_inverse(int point, const std::vector<int> &at, int *rank) const;

    std::vector<int> first;
    int n = 0, m = 0;               // coordinates, differences of epochs
    std::vector<double> w;          // [n m][n m]
    std::vector<double> wy;         // [n m]
    std::vector<double> largest_of; // [points] scale of W_ii before anything is left out
    std::vector<char> in;           // [points]
    Squares total;
    bool is_good = false;
};

// Inverse of a positive definite matrix in place, n by n by rows. False, with a in any state, when it is not.
bool invert_full(int n, std::vector<double> *a);

// Shifts of all points against some that stayed: the datum in which these have no shift, turn or scale as a whole,
//   S = I - G (G_s^T G_s)^-1 G_s^T,  d = S y,  Q_d = S Q S^T
// (Baarda, S-transformations and criterion matrices, 1973), G_s being G with the rows of the others 0.
struct StableDatum {
    Dense motions, closing; // G; (G_s^T G_s)^-1 G_s^T, d by n
    bool carried = false;   // whether the points close all motions; nothing else holds otherwise
};

StableDatum stable_datum(const Epochs &epochs, const std::vector<char> &stayed);

// Blocks of the points alone of S Q S^T, each k by k by rows for a point with k coordinates, one after the other.
//   q  [n][n]
std::vector<std::vector<double>> transformed_blocks(const Epochs &epochs, const StableDatum &datum,
                                                    const std::vector<double> &q);

// S y.
std::vector<double> transformed(const StableDatum &datum, std::vector<double> y);

} // namespace vornadjust

#endif
