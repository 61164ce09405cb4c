#include "host/epochs/compared_values.h"

#include <cmath>
#include <unordered_map>

#include "host/input/names.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

// Coefficients of motions of length 1 below it are rounding.
constexpr double no_motion = 1e-6;

// Seven basic motions of all coordinates of an epoch at the values where its open motions were found.
va::Dense basic_motions(const va::Similarity &similarity, const Numbers &numbers, const double origin[3])
{
    const va::Model &m = numbers.model;
    va::Dense basic(3 * m.n_points, va::n_motions);
    for (int u = 0; u < 3 * m.n_points; u++) {
        if (!m.estimated(u)) continue;
        double x[3];
        for (int k = 0; k < 3; k++)
            x[k] = m.start[(size_t)u - (size_t)u % 3 + (size_t)k] + numbers.origin[k] - origin[k];
        for (int c = 0; c < va::n_motions; c++) basic(u, c) = similarity.of_point(c, x, u % 3);
    }
    return basic;
}

// Coefficients of the basic motions that make up the open ones.
va::Dense coefficients(const va::Dense &basic, const va::Dense &motions)
{
    const va::SmallSvd s = va::small_svd(basic);
    va::Dense c(basic.cols, motions.cols);
    for (int j = 0; j < motions.cols; j++)
        for (int k = 0; k < va::count_from(s.s, no_motion * s.s[0]); k++) {
            double along = 0.0;
            for (int i = 0; i < basic.rows; i++) along += s.u(i, k) * motions(i, j);
            for (int i = 0; i < basic.cols; i++) c(i, j) += s.v(i, k) * along / s.s[(size_t)k];
        }
    return c;
}

// Orthonormal columns with the same span, without those below the threshold beside the largest.
va::Dense spanned(const va::Dense &a)
{
    const va::SmallSvd s = va::small_svd(a);
    return va::column_range(s.u, 0, s.s.empty() ? 0 : va::count_from(s.s, no_motion * std::fmax(s.s[0], 1e-300)));
}

} // namespace

// The joint cofactors of a run end with those of the covariance points that it has, x, y, z of each.
va::EpochValues compared_values(const Model &network, const OwnOutcome &run, const std::vector<ComparedPoint> &points,
                                const double origin[3])
{
    std::unordered_map<std::string, int> place;
    for (size_t p = 0; p < run.numbers.points.size(); p++)
        place.emplace(shown_name(network, point_name(network, run.numbers.points[p])), (int)p);
    const std::vector<double> &joint = run.adjustment.statistics.joint;
    const size_t all = (size_t)std::lround(std::sqrt((double)joint.size()));
    std::unordered_map<std::string, size_t> row; // of x of a name
    for (const std::string &name : network.covariance_points)
        if (place.count(name) > 0) row.emplace(name, 3 * row.size());
    va::EpochValues v;
    std::vector<size_t> at;
    for (const ComparedPoint &p : points)
        for (const int k : p.axes) {
            const size_t u = 3 * (size_t)place.at(p.name) + (size_t)k;
            v.x.push_back(run.numbers.model.value[u] + run.numbers.origin[k] - origin[k]);
            at.push_back(row.at(p.name) + (size_t)k);
        }
    v.q.reserve(at.size() * at.size());
    for (const size_t i : at)
        for (const size_t j : at) v.q.push_back(joint[i * all + j]);
    return v;
}

va::Dense open_motions(const std::vector<const OwnOutcome *> &runs, const std::vector<ComparedPoint> &points)
{
    const Numbers &first = runs[0]->numbers;
    std::vector<int> all((size_t)first.model.n_points);
    for (size_t p = 0; p < all.size(); p++) all[p] = (int)p;
    const va::Similarity similarity = va::similarity(first.model, all);
    std::vector<double> columns; // 7 by all open motions
    for (const OwnOutcome *run : runs) {
        const va::Dense &open = run->adjustment.determinacy.datum.motions;
        if (open.cols == 0) continue;
        const va::Dense c = coefficients(basic_motions(similarity, run->numbers, first.origin), open);
        columns.insert(columns.end(), c.a.begin(), c.a.end());
    }
    va::Dense c(va::n_motions, (int)columns.size() / va::n_motions);
    c.a = columns;
    if (c.cols > 0) c = spanned(c);
    int n = 0, row = 0;
    for (const ComparedPoint &p : points) n += (int)p.axes.size();
    va::Dense g(n, c.cols);
    for (const ComparedPoint &p : points) {
        double x[3];
        for (size_t k = 0; k < 3; k++) x[k] = p.first[k] - first.origin[k];
        for (const int k : p.axes) {
            for (int j = 0; j < c.cols; j++)
                for (int i = 0; i < va::n_motions; i++) g(row, j) += c(i, j) * similarity.of_point(i, x, k);
            row++;
        }
    }
    return g.cols > 0 ? spanned(g) : g;
}

} // namespace vornhost
