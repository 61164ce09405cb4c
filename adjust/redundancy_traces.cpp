#include "adjust/redundancy_traces.h"

#include <random>

namespace vornadjust {

namespace {

class Traces {
public:
    Traces(const System &s, const std::vector<int> &of, int count)
        : system(s), x(s.n()), cross((std::size_t)(count + 1) * count, 0.0), classes(count)
    {
        class_of.reserve(s.rows.rows());
        for (int r = 0; r < s.rows.rows(); r++) {
            const int found = of[s.equations.observation[r]];
            class_of.push_back(found < 0 ? count : found); // what belongs to no class comes last
        }
    }

    void exact(const Watch &watch);
    void drawn(const Watch &watch);
    RedundancyTraces result(const Statistics &statistics) const;

private:
    void begin() { x.assign(x.size(), 0.0); }
    void add_row(int row, double sign);
    void end(int d, double share);

    const System &system;
    std::vector<double> x;     // [n] B_d^T e, then N^-1 B_d^T e: the datum does not matter, as B Q B^T has none
    std::vector<double> cross; // [count + 1][count] |B_c Q B_d^T|^2
    const int classes;
    std::vector<int> class_of; // [rows]
};

void Traces::add_row(int row, double sign)
{
    const WeightedRows &b = system.rows;
    for (std::size_t k = b.begin[row]; k < b.begin[row + 1]; k++) x[b.column[k]] += sign * b.coefficient[k];
}

// Q times the sum, and its squares in all classes.
void Traces::end(int d, double share)
{
    const WeightedRows &b = system.rows;
    solve(system.symbolic, system.factor, x.data());
    for (int r = 0; r < b.rows(); r++) {
        double sum = 0.0;
        for (std::size_t k = b.begin[r]; k < b.begin[r + 1]; k++) sum += b.coefficient[k] * x[b.column[k]];
        cross[(std::size_t)class_of[r] * classes + d] += share * sum * sum;
    }
}

void Traces::exact(const Watch &watch)
{
    for (int r = 0; r < system.rows.rows() && !watch.stopped(); r++) {
        if (class_of[r] == classes) continue;
        begin();
        add_row(r, 1.0);
        end(class_of[r], 1.0);
    }
}

void Traces::drawn(const Watch &watch)
{
    std::mt19937_64 engine(1); // the same network has the same figures
    for (int d = 0; d < classes; d++)
        for (int k = 0; k < drawn_signs && !watch.stopped(); k++) {
            begin();
            for (int r = 0; r < system.rows.rows(); r++)
                if (class_of[r] == d) add_row(r, engine() & 1 ? 1.0 : -1.0);
            end(d, 1.0 / drawn_signs);
        }
}

// Both estimates of h_cd and h_dc by their mean; h_cc by the sum over all classes.
RedundancyTraces Traces::result(const Statistics &statistics) const
{
    RedundancyTraces out;
    const std::size_t n = (std::size_t)classes;
    out.count = classes;
    out.h.assign(n * n, 0.0);
    for (std::size_t r = 0; r < statistics.rows.size(); r++)
        if (const std::size_t c = (std::size_t)class_of[r]; c < n) out.h[c * n + c] += statistics.rows[r].redundancy;
    for (std::size_t d = 0; d < n; d++) {
        for (std::size_t c = 0; c < n; c++) {
            if (c == d) continue;
            out.h[d * n + c] = 0.5 * (cross[c * n + d] + cross[d * n + c]);
            out.h[d * n + d] -= out.h[d * n + c];
        }
        out.h[d * n + d] -= cross[n * n + d];
    }
    return out;
}

} // namespace

RedundancyTraces redundancy_traces(const System &system, const Statistics &statistics, const std::vector<int> &of,
                                   int count, const Watch &watch, int most_exact)
{
    Traces traces(system, of, count);
    if (system.rows.rows() <= most_exact)
        traces.exact(watch);
    else
        traces.drawn(watch);
    return watch.stopped() ? RedundancyTraces() : traces.result(statistics);
}

} // namespace vornadjust
