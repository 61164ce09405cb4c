#include "adjust/fit.h"

#include <algorithm>
#include <cmath>

#include "adjust/congruence.h"
#include "adjust/small_svd.h"

namespace vornadjust {

namespace {

constexpr int most_steps = 50;
constexpr double on_a_line = 1e-5;  // width of a figure beside its length
constexpr double no_width = 1e-14;  // length of a figure beside its coordinates
constexpr double enough = 1e-9;     // last step beside the size of what it changes
constexpr double no_part = 1e-9;    // eigenvalues of W Q W beside those of W
constexpr double much_better = 0.1; // root of the sums of squares of a mirrored fit

bool affine(FitModel m) { return m == FitModel::plane_affine; }
bool scaled(FitModel m) { return m == FitModel::plane_similarity || m == FitModel::space_similarity; }

// y = M x in the first `dim` components.
void multiply(const double m[9], const double x[3], int dim, double y[3])
{
    for (int i = 0; i < 3; i++) {
        y[i] = 0.0;
        for (int k = 0; k < dim && i < dim; k++) y[i] += m[3 * i + k] * x[k];
    }
}

// Rows of a place at d = from - c_from: dim by parameters, by rows.
std::vector<double> rows_at(FitModel model, const double matrix[9], const double d[3])
{
    const int dim = dimension_of(model), n = parameters_of(model);
    std::vector<double> a((std::size_t)dim * n, 0.0);
    for (int k = 0; k < dim; k++) a[(std::size_t)k * n + k] = 1.0;
    if (affine(model)) {
        for (int i = 0; i < dim; i++)
            for (int k = 0; k < dim; k++) a[(std::size_t)i * (n + dim) + dim + k] = d[k];
        return a;
    }
    double y[3];
    multiply(matrix, d, dim, y);
    if (dim == 2) {
        a[2] = -y[1], a[(std::size_t)n + 2] = y[0];
    } else { // turn x y
        const double turns[9] = {0, y[2], -y[1], -y[2], 0, y[0], y[1], -y[0], 0};
        for (int i = 0; i < 3; i++)
            for (int k = 0; k < 3; k++) a[(std::size_t)i * n + 3 + k] = turns[3 * i + k];
    }
    for (int k = 0; k < dim && scaled(model); k++) a[(std::size_t)k * n + n - 1] = y[k];
    return a;
}

// exp of the turn about `axis` by its length, times M.
void turn(const double axis[3], double m[9])
{
    const double angle = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
    if (angle == 0.0) return;
    const double x = axis[0] / angle, y = axis[1] / angle, z = axis[2] / angle, c = std::cos(angle),
                 s = std::sin(angle), v = 1.0 - c;
    const double r[9] = {c + x * x * v,     x * y * v - z * s, x * z * v + y * s, y * x * v + z * s, c + y * y * v,
                         y * z * v - x * s, z * x * v - y * s, z * y * v + x * s, c + z * z * v};
    double out[9];
    for (int i = 0; i < 3; i++) {
        const double *row = r + (std::ptrdiff_t)i * 3;
        for (int k = 0; k < 3; k++) out[3 * i + k] = row[0] * m[k] + row[1] * m[3 + k] + row[2] * m[6 + k];
    }
    std::copy(out, out + 9, m);
}

class Fitting {
public:
    Fitting(FitModel its_model, const std::vector<FitPoint> &all)
        : model(its_model), points(all), dim(dimension_of(its_model)), n(parameters_of(its_model))
    {
    }

    Fit run();

private:
    bool determined();
    void find_centres();
    bool weigh();
    double step();
    void change(const std::vector<double> &x);
    void residual(std::size_t i, double v[3]) const;
    void judge_point(std::size_t i);

    const FitModel model;
    const std::vector<FitPoint> &points;
    const int dim, n;
    std::vector<std::vector<double>> weights, rows; // [points]
    Fit out;
};

void Fitting::find_centres()
{
    for (const FitPoint &p : points)
        for (int k = 0; k < dim; k++) {
            out.centre_from[k] += p.from[k] / (double)points.size();
            out.centre_to[k] += p.to[k] / (double)points.size();
        }
}

bool Fitting::determined()
{
    out.redundancy = dim * (int)points.size() - n;
    if (out.redundancy < 0) out.status = FitStatus::too_few;
    if (out.status != FitStatus::fitted) return false;
    for (const bool to : {false, true}) {
        Dense d((int)points.size(), dim);
        double far = 0.0;
        for (std::size_t i = 0; i < points.size(); i++)
            for (int k = 0; k < dim; k++) {
                const double x = to ? points[i].to[k] : points[i].from[k];
                far = std::fmax(far, std::fabs(x));
                d((int)i, k) = x - (to ? out.centre_to : out.centre_from)[k];
            }
        const SmallSvd s = small_svd(d);
        const bool needs_width = dim == 3 || affine(model);
        if (!(s.s[0] > no_width * far))
            out.status = FitStatus::one_place;
        else if (needs_width && s.s[1] < on_a_line * s.s[0])
            out.status = FitStatus::one_line;
        if (out.status != FitStatus::fitted) return false;
    }
    return true;
}

// Umeyama's solution for `from` with its axes times `mirror`: M to the matrix, the sum of squares.
double closed_solution(FitModel model, const std::vector<FitPoint> &points, const Fit &about, const double mirror[3],
                       double matrix[9], double *scale)
{
    const int dim = dimension_of(model);
    Dense h(dim, dim); // sum of d_from d_to^T
    double from2 = 0.0, to2 = 0.0;
    for (const FitPoint &p : points)
        for (int i = 0; i < dim; i++) {
            const double a = mirror[i] * (p.from[i] - about.centre_from[i]), b = p.to[i] - about.centre_to[i];
            from2 += a * a, to2 += b * b;
            for (int k = 0; k < dim; k++) h(i, k) += a * (p.to[k] - about.centre_to[k]);
        }
    SmallSvd s = small_svd(h);
    if (s.s[dim - 1] <= 1e-12 * s.s[0]) { // a figure without the last width: its direction is free to choose
        double u[3] = {0, 0, 0}, v[3] = {0, 0, 0};
        if (dim == 2) {
            u[0] = -s.u(1, 0), u[1] = s.u(0, 0), v[0] = -s.v(1, 0), v[1] = s.v(0, 0);
        } else {
            for (int k = 0; k < 3; k++) {
                const int a = (k + 1) % 3, b = (k + 2) % 3;
                u[k] = s.u(a, 0) * s.u(b, 1) - s.u(b, 0) * s.u(a, 1);
                v[k] = s.v(a, 0) * s.v(b, 1) - s.v(b, 0) * s.v(a, 1);
            }
        }
        for (int k = 0; k < dim; k++) s.u(k, dim - 1) = u[k], s.v(k, dim - 1) = v[k];
    }
    const auto determinant = [dim](const Dense &a) {
        if (dim == 2) return a(0, 0) * a(1, 1) - a(0, 1) * a(1, 0);
        return a(0, 0) * (a(1, 1) * a(2, 2) - a(1, 2) * a(2, 1)) - a(0, 1) * (a(1, 0) * a(2, 2) - a(1, 2) * a(2, 0)) +
               a(0, 2) * (a(1, 0) * a(2, 1) - a(1, 1) * a(2, 0));
    };
    const double sign = determinant(s.u) * determinant(s.v) < 0.0 ? -1.0 : 1.0;
    double trace = 0.0;
    for (int k = 0; k < dim; k++) trace += (k == dim - 1 ? sign : 1.0) * s.s[k];
    *scale = scaled(model) ? trace / from2 : 1.0;
    std::fill(matrix, matrix + 9, 0.0);
    for (int i = 0; i < dim; i++)
        for (int k = 0; k < dim; k++)
            for (int c = 0; c < dim; c++)
                matrix[3 * i + k] += *scale * s.v(i, c) * (c == dim - 1 ? sign : 1.0) * s.u(k, c) * mirror[k];
    return std::fmax(0.0, to2 - 2.0 * *scale * trace + *scale * *scale * from2);
}

// W of every point at the present M.
bool Fitting::weigh()
{
    weights.assign(points.size(), {});
    for (std::size_t i = 0; i < points.size(); i++) {
        std::vector<double> q((std::size_t)dim * dim);
        for (int a = 0; a < dim; a++)
            for (int b = 0; b < dim; b++) {
                double x = points[i].q_to[3 * a + b];
                for (int c = 0; c < dim; c++)
                    for (int d = 0; d < dim; d++)
                        x += out.matrix[3 * a + c] * points[i].q_from[3 * c + d] * out.matrix[3 * b + d];
                q[(std::size_t)a * dim + b] = x;
            }
        out.bad = (int)i;
        if (!invert_full(dim, &q)) return false;
        weights[i] = q;
    }
    out.bad = -1;
    return true;
}

void Fitting::residual(std::size_t i, double v[3]) const
{
    double d[3] = {0, 0, 0}, y[3];
    for (int k = 0; k < dim; k++) d[k] = points[i].from[k] - out.centre_from[k];
    multiply(out.matrix, d, dim, y);
    for (int k = 0; k < 3; k++) v[k] = k < dim ? points[i].to[k] - out.centre_to[k] - y[k] : 0.0;
}

void Fitting::change(const std::vector<double> &x)
{
    for (int k = 0; k < dim; k++) out.centre_to[k] += x[k];
    if (affine(model)) {
        for (int i = 0; i < dim; i++)
            for (int k = 0; k < dim; k++) out.matrix[3 * i + k] += x[dim + i * dim + k];
        return;
    }
    const double flat[3] = {0.0, 0.0, x[2]};
    if (dim == 2) out.matrix[8] = 1.0;
    turn(dim == 2 ? flat : &x[3], out.matrix);
    if (!scaled(model)) return;
    out.scale *= std::exp(x[n - 1]);
    for (double &m : out.matrix) m *= std::exp(x[n - 1]);
}

// One step of Gauss and Newton; how far it moves the farthest point beside the size of the figure.
double Fitting::step()
{
    std::vector<double> normal((std::size_t)n * n, 0.0), right(n, 0.0), x(n, 0.0);
    rows.clear();
    for (std::size_t i = 0; i < points.size(); i++) {
        double d[3] = {0, 0, 0}, v[3];
        for (int k = 0; k < dim; k++) d[k] = points[i].from[k] - out.centre_from[k];
        residual(i, v);
        rows.push_back(rows_at(model, out.matrix, d));
        const std::vector<double> &a = rows.back(), &w = weights[i];
        for (int r = 0; r < dim; r++)
            for (int c = 0; c < dim; c++)
                for (int j = 0; j < n; j++) {
                    const double aw = a[(std::size_t)r * n + j] * w[(std::size_t)r * dim + c];
                    right[j] += aw * v[c];
                    for (int k = 0; k < n; k++) normal[(std::size_t)j * n + k] += aw * a[(std::size_t)c * n + k];
                }
    }
    if (!invert_full(n, &normal)) return NAN;
    for (int j = 0; j < n; j++)
        for (int k = 0; k < n; k++) x[j] += normal[(std::size_t)j * n + k] * right[k];
    double moved = 0.0, size = 0.0;
    for (std::size_t i = 0; i < points.size(); i++)
        for (int r = 0; r < dim; r++) {
            double along = 0.0;
            for (int j = 0; j < n; j++) along += rows[i][(std::size_t)r * n + j] * x[j];
            moved = std::fmax(moved, std::fabs(along));
            size = std::fmax(size, std::fabs(points[i].to[r] - out.centre_to[r]));
        }
    change(x);
    out.cofactors = std::move(normal);
    return moved / size;
}

void Fitting::judge_point(std::size_t i)
{
    FitResidual r;
    residual(i, r.v);
    const std::vector<double> &a = rows[i], &w = weights[i];
    Dense wqw(dim, dim);
    std::vector<double> q = w, wv(dim, 0.0), fitted((std::size_t)dim * dim, 0.0); // q: W^-1
    invert_full(dim, &q);
    for (int r1 = 0; r1 < dim; r1++)
        for (int c = 0; c < dim; c++)
            for (int j = 0; j < n; j++)
                for (int k = 0; k < n; k++)
                    fitted[(std::size_t)r1 * dim + c] +=
                        a[(std::size_t)r1 * n + j] * out.cofactors[(std::size_t)j * n + k] * a[(std::size_t)c * n + k];
    double largest_weight = 0.0;
    for (int b = 0; b < dim; b++)
        for (int c = 0; c < dim; c++) {
            r.q[3 * b + c] = q[(std::size_t)b * dim + c] - fitted[(std::size_t)b * dim + c];
            wqw(b, c) = w[(std::size_t)b * dim + c];
            wv[b] += w[(std::size_t)b * dim + c] * r.v[c];
            largest_weight = std::fmax(largest_weight, w[(std::size_t)b * dim + c]);
            for (int d = 0; d < dim; d++)
                for (int e = 0; e < dim; e++)
                    wqw(b, c) -=
                        w[(std::size_t)b * dim + d] * fitted[(std::size_t)d * dim + e] * w[(std::size_t)e * dim + c];
        }
    for (int b = 0; b < dim; b++) out.squares += r.v[b] * wv[b];
    const SmallSvd s = small_svd(wqw);
    r.rank = count_from(s.s, no_part * largest_weight);
    for (int c = 0; c < r.rank; c++) {
        double along = 0.0;
        for (int b = 0; b < dim; b++) along += s.v(b, c) * wv[b];
        r.share += along * along / s.s[c];
    }
    out.points.push_back(r);
}

Fit Fitting::run()
{
    find_centres();
    if (!determined()) return std::move(out);
    const double straight[3] = {1, 1, 1}, mirror[3] = {1, -1, dim == 3 ? 1.0 : 0.0};
    double mirrored_matrix[9], mirrored_scale;
    const double plain = closed_solution(model, points, out, straight, out.matrix, &out.scale),
                 other = closed_solution(model, points, out, mirror, mirrored_matrix, &mirrored_scale);
    out.mirrored = !affine(model) && std::sqrt(other) < much_better * std::sqrt(plain);
    out.status = FitStatus::no_convergence;
    for (int k = 0; k < most_steps && out.status == FitStatus::no_convergence; k++) {
        if (!weigh()) {
            out.status = FitStatus::bad_cofactors;
            return std::move(out);
        }
        const double moved = step();
        if (!std::isfinite(moved)) return std::move(out);
        if (moved < enough) out.status = FitStatus::fitted;
    }
    if (out.status != FitStatus::fitted) return std::move(out);
    if (affine(model)) out.scale = std::sqrt(std::fabs(out.matrix[0] * out.matrix[4] - out.matrix[1] * out.matrix[3]));
    for (std::size_t i = 0; i < points.size(); i++) judge_point(i);
    return std::move(out);
}

} // namespace

int dimension_of(FitModel model)
{
    return model == FitModel::space_rigid || model == FitModel::space_similarity ? 3 : 2;
}

int parameters_of(FitModel model)
{
    switch (model) {
    case FitModel::plane_rigid: return 3;
    case FitModel::plane_similarity: return 4;
    case FitModel::space_similarity: return 7;
    default: return 6;
    }
}

Fit fit(FitModel model, const std::vector<FitPoint> &points) { return Fitting(model, points).run(); }

void apply(const Fit &f, FitModel model, const double from[3], double to[3], double cofactors[9])
{
    const int dim = dimension_of(model), n = parameters_of(model);
    double d[3] = {0, 0, 0};
    for (int k = 0; k < dim; k++) d[k] = from[k] - f.centre_from[k];
    multiply(f.matrix, d, dim, to);
    for (int k = 0; k < 3; k++) to[k] = k < dim ? to[k] + f.centre_to[k] : from[k];
    const std::vector<double> a = rows_at(model, f.matrix, d);
    std::fill(cofactors, cofactors + 9, 0.0);
    for (int r = 0; r < dim; r++)
        for (int c = 0; c < dim; c++)
            for (int j = 0; j < n; j++)
                for (int k = 0; k < n; k++)
                    cofactors[3 * r + c] +=
                        a[(std::size_t)r * n + j] * f.cofactors[(std::size_t)j * n + k] * a[(std::size_t)c * n + k];
}

} // namespace vornadjust
