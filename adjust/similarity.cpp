// Motions of a network as a whole.

#include "adjust/similarity.h"

#include <algorithm>
#include <cmath>

namespace vornadjust {

namespace {

// Coefficients of motions of length 1 below this are rounding of the null vectors they come from.
constexpr double no_part = 1e-7;

double cross(int axis, const double v[3], int k)
{
    if (k == (axis + 1) % 3) return -v[(axis + 2) % 3];
    if (k == (axis + 2) % 3) return v[(axis + 1) % 3];
    return 0;
}

// Rows first to last - 1 of c.
Dense rows_of(const Dense &c, int first, int last)
{
    Dense out(last - first, c.cols);
    for (int j = 0; j < c.cols; j++) std::copy(c.col(j) + first, c.col(j) + last, out.col(j));
    return out;
}

// The same space of vectors of 3, spanned by axes as far as they lie in it.
Dense along_axes(const Dense &c)
{
    const SmallSvd d = small_svd(c);
    const int rank = count_from(d.s, no_part);
    Dense out(3, rank);
    int n = 0;
    for (int axis = 0; axis < 3 && n < rank; axis++) {
        double inside = 0;
        for (int j = 0; j < rank; j++) inside += d.u(axis, j) * d.u(axis, j);
        if (inside > 1 - no_part) out(axis, n++) = 1;
    }
    if (n == rank) return out;
    // What is left lies across the axes found.
    Dense rest(3, rank);
    for (int j = 0; j < rank; j++)
        for (int i = 0; i < 3; i++) {
            bool taken = false;
            for (int k = 0; k < n; k++) taken |= out(i, k) == 1;
            rest(i, j) = taken ? 0 : d.u(i, j);
        }
    const SmallSvd left = small_svd(rest);
    for (int j = 0; n < rank; j++, n++) std::copy(left.u.col(j), left.u.col(j) + 3, out.col(n));
    return out;
}

void orient(double v[3])
{
    const double *most = std::max_element(v, v + 3, [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    if (*most >= 0) return;
    for (int k = 0; k < 3; k++) v[k] = v[k] == 0 ? 0 : -v[k];
}

NamedMotion named(MotionKind kind, const double direction[3])
{
    NamedMotion out;
    out.kind = kind;
    std::copy(direction, direction + 3, out.direction);
    if (kind != MotionKind::scale) orient(out.direction);
    return out;
}

// Place that stays: shift + turn x d + scale d = 0 in the sense of least squares, of least length.
// With the matrix K of the turn, d = -K^+ shift.
void find_centre(const Similarity &s, const double *c, NamedMotion *motion)
{
    const bool levelled = s.space == Space::plane, line = s.space == Space::heights;
    Dense k(3, 3);
    for (int j = 0; j < 3; j++) {
        const double unit[3] = {j == 0 ? 1.0 : 0.0, j == 1 ? 1.0 : 0.0, j == 2 ? 1.0 : 0.0};
        for (int i = 0; i < 3; i++) {
            k(i, j) = c[6] * unit[i];
            for (int axis = 0; axis < 3; axis++) k(i, j) += c[3 + axis] * cross(axis, unit, i);
        }
    }
    if (levelled) k(2, 2) = 0;
    if (line) k(0, 0) = k(1, 1) = 0;
    const SmallSvd d = small_svd(k);
    double place[3] = {0, 0, 0};
    for (int m = 0; m < count_from(d.s, no_part); m++) {
        const double along = (d.u(0, m) * c[0] + d.u(1, m) * c[1] + d.u(2, m) * c[2]) / d.s[m];
        for (int i = 0; i < 3; i++) place[i] -= d.v(i, m) * along;
    }
    motion->centred = true;
    for (int i = 0; i < 3; i++) motion->centre[i] = s.centre[i] + s.size * place[i];
}

} // namespace

bool Similarity::exists(int motion) const
{
    switch (space) {
    case Space::heights: return motion == 2 || motion == 6;
    case Space::plane: return motion < 2 || motion > 4;
    default: return true;
    }
}

double Similarity::of_vector(int m, const double vector[3], int k) const
{
    const bool there = space == Space::heights ? k == 2 : space == Space::plane ? k < 2 : true;
    if (m < 3 || !exists(m) || !there) return 0;
    return (m == 6 ? vector[k] : cross(m - 3, vector, k)) / size;
}

double Similarity::of_point(int m, const double x[3], int k) const
{
    if (m < 3) return exists(m) && m == k ? 1 : 0;
    const double d[3] = {x[0] - centre[0], x[1] - centre[1], x[2] - centre[2]};
    return of_vector(m, d, k);
}

void Similarity::add_vector(double f, const double vector[3], int k, double sums[n_motions]) const
{
    if (space == Space::heights ? k != 2 : space == Space::plane && k == 2) return;
    const int next = k == 2 ? 0 : k + 1, after = k == 0 ? 2 : k - 1; // turns about these two axes move component k
    if (exists(3 + next)) sums[3 + next] += f * (vector[after] / size);
    if (exists(3 + after)) sums[3 + after] += f * (-vector[next] / size);
    sums[6] += f * (vector[k] / size);
}

void Similarity::add_point(double f, const double x[3], int k, double sums[n_motions]) const
{
    if (exists(k)) sums[k] += f;
    const double d[3] = {x[0] - centre[0], x[1] - centre[1], x[2] - centre[2]};
    add_vector(f, d, k, sums);
}

Similarity similarity(const Model &model, const std::vector<int> &points)
{
    Similarity s;
    s.space = model.frame.space;
    if (points.empty()) return s;
    // From the first point: the sum of coordinates of a national grid would lose digits.
    const double *first = &model.value[3 * (std::size_t)points[0]];
    const int from = s.space == Space::heights ? 2 : 0, to = s.space == Space::plane ? 2 : 3;
    for (int k = from; k < to; k++) {
        double sum = 0;
        for (int p : points) sum += model.value[3 * p + k] - first[k];
        s.centre[k] = first[k] + sum / static_cast<double>(points.size());
    }
    double most = 0;
    for (int p : points) {
        double length = 0;
        for (int k = from; k < to; k++) length = std::hypot(length, model.value[3 * p + k] - s.centre[k]);
        most = std::max(most, length);
    }
    if (most > 0) s.size = most;
    return s;
}

std::vector<NamedMotion> name_motions(const Similarity &similarity, const Dense &c)
{
    std::vector<NamedMotion> out;
    if (c.cols == 0) return out;
    const SmallSvd bending = small_svd(rows_of(c, 3, 7));
    const int bent = count_from(bending.s, no_part);
    const Dense shifts = along_axes(rows_of(product(c, column_range(bending.v, bent, c.cols)), 0, 3));
    for (int j = 0; j < shifts.cols; j++) out.push_back(named(MotionKind::shift, shifts.col(j)));

    const Dense rest = product(c, column_range(bending.v, 0, bent));
    const SmallSvd stretching = small_svd(rows_of(rest, 6, 7));
    const int stretched = std::min(1, count_from(stretching.s, no_part));
    const Dense turning = product(rest, column_range(stretching.v, stretched, rest.cols));
    const Dense axes = along_axes(rows_of(turning, 3, 6));
    for (int j = 0; j < axes.cols; j++) {
        out.push_back(named(MotionKind::turn, axes.col(j)));
        if (shifts.cols == 0 && axes.cols == 1) find_centre(similarity, turning.col(j), &out.back());
    }
    const double none[3] = {0, 0, 0};
    for (int j = 0; j < stretched; j++) {
        out.push_back(named(MotionKind::scale, none));
        const Dense scaling = product(rest, column_range(stretching.v, 0, 1));
        if (shifts.cols == 0 && axes.cols == 0) find_centre(similarity, scaling.col(0), &out.back());
    }
    return out;
}

} // namespace vornadjust
