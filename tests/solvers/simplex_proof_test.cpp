// The vertex that the simplex solver reads out, against the linear programme solved in another
// way, and gross errors in every observation of seeded networks of each dimension.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/access.h"
#include "support/leastabs.h"
#include "support/passive.h"
#include "support/random_network.h"

namespace {

// Keeps the rows of the adjustment, which carry their weight.
class Keeper final : public Passive {
public:
    using Passive::Passive;
    void addrow(int n1, int n2, double misclosure) override
    {
        std::vector<long double> row((size_t)nunk, 0.0L);
        for (int k = 1; k <= n1; k++) row[(size_t)ia1[k]] = a1[k];
        for (int k = 1; k <= n2; k++) row[(size_t)(nunk1 + ia2[k])] = a2[k];
        a.push_back(row);
        b.push_back(misclosure);
    }
    LongMatrix a;
    std::vector<long double> b;
};

// The simplex solver on a network, stage by stage, and the same programme as plain matrices.
class Programme {
public:
    explicit Programme(RandomNetwork &network)
        : net(network.net), run(net.ready()), started(run.vornstart()), rows(state(run)), s(state(run))
    {
        EXPECT_EQ(started, 0) << net.report();
        S(rows, normal)();
        s.banner();
        EXPECT_EQ(s.prepare(), 0);
        s.zeronormal();
        S(s, normal)();
        drift.assign((size_t)nunk(), 0.0L);
    }

    int nunk() { return S(s, nunk); }

    void solve()
    {
        const int nobs = L1(s, nobs);
        int nrow = nobs, cols = nunk();
        if (S(s, ndatum) > 0) {
            keepdatum();
            ASSERT_EQ(L1(s, artificialstage)(&nrow, &cols), 0);
            keepdrift(nobs, nrow);
        }
        L1(s, unknownstage)(nrow, cols);
        for (int j = 0; j < cols; j++) outside += L1(s, inplus)[j] < 2 * nunk();
        ASSERT_EQ(L1(s, residualstage)(nrow, cols), 0);
        L1(s, readout)(nrow);
    }

    // Weighted sum of the absolute residuals at the corrections read out.
    long double sum()
    {
        long double total = 0.0L;
        for (size_t i = 0; i < rows.a.size(); i++) {
            long double v = -rows.b[i];
            for (size_t j = 0; j < drift.size(); j++) v += rows.a[i][j] * S(s, delta)[j];
            total += fabsl(v);
        }
        return total;
    }

    long double drifted()
    {
        long double total = sum();
        for (size_t j = 0; j < drift.size(); j++) total += drift[j] * S(s, delta)[j];
        return total;
    }

    LeastAbs best() { return least_abs(rows.a, rows.b, datum, std::vector<long double>(drift.size(), 0.0L)); }
    LeastAbs best_with_drift() { return least_abs(rows.a, rows.b, datum, drift); }

    bool at_limit() { return net.report().find("end of of phase 2 with res=-3\n") != std::string::npos; }

    // A residual that would lower the sum had left before: told in the last search of the stage.
    bool kept_out()
    {
        const std::string text = net.report();
        const size_t end = text.find("end of of phase 2"), last = text.rfind("\niter", end);
        return text.substr(last, end - last).find("already discarded in step2\n") != std::string::npos;
    }

    Network &net;
    vorn run;
    int started;
    Keeper rows;
    simplex s;
    LongMatrix datum;
    // The cost line counts the datum rows: their basic unknowns pull with a weight of 1.
    std::vector<long double> drift;
    int outside = 0; // unknowns that stage 1 left out of the basis: their column had no cost

private:
    void keepdatum()
    {
        L1(s, datumrows)();
        for (int i = 0; i < S(s, ndatum); i++) {
            const double *row = L1(s, a)[L1(s, nobs) + i];
            datum.push_back(std::vector<long double>(row, row + nunk()));
        }
    }

    void keepdrift(int first, int last)
    {
        for (int i = first; i < last; i++) {
            const int id = L1(s, ibase)[i];
            ASSERT_LT(id, 2 * nunk());
            drift[(size_t)(id % nunk())] += id < nunk() ? 1.0L : -1.0L;
        }
    }
};

struct Case {
    int dim, nsta, ntar;
};
const Case cases[] = {{1, 0, 9}, {2, 4, 4}, {3, 3, 5}};

// Relative: rounding of a hundred exchange steps, cleaned at 1e-10 of coefficients.
const long double NEAR = 1.0e-9L;

void expect_certified(const LeastAbs &best)
{
    ASSERT_TRUE(best.solved);
    ASSERT_NEAR((double)best.dual, (double)best.sum, 1e-9 * (double)best.sum);
    ASSERT_LT((double)best.fault, 1e-9);
}

// How many networks of 20 reached the least sum.
int least_sums(const Case &c, int fixed, double offset)
{
    int reached = 0;
    for (unsigned seed = 1; seed <= 20; seed++) {
        RandomNetwork network(c.dim, c.nsta, c.ntar, fixed, seed, 1.0, offset);
        network.net.p.idebug = 1;
        Programme p(network);
        p.solve();
        const LeastAbs best = p.best(), drift = p.best_with_drift();
        expect_certified(best);
        expect_certified(drift);
        if (fabsl(p.sum() - best.sum) <= NEAR * best.sum) {
            reached++;
            continue;
        }
        EXPECT_GT(p.sum(), best.sum);
        if (p.at_limit() || p.kept_out() || p.outside > 0) continue;
        EXPECT_NEAR((double)p.drifted(), (double)drift.sum, (double)(NEAR * drift.sum)) << "seed " << seed;
    }
    return reached;
}

} // namespace

// What may end the search above the least sum: the limit of exchanges, a residual that may not
// return, an unknown without cost that stays out, the pull of the datum rows. Without any of
// these the sums agree.
TEST(LeastSum, IsReachedUnlessARuleEndsTheSearch)
{
    for (const Case &c : cases)
        for (const int fixed : {0, 3}) {
            least_sums(c, fixed, 0.01);
            EXPECT_GE(least_sums(c, fixed, 0.0), 1) << c.dim << " " << fixed;
        }
}

namespace {

// Least pull of the other observations that gives observation i the change it weighs 1 for. An
// error of i stays in its own residual when this is above 1.
long double redundancy(const Programme &p, size_t i)
{
    const LongMatrix &a = p.rows.a;
    const size_t n = p.drift.size();
    const LongMatrix free = leastabs::null_space(p.datum, n);
    size_t best = 0;
    long double change = 0.0L;
    for (size_t c = 0; c < free.size(); c++) {
        long double t = 0.0L;
        for (size_t j = 0; j < n; j++) t += a[i][j] * free[c][j];
        if (fabsl(t) > fabsl(change)) change = t, best = c;
    }
    EXPECT_GT(fabsl(change), 1e-6L);
    LongMatrix others, conditions = p.datum;
    std::vector<long double> b;
    conditions.push_back(a[i]);
    for (size_t k = 0; k < a.size(); k++) {
        if (k == i) continue;
        long double t = 0.0L;
        for (size_t j = 0; j < n; j++) t -= a[k][j] * free[best][j] / change;
        others.push_back(a[k]);
        b.push_back(t);
    }
    const LeastAbs pull = least_abs(others, b, conditions, std::vector<long double>(n, 0.0L));
    EXPECT_TRUE(pull.solved);
    return pull.sum;
}

// Observation i of the four lists in their order, and its threshold in its own unit.
measure_input *observation(Network &net, size_t i, double *threshold)
{
    std::vector<measure_input> *const lists[] = {&net.distances, &net.heightdiffs, &net.directions, &net.verticals};
    for (int l = 0; l < 4; l++) {
        *threshold = l < 2 ? 0.01 : 0.05;
        if (i < lists[l]->size()) return &(*lists[l])[i];
        i -= lists[l]->size();
    }
    return nullptr;
}

int marks(const std::string &text)
{
    int n = 0;
    for (size_t at = text.find(" *\n"); at != std::string::npos; at = text.find(" *\n", at + 1)) n++;
    return n;
}

struct Hunt {
    int found = 0, hidden = 0;
};

// Plants an error of five times the threshold in every observation in turn.
Hunt hunt(const Case &c, int fixed, unsigned seed, double offset)
{
    Hunt h;
    for (size_t i = 0;; i++) {
        RandomNetwork network(c.dim, c.nsta, c.ntar, fixed, seed, 0.2, offset);
        double threshold = 0.0;
        measure_input *m = observation(network.net, i, &threshold);
        if (!m) return h;
        m->val += 5.0 * threshold * (seed % 2 ? 1.0 : -1.0);
        Programme p(network);
        p.solve();
        const double v = L1(p.s, a)[i][0];
        const double shown = threshold == 0.01 ? v : p.net.p.htoraw(0, v);
        if (marks(p.net.report()) == 1 && fabs(shown) > threshold) {
            h.found++;
            continue;
        }
        h.hidden++;
        EXPECT_LE((double)redundancy(p, i), 1.0) << c.dim << " " << fixed << " " << seed << " observation " << i;
    }
}

} // namespace

TEST(GrossError, GetsTheOnlyMarkWhereverRedundancyAllows)
{
    for (const Case &c : cases)
        for (const int fixed : {0, 3})
            for (unsigned seed = 1; seed <= 2; seed++) {
                const Hunt h = hunt(c, fixed, seed, 0.01);
                EXPECT_LE(h.hidden * 20, h.found) << c.dim << " " << fixed << " " << seed;
            }
}

TEST(GrossError, IsFoundFromCoordinatesThatAreTrueAlready)
{
    const Hunt h = hunt(cases[1], 3, 3, 0.0);
    EXPECT_GT(h.found, 50);
    EXPECT_LE(h.hidden, 2);
}
