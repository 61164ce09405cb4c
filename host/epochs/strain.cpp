#include "host/epochs/strain.h"

#include <cmath>

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr double most_deviation = 0.01; // of a strain: points are then nearly on a line, or far too near to one another
// Of a parameter's own information that is left beside open motions and translations: below it is rounding.
constexpr double no_information = 1e-9;
constexpr double no_hold = 1e-9; // singular values of the motions over the points, beside the largest

struct Basis {
    double m[3][3] = {};
    bool turn = false;
};

Basis symmetric(int i, int j, double x)
{
    Basis b;
    b.m[i][j] = b.m[j][i] = x;
    return b;
}

// Mean extension; extensions without it; shears; turns.
std::vector<Basis> bases(int k)
{
    std::vector<Basis> all(1);
    for (int i = 0; i < k; i++) all[0].m[i][i] = 1.0;
    for (int i = 0; i + 1 < k; i++) {
        Basis b;
        b.m[i][i] = 1.0, b.m[k - 1][k - 1] = -1.0;
        all.push_back(b);
    }
    for (int i = 0; i < k; i++)
        for (int j = i + 1; j < k; j++) all.push_back(symmetric(i, j, 1.0));
    const int turns[3][2] = {{1, 2}, {2, 0}, {0, 1}}; // right-handed
    for (int t = k == 2 ? 2 : 0; t < 3; t++) {
        Basis b;
        b.turn = true;
        b.m[turns[t][0]][turns[t][1]] = -1.0, b.m[turns[t][1]][turns[t][0]] = 1.0;
        all.push_back(b);
    }
    return all;
}

class Straining {
public:
    Straining(int dimension, const std::vector<double> &its_places, const std::vector<double> &its_shifts,
              std::vector<double> its_q, const va::Dense &its_motions)
        : k(dimension), n((int)its_places.size()), places(its_places), shifts(its_shifts), w(std::move(its_q)),
          motions(its_motions), all(bases(dimension))
    {
    }

    Strain find(const VarianceFactor &factor, double level);

private:
    bool weigh();
    void center();
    void columns();
    bool solve();
    std::vector<double> times_w(const std::vector<double> &x) const;
    StrainValue along(const double (&direction)[3][3], const VarianceFactor &factor) const;
    double tensor(int i, int j) const;
    void fill_elements(const VarianceFactor &factor, Strain *out) const;
    void fill_principal(const VarianceFactor &factor, Strain *out) const;
    void fill_turns(const VarianceFactor &factor, Strain *out) const;
    void test(const VarianceFactor &factor, double level, Strain *out) const;

    const int k, n;
    std::vector<double> places; // less their mean
    const std::vector<double> &shifts;
    std::vector<double> w; // cofactors, then weights without what is open
    const va::Dense &motions;
    const std::vector<Basis> all;
    std::vector<std::vector<double>> design;   // of the parameters that are determined
    std::vector<int> place_of;                 // [bases] among these, -1
    std::vector<double> cofactors, parameters; // of these
    int open = 0;                              // motions over the points, translations among them
    double squares = 0;                        // of the shifts, all
};

double dot(const std::vector<double> &a, const std::vector<double> &b)
{
    double sum = 0.0;
    for (size_t i = 0; i < a.size(); i++) sum += a[i] * b[i];
    return sum;
}

std::vector<double> Straining::times_w(const std::vector<double> &x) const
{
    std::vector<double> y((size_t)n, 0.0);
    for (size_t i = 0; i < y.size(); i++)
        for (size_t j = 0; j < y.size(); j++) y[i] += w[i * y.size() + j] * x[j];
    return y;
}

void Straining::center()
{
    for (int a = 0; a < k; a++) {
        double mean = 0.0;
        for (int i = a; i < n; i += k) mean += places[(size_t)i] * k / n;
        for (int i = a; i < n; i += k) places[(size_t)i] -= mean;
    }
}

// Orthonormal columns of what is open over the points, and of the translations, which are no strain either way.
std::vector<std::vector<double>> open_columns(int k, int n, const va::Dense &motions)
{
    va::Dense h(n, motions.cols + k);
    for (int i = 0; i < n; i++) {
        for (int c = 0; c < motions.cols; c++) h(i, c) = motions(i, c);
        h(i, motions.cols + i % k) = 1.0 / std::sqrt((double)n / k);
    }
    const va::SmallSvd s = va::small_svd(h);
    std::vector<std::vector<double>> columns;
    const int rank = va::count_from(s.s, no_hold * s.s[0]);
    columns.reserve((size_t)rank);
    for (int c = 0; c < rank; c++) columns.emplace_back(s.u.col(c), s.u.col(c) + n);
    return columns;
}

// W = P - P H (H' P H)^-1 H' P, P = (Q + k H H')^-1; false where the cofactors are singular.
bool Straining::weigh()
{
    const std::vector<std::vector<double>> h = open_columns(k, n, motions);
    const size_t size = (size_t)n, c = h.size();
    open = (int)c;
    double scale = 0.0;
    for (size_t i = 0; i < size; i++) scale += w[i * size + i] / (double)n;
    for (const std::vector<double> &column : h)
        for (size_t i = 0; i < size; i++)
            for (size_t j = 0; j < size; j++) w[i * size + j] += scale * column[i] * column[j];
    if (!va::invert_full(n, &w)) return false;
    std::vector<std::vector<double>> ph;
    ph.reserve(c);
    for (const std::vector<double> &column : h) ph.push_back(times_w(column));
    std::vector<double> hph;
    for (size_t a = 0; a < c; a++)
        for (size_t b = 0; b < c; b++) hph.push_back(dot(h[a], ph[b]));
    if (!va::invert_full((int)c, &hph)) return false;
    for (size_t a = 0; a < c; a++)
        for (size_t b = 0; b < c; b++)
            for (size_t i = 0; i < size; i++)
                for (size_t j = 0; j < size; j++) w[i * size + j] -= ph[a][i] * hph[a * c + b] * ph[b][j];
    return true;
}

// Columns of the parameters, of those that open motions leave alone.
void Straining::columns()
{
    double weight = 0.0; // of a shift beside open ones
    for (int i = 0; i < n; i++) weight = std::fmax(weight, w[(size_t)i * (size_t)n + (size_t)i]);
    for (const Basis &b : all) {
        std::vector<double> column((size_t)n, 0.0);
        for (int i = 0; i < n; i++)
            for (int j = 0; j < k; j++)
                column[(size_t)i] += b.m[i % k][j] * places[(size_t)i - (size_t)(i % k) + (size_t)j];
        const bool determined = dot(column, times_w(column)) > no_information * weight * dot(column, column);
        place_of.push_back(determined ? (int)design.size() : -1);
        if (determined) design.push_back(std::move(column));
    }
}

bool Straining::solve()
{
    const size_t p = design.size();
    const std::vector<double> wy = times_w(shifts);
    squares = dot(shifts, wy);
    cofactors.clear();
    for (const std::vector<double> &a : design) {
        const std::vector<double> wa = times_w(a);
        for (const std::vector<double> &b : design) cofactors.push_back(dot(wa, b));
    }
    if (!va::invert_full((int)p, &cofactors)) return false;
    parameters.assign(p, 0.0);
    for (size_t i = 0; i < p; i++)
        for (size_t j = 0; j < p; j++) parameters[i] += cofactors[i * p + j] * dot(design[j], wy);
    return true;
}

// The strain or turn in a direction: the sum of direction_ij times the element ij, of what is determined.
StrainValue Straining::along(const double (&direction)[3][3], const VarianceFactor &factor) const
{
    std::vector<double> f(design.size(), 0.0);
    for (size_t b = 0; b < all.size(); b++)
        for (int i = 0; i < k && place_of[b] >= 0; i++)
            for (int j = 0; j < k; j++) f[(size_t)place_of[b]] += direction[i][j] * all[b].m[i][j];
    StrainValue out;
    double q = 0.0;
    for (size_t i = 0; i < f.size(); i++) {
        out.value += f[i] * parameters[i];
        for (size_t j = 0; j < f.size(); j++) q += f[i] * cofactors[i * f.size() + j] * f[j];
    }
    out.deviation = std::sqrt(factor.value * std::fmax(0.0, q));
    return out;
}

double Straining::tensor(int i, int j) const
{
    double sum = 0.0;
    for (size_t b = 0; b < all.size(); b++)
        if (place_of[b] >= 0 && !all[b].turn) sum += parameters[(size_t)place_of[b]] * all[b].m[i][j];
    return sum;
}

void Straining::fill_elements(const VarianceFactor &factor, Strain *out) const
{
    double mean[3][3] = {};
    for (int i = 0; i < k; i++) mean[i][i] = 1.0 / k;
    if (place_of[0] >= 0) out->mean = along(mean, factor);
    for (int i = 0; i < k; i++) {
        double one[3][3] = {};
        one[i][i] = 1.0;
        out->elements.push_back(along(one, factor));
    }
    for (int i = 0; i < k; i++)
        for (int j = i + 1; j < k; j++) {
            double half[3][3] = {};
            half[i][j] = half[j][i] = 0.5;
            out->elements.push_back(along(half, factor));
        }
}

// Extensions along the eigenvectors v of E: v' E v; to first order of errors the vectors do not count.
void Straining::fill_principal(const VarianceFactor &factor, Strain *out) const
{
    double shift = 0.0; // makes E positive, so that singular values are its eigenvalues
    for (int i = 0; i < k; i++)
        for (int j = 0; j < k; j++) shift += std::fabs(tensor(i, j));
    va::Dense e(k, k);
    for (int i = 0; i < k; i++)
        for (int j = 0; j < k; j++) e(i, j) = tensor(i, j) + (i == j ? shift : 0.0);
    const va::SmallSvd s = va::small_svd(e);
    double across[3][3] = {};
    for (int c = 0; c < k; c++) {
        double direction[3][3] = {};
        for (int i = 0; i < k; i++)
            for (int j = 0; j < k; j++) {
                direction[i][j] = s.v(i, c) * s.v(j, c);
                if (c == 0) across[i][j] += direction[i][j];
                if (c == k - 1) across[i][j] -= direction[i][j];
            }
        out->principal.push_back(along(direction, factor));
    }
    out->shear = along(across, factor);
    const double pi = 4.0 * std::atan(1.0), bearing = std::atan2(s.v(1, 0), s.v(0, 0));
    out->bearing = bearing < 0.0 ? bearing + pi : bearing >= pi ? bearing - pi : bearing;
}

void Straining::fill_turns(const VarianceFactor &factor, Strain *out) const
{
    for (size_t b = 0; b < all.size(); b++) {
        if (!all[b].turn) continue;
        double half[3][3];
        for (int i = 0; i < 3; i++)
            for (int j = 0; j < 3; j++) half[i][j] = 0.5 * all[b].m[i][j];
        out->turns.emplace_back();
        if (place_of[b] >= 0) out->turns.back() = along(half, factor);
    }
}

void Straining::test(const VarianceFactor &factor, double level, Strain *out) const
{
    std::vector<int> strains;
    for (size_t b = 0; b < all.size(); b++)
        if (place_of[b] >= 0 && !all[b].turn) strains.push_back(place_of[b]);
    const size_t h = strains.size(), p = design.size();
    std::vector<double> q;
    for (const int i : strains)
        for (const int j : strains) q.push_back(cofactors[(size_t)i * p + (size_t)j]);
    if (va::invert_full((int)h, &q)) {
        double sum = 0.0;
        for (size_t i = 0; i < h; i++)
            for (size_t j = 0; j < h; j++)
                sum += parameters[(size_t)strains[i]] * q[i * h + j] * parameters[(size_t)strains[j]];
        out->strained = fisher_test(sum, (int)h, factor, level);
    }
    const std::vector<double> wy = times_w(shifts);
    double explained = 0.0;
    for (size_t i = 0; i < p; i++) explained += parameters[i] * dot(design[i], wy);
    out->homogeneous = fisher_test(std::fmax(0.0, squares - explained), n - open - (int)p, factor, level);
}

Strain undetermined()
{
    Strain out;
    out.words = {"the points of the group do not determine its strain", "name more points, not nearly on a line"};
    return out;
}

Strain Straining::find(const VarianceFactor &factor, double level)
{
    Strain out;
    out.dimension = k;
    center();
    if (!weigh()) {
        out.words = {"the shifts of the group have no precision of their own",
                     "leave out points that others determine"};
        return out;
    }
    columns();
    if (design.empty() || !solve()) return undetermined();
    fill_elements(factor, &out);
    for (const StrainValue &v : out.elements)
        if (v.deviation > most_deviation) return undetermined();
    fill_principal(factor, &out);
    fill_turns(factor, &out);
    test(factor, level, &out);
    return out;
}

} // namespace

Strain find_strain(int dimension, const std::vector<double> &places, const std::vector<double> &shifts,
                   std::vector<double> q, const vornadjust::Dense &motions, const VarianceFactor &factor, double level)
{
    return Straining(dimension, places, shifts, std::move(q), motions).find(factor, level);
}

} // namespace vornhost
