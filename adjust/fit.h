// The transformation that fits one list of points to another by least squares:
//   to = c_to + t + M (from - c_from) + v,   M = s R (turns of any size), or any matrix of the plane (affine)
// about the centroids c. Both lists may have errors: with cofactors Q_from, Q_to of a point,
//   W = (Q_to + M Q_from M^T)^-1,   sum of v^T W v least,
// iterated since W depends on M (the Gauss-Helmert solution for small errors). It begins with the closed solution for
// equal weights: R = V diag(1, 1, det) U^T of the singular value decomposition of sum of (from - c)(to - c)^T (Umeyama,
// IEEE Trans. PAMI 13, 1991, 376-380). Corrections: shifts t, small turns about the axes of `to` (of the plane about
// the third), the logarithm of s; or the elements of M by rows.
//   v       = observed `to` less the transformed `from`
//   Q_i     = W^-1 - A N^-1 A^T, cofactors of v of a point; A its rows, N the normal matrix
//   share_i = v^T W (W Q_i W)^+ W v: what the sum loses where the point is left out of the fit
// Any unit, the same for both lists.

#ifndef VORNADJUST_FIT_H
#define VORNADJUST_FIT_H

#include <vector>

namespace vornadjust {

enum class FitModel {
    plane_rigid,      // 3: two shifts, a turn
    plane_similarity, // 4: and the scale
    plane_affine,     // 6
    space_rigid,      // 6: three shifts, three turns
    space_similarity  // 7: and the scale
};

int dimension_of(FitModel model);
int parameters_of(FitModel model);

// Matrices 3 by 3 by rows; of the plane the first two rows and columns count.
struct FitPoint {
    double from[3] = {0, 0, 0}, to[3] = {0, 0, 0};
    double q_from[9] = {}, q_to[9] = {}; // their sum positive definite
};

struct FitResidual {
    double v[3] = {0, 0, 0}, q[9] = {};
    double share = 0.0;
    int rank = 0; // of its cofactors: degrees of freedom of the share
};

enum class FitStatus {
    fitted,
    too_few,       // points for the parameters
    one_place,     // all points of a list lie in one place
    one_line,      // they lie on a line (of the plane only affine)
    bad_cofactors, // of a point: not positive definite, see bad
    no_convergence
};

struct Fit {
    FitStatus status = FitStatus::fitted;
    int bad = -1;                                                // point
    double centre_from[3] = {0, 0, 0}, centre_to[3] = {0, 0, 0}; // c_from, and c_to + t
    double matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};              // M
    double scale = 1.0;                                          // s; of affine the root of the determinant
    double squares = 0.0;                                        // sum of v^T W v
    int redundancy = 0;
    std::vector<double> cofactors; // N^-1, of t, turns and log s or the elements of M by rows
    std::vector<FitResidual> points;
    bool mirrored = false; // a list counts its axes the other way round: with one of them turned they fit ten times
                           // better
};

Fit fit(FitModel model, const std::vector<FitPoint> &points);

// Where a fit takes a place, and what its own error adds there to the cofactors: A N^-1 A^T, 3 by 3 by rows.
void apply(const Fit &fit, FitModel model, const double from[3], double to[3], double cofactors[9]);

} // namespace vornadjust

#endif
