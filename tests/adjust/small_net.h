// Networks of a few points for tests of datum and rank, and a dense rank to compare with.

#ifndef TESTS_ADJUST_SMALL_NET_H
#define TESTS_ADJUST_SMALL_NET_H

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <vector>

#include "adjust/equations.h"
#include "adjust/model.h"
#include "adjust/unit_rows.h"

namespace vornadjust {

// Points first, then whatever observes them. Observed values are those of the coordinates.
struct SmallNet {
    Model model;
    Equations equations;

    explicit SmallNet(Space space) { model.frame.space = space; }

    int point(double x, double y, double z, Code plan = Code::datum, Code height = Code::datum)
    {
        const double xyz[3] = {x, y, z};
        Code codes[3] = {plan, plan, height};
        if (model.frame.space == Space::heights) codes[0] = codes[1] = Code::absent;
        if (model.frame.space == Space::plane) codes[2] = Code::absent;
        return model.add_point(xyz, codes);
    }
    int plane_point(double x, double y, Code code = Code::datum) { return point(x, y, 0, code); }
    int height(double z, Code code = Code::datum) { return point(0, 0, z, code, code); }

    Observation &observe(Kind kind, int from, int to)
    {
        Observation o;
        o.kind = kind;
        o.from = from;
        o.to = to;
        o.sigma[0] = o.sigma[1] = 0.001;
        return model.observations[model.observe(o)];
    }
    void distance(int from, int to, int constants = -1)
    {
        const bool plane = model.frame.space == Space::plane;
        observe(plane ? Kind::plane_distance : Kind::slope_distance, from, to).constants = constants;
    }
    // Between the first n points.
    void all_distances_among(int n)
    {
        for (int i = 0; i < n; i++)
            for (int j = i + 1; j < n; j++) distance(i, j);
    }
    void level(int from, int to) { observe(Kind::height_difference, from, to); }
    void azimuth(int from, int to) { observe(Kind::azimuth, from, to); }
    int setup(int point, Code orientation = Code::free, Code tilt = Code::fixed)
    {
        const double angles[3] = {0, 0, 0};
        const Code codes[3] = {tilt, tilt, orientation};
        return model.add_setup(point, tilt == Code::fixed, angles, codes);
    }
    void direction(int setup, int to) { observe(Kind::direction, model.setups[setup].point, to).setup = setup; }
    void vertical(int setup, int to) { observe(Kind::vertical_angle, model.setups[setup].point, to).setup = setup; }
    // Directions of one set to all of the points.
    int directions(int from, std::initializer_list<int> to)
    {
        const int s = setup(from);
        for (int p : to) direction(s, p);
        return s;
    }
    void baseline(int from, int to, double off = 0)
    {
        double vector[3];
        for (int k = 0; k < 3; k++) vector[k] = model.value[3 * to + k] - model.value[3 * from + k] + off;
        const double covariance[9] = {1e-6, 0, 0, 0, 1e-6, 0, 0, 0, 1e-6};
        const int group = model.add_group(3, covariance);
        Observation &o = observe(Kind::baseline, from, to);
        std::copy(vector, vector + 3, o.value);
        o.group = group;
    }
    void weighted(int unknown)
    {
        Observation o;
        o.kind = Kind::unknown;
        o.unknown = unknown;
        o.sigma[0] = 0.01;
        model.observe(o);
    }
    int constants(Code additive, Code scale, Code refraction = Code::fixed)
    {
        const double values[3] = {0, 1, 0};
        const Code codes[3] = {additive, scale, refraction};
        return model.add_constants(values, codes);
    }

    UnitRows rows()
    {
        equations = pattern(model);
        fill(model, Derivatives::invariant, &equations);
        return unit_rows(model, equations);
    }
};

// Estimated unknowns (those that are no coordinates where a row sees them) less the rank of the rows, by elimination
// with complete pivoting on the dense matrix of unit rows and columns.
inline int dense_defect(const UnitRows &rows)
{
    std::vector<char> seen(rows.model->n_unknowns(), 0);
    for (std::size_t k = 0; k < rows.equations->column.size(); k++)
        seen[rows.equations->column[k]] |= rows.equations->coefficient[k] != 0;
    std::vector<int> column(rows.model->n_unknowns(), -1);
    int n = 0;
    for (int u = 0; u < rows.model->n_unknowns(); u++)
        if (rows.model->estimated(u) && (seen[u] || rows.is_coordinate(u))) column[u] = n++;
    std::vector<std::vector<double>> a;
    for (int r = 0; r < rows.rows(); r++) {
        if (!rows.tells(r)) continue;
        a.emplace_back(n, 0.0);
        for (std::size_t k = rows.equations->begin[r]; k < rows.equations->begin[r + 1]; k++)
            if (column[rows.equations->column[k]] >= 0) a.back()[column[rows.equations->column[k]]] += rows.entry(r, k);
    }
    const int m = static_cast<int>(a.size());
    int rank = 0;
    for (; rank < std::min(m, n); rank++) {
        int row = rank, col = rank;
        for (int i = rank; i < m; i++)
            for (int j = rank; j < n; j++)
                if (std::fabs(a[i][j]) > std::fabs(a[row][col])) row = i, col = j;
        if (std::fabs(a[row][col]) < 1e-10) break;
        std::swap(a[row], a[rank]);
        for (int i = 0; i < m; i++) std::swap(a[i][col], a[i][rank]);
        for (int i = rank + 1; i < m; i++) {
            const double f = a[i][rank] / a[rank][rank];
            for (int j = rank; j < n; j++) a[i][j] -= f * a[rank][j];
        }
    }
    return n - rank;
}

} // namespace vornadjust

#endif
