#include "host/epochs/transform.h"

#include <cmath>
#include <limits>
#include <unordered_map>

namespace vornhost {

namespace {

namespace va = vornadjust;

class Transforming {
public:
    Transforming(const CoordinateList &a, const CoordinateList &b, const TransformOptions &its_options)
        : from(a), to(b), options(its_options)
    {
    }

    Transformation run();

private:
    bool choose_model();
    void match();
    bool refuse(std::string what, std::string remedy);
    bool judge_status();
    void find_variance();
    void parameters();
    void judge_points();
    void transform_all();
    double deviation(double cofactor) const { return std::sqrt(out.factor.value * std::fmax(0.0, cofactor)); }

    const CoordinateList &from, &to;
    const TransformOptions &options;
    std::vector<std::string> names;
    std::vector<va::FitPoint> points;
    Transformation out;
};

bool Transforming::refuse(std::string what, std::string remedy)
{
    out.words = {std::move(what), std::move(remedy)};
    return false;
}

bool Transforming::choose_model()
{
    const bool space = from.has_z && to.has_z;
    const int n = options.parameters.value_or(space ? 7 : 4);
    if (n == 7 && !space)
        return refuse((from.has_z ? to.file : from.file) + " has no heights for 7 parameters",
                      "give it a column z, or choose 3, 4 or 6 parameters of the plane");
    if (options.no_scale && n == 6)
        return refuse("an affine transformation has no scale to leave out", "leave out --no-scale, or --parameters 6");
    using M = va::FitModel;
    out.model = n == 3             ? M::plane_rigid
                : n == 4           ? (options.no_scale ? M::plane_rigid : M::plane_similarity)
                : n == 6           ? M::plane_affine
                : options.no_scale ? M::space_rigid
                                   : M::space_similarity;
    return true;
}

void Transforming::match()
{
    std::unordered_map<std::string, const ListedPoint *> there;
    for (const ListedPoint &p : to.points) there.emplace(p.name, &p);
    for (const ListedPoint &p : from.points) {
        const auto found = there.find(p.name);
        if (found == there.end()) continue;
        va::FitPoint f;
        for (int k = 0; k < 3; k++) f.from[k] = p.x[k], f.to[k] = found->second->x[k];
        for (size_t k = 0; k < 9; k++) {
            f.q_from[k] = p.q[k], f.q_to[k] = found->second->q[k];
            if (!out.weighted && k % 4 == 0) f.q_to[k] = 1.0;
        }
        names.push_back(p.name);
        points.push_back(f);
    }
}

bool Transforming::judge_status()
{
    const std::string common = std::to_string(points.size()) + (points.size() == 1 ? " point" : " points") +
                               " that both lists have",
                      wanted = std::to_string(va::parameters_of(out.model)) + " parameters";
    switch (out.fit.status) {
    case va::FitStatus::fitted: return true;
    case va::FitStatus::too_few:
        return refuse("the " + common + " do not determine " + wanted,
                      "give more points the same names, or choose fewer parameters");
    case va::FitStatus::one_place:
        return refuse("the " + common + " lie in one place: nothing determines the turn", "add points elsewhere");
    case va::FitStatus::one_line:
        return refuse("the " + common + " lie on one line: nothing determines " +
                          (va::dimension_of(out.model) == 3 ? "the turn about it" : "what happens across it"),
                      "add points beside it, or choose fewer parameters");
    case va::FitStatus::bad_cofactors:
        return refuse("point " + names[(size_t)out.fit.bad] + " has no standard deviation in either list",
                      "a held point of one network needs a standard deviation in the other list");
    default: return refuse("the fit found no end", "look at the points: are their coordinates those of one place?");
    }
}

void Transforming::find_variance()
{
    const int f = out.fit.redundancy;
    out.apriori = (options.apriori || f == 0) && out.weighted;
    out.factor = {1.0, std::numeric_limits<double>::infinity()};
    if (out.weighted) out.agreement = fisher_test(out.fit.squares, f, out.factor, options.level);
    if (!out.apriori && f > 0) out.factor = {out.fit.squares / f, (double)f};
}

// to = shift + M from with shift = c_to - M c_from: its rows are those of a place at from = 0.
void Transforming::parameters()
{
    const double origin[3] = {0, 0, 0};
    double q[9];
    va::apply(out.fit, out.model, origin, out.shift, q);
    const int dim = va::dimension_of(out.model), n = va::parameters_of(out.model);
    for (int k = 0; k < dim; k++) out.shift_deviation[k] = deviation(q[(size_t)k * 4]);
    if (dim == 2) out.shift[2] = 0.0;
    const double *m = out.fit.matrix;
    const auto variance = [&](int k) { return deviation(out.fit.cofactors[(size_t)k * (size_t)(n + 1)]); };
    if (out.model == va::FitModel::plane_affine) return;
    out.angle[2] = std::atan2(m[3], m[0]);
    if (dim == 3) {
        out.angle[1] = std::asin(std::fmax(-1.0, std::fmin(1.0, -m[6] / out.fit.scale)));
        out.angle[0] = std::atan2(m[7], m[8]);
    }
    for (int k = 0; k < 3; k++)
        if (dim == 3 || k == 2) out.angle_deviation[k] = variance(dim == 3 ? 3 + k : 2);
    const bool scaled = out.model == va::FitModel::plane_similarity || out.model == va::FitModel::space_similarity;
    if (scaled) out.scale_deviation = out.fit.scale * variance(n - 1);
}

// A posteriori the variance factor is that of the other points, so that the test has Fisher's distribution.
void Transforming::judge_points()
{
    out.point_level = -std::expm1(std::log1p(-options.level) / (double)points.size());
    const int f = out.fit.redundancy;
    for (size_t i = 0; i < points.size(); i++) {
        const va::FitResidual &r = out.fit.points[i];
        FittedPoint p;
        p.name = names[i];
        for (int k = 0; k < 3; k++) p.residual[k] = r.v[k], p.deviation[k] = deviation(r.q[(size_t)k * 4]);
        VarianceFactor others = out.factor;
        if (!out.apriori) others = {std::fmax(0.0, out.fit.squares - r.share) / (f - r.rank), (double)(f - r.rank)};
        if (out.apriori || f > r.rank) p.test = fisher_test(r.share, r.rank, others, out.point_level);
        out.points.push_back(p);
    }
}

void Transforming::transform_all()
{
    std::unordered_map<std::string, bool> common;
    for (const std::string &name : names) common.emplace(name, true);
    const int dim = va::dimension_of(out.model);
    const double *m = out.fit.matrix;
    for (const ListedPoint &p : from.points) {
        TransformedPoint t;
        double q[9];
        t.name = p.name;
        t.common = common.count(p.name) > 0;
        va::apply(out.fit, out.model, p.x, t.x, q);
        for (int k = 0; k < dim; k++) {
            const double *row = m + (std::ptrdiff_t)k * 3;
            double own = 0.0; // M Q M^T
            for (int i = 0; i < dim; i++)
                for (int j = 0; j < dim; j++) own += row[i] * p.q[(size_t)i * 3 + (size_t)j] * row[j];
            t.deviation[k] = deviation(q[(size_t)k * 4] + (out.weighted ? own : 0.0));
        }
        out.transformed.push_back(t);
    }
}

Transformation Transforming::run()
{
    out.from = from.file, out.to = to.file;
    out.level = options.level;
    out.weighted = from.has_sigma || to.has_sigma;
    if (!choose_model()) return std::move(out);
    if (options.apriori && !out.weighted) {
        refuse("without standard deviations there is no variance factor a priori", "leave out --apriori");
        return std::move(out);
    }
    match();
    out.fit = va::fit(out.model, points);
    if (!judge_status()) return std::move(out);
    if (out.fit.mirrored)
        out.notes.push_back("with one axis turned round the lists fit far better: look whether x and y are exchanged");
    find_variance();
    parameters();
    judge_points();
    transform_all();
    return std::move(out);
}

} // namespace

Transformation transform(const CoordinateList &from, const CoordinateList &to, const TransformOptions &options)
{
    return Transforming(from, to, options).run();
}

} // namespace vornhost
