// Observations that do not fit the others: what they would have to read, what they do to the coordinates, and which
// others would look the same if they were wrong instead.
//
// With e the unit vector of a suspect, P the weights, Q the cofactors of the unknowns:
//   estimated error       d = e^T P v / e^T P Qvv P e, as if it alone were wrong
//   effect on unknowns    d Q A^T P e: what adjusting without it would change
//   correlation of tests  e_i^T P Qvv P e_k / sqrt(e_i^T P Qvv P e_i  e_k^T P Qvv P e_k)
// (W. Baarda, Reliability and precision of networks, 1977; W. Foerstner, Reliability and discernability of extended
// Gauss-Markov models, 1983.) Each suspect costs a solve and a pass over the rows.

#ifndef VORNADJUST_SUSPECTS_H
#define VORNADJUST_SUSPECTS_H

#include <functional>
#include <vector>

#include "adjust/statistics.h"

namespace vornadjust {

struct SuspectOptions {
    int most = 0; // how many are looked at
    // Size of a normalised residual (variance factor 1) beyond which a row is suspect, of a run with so many tested
    // rows; null for none.
    std::function<double(int tested, int redundancy, double variance_factor)> limit;
    std::vector<double> weight; // [observations] that a robust estimation has given them and that their tests do
                                // without; or empty
    double least_share = least_redundancy; // of control, below which a row is not tested
    double least_correlation = 0.9;        // of tests that count as not told apart
    int most_alike = 5;                    // rows listed for a suspect
};

struct Alike {
    int place;       // among the usable rows of all ranks
    int observation; // -1 where another rank alone has it
    double correlation;
};

struct Suspect {
    int place;                // among the usable rows of all ranks
    int observation;          // -1 where another rank alone has it
    double normalised;        // as of its row
    double error;             // observed less what it would have to read; metres, radians or pixels
    double shift = 0.0;       // metres, of the point that it shifts most
    int point = -1;           // that point; -1 where it shifts none
    std::vector<Alike> alike; // the most correlated first
};

// Rows beyond the limit, the worst first, at most so many; of all ranks, each of which finds the same.
//   place  [rows] among the usable rows of all ranks, or -1
std::vector<Suspect> find_suspects(const Model &model, const System &system, const Cofactors &cofactors,
                                   const Statistics &statistics, const std::vector<int> &place, double limit,
                                   const SuspectOptions &options, const Watch &watch);

// Number of rows with at least this share of control, those of this rank.
int tested_rows(const Statistics &statistics, double least_share);

} // namespace vornadjust

#endif
