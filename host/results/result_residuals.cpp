// Residuals and statistics of the kinds of observations. Residuals of directions and
// vertical angles come in the raw unit of the file and leave in radians; those of the solver simplex
// come as computed less observed and leave the other way round, as all others.

#include "host/input/angle.h"
#include "host/input/names.h"
#include "host/results/result_parts.h"

namespace vornhost {

namespace {

struct Block {
    const char *kind;
    const List<measure_input> &list;
    int count; // residuals returned
    int type;  // KIND_...
};

bool angular(int type) { return type == KIND_DIRECTION || type == KIND_VERTICAL; }

double in_si(const project &p, int type, double raw) { return angular(type) ? to_radians(p.iangle, raw) : raw; }

// Observed value and its standard deviation, vertical angles as elevations.
void fill_observed(const project &p, int type, const measure_input &m, ResidualResult &residual)
{
    project units = p; // the conversions are no const members
    if (type == KIND_DIRECTION) {
        residual.value = units.rawtoh(1, m.val);
        residual.sigma = units.rawtoh(2, m.sig);
    } else if (type == KIND_VERTICAL) {
        residual.value = units.rawtov(1, m.val);
        residual.sigma = units.rawtov(2, m.sig);
    } else {
        residual.value = metres_per_unit(p) * m.val;
        residual.sigma = metres_per_unit(p) * m.sig;
    }
}

void fill_marks(const result &r, size_t n, ResidualResult &residual)
{
    const int *marks[] = {r.iout, r.inorm, r.inormb, r.itau, r.itaub};
    std::optional<bool> *fields[] = {&residual.outside, &residual.normal, &residual.normal_divided, &residual.tau,
                                     &residual.tau_divided};
    for (int k = 0; k < 5; k++)
        if (marks[k]) *fields[k] = marks[k][n] != 0;
}

// What a row says beside its values, null for nothing.
std::shared_ptr<const RowWords> words_of(const RowNotes &notes, size_t row)
{
    RowWords words;
    words.id = note_at(notes.id, row);
    words.remark = note_at(notes.remark, row);
    return words.empty() ? nullptr : std::make_shared<const RowWords>(words);
}

ResidualResult make_residual(const ResultSource &from, const Block &block, size_t n)
{
    const project &p = from.model.p;
    const result &r = from.run;
    const size_t i = (size_t)r.iobs[n];
    const measure_input &m = block.list.records[i];
    const Source where = block.list.where[i];

    ResidualResult residual;
    residual.kind = block.kind;
    residual.unit = angular(block.type) ? "rad" : "m";
    residual.from = full_name(from.model, m.from);
    residual.to = full_name(from.model, m.to);
    if ((size_t)where.file < from.model.files.size()) residual.file = from.model.files[(size_t)where.file];
    residual.line = where.line;
    residual.words = words_of(block.list.notes, i);
    residual.raw = raw_reading(from.model, block.type == KIND_VERTICAL, block.list.notes, i);
    fill_observed(p, block.type, m, residual);
    const double observed_less_computed = from.model.solver == Solver::Simplex ? 0.0 - r.res[n] : r.res[n];
    residual.residual = in_si(p, block.type, observed_less_computed);
    residual.adjusted = residual.value - residual.residual;
    if (from.statistics() && r.sres) residual.deviation = deviation(in_si(p, block.type, r.sres[n]));
    if (from.tested()) fill_marks(r, n, residual);
    return residual;
}

struct KindFields {
    const char *kind;
    int count;
    double s, sp;
    int chi, normal, normal_divided, tau, tau_divided;
};

KindResult make_kind(const KindFields &f)
{
    KindResult kind;
    kind.kind = f.kind;
    kind.sigma_apriori = f.s;
    kind.sigma_aposteriori = f.sp;
    if (f.chi != 0) kind.goodness_of_fit = f.chi > 0;
    kind.over_normal = f.normal;
    kind.over_normal_divided = f.normal_divided;
    kind.over_tau = f.tau;
    kind.over_tau_divided = f.tau_divided;
    return kind;
}

int selected(const measure_input *list, int n)
{
    int count = 0;
    for (int i = 0; i < n; i++) count += list[i].typ > 0;
    return count;
}

} // namespace

void collect_residuals(const ResultSource &from, Results &results)
{
    const Model &m = from.model;
    const result &r = from.run;
    if (!from.coordinates() || !r.iobs || !r.res) return;
    const Block blocks[] = {{"distance", m.distances, r.ndist, KIND_DISTANCE},
                            {"height difference", m.heightdiffs, r.ndifh, KIND_HEIGHT_DIFFERENCE},
                            {"direction", m.directions, r.ndir1, KIND_DIRECTION},
                            {"vertical angle", m.verticals, r.ndir2, KIND_VERTICAL}};
    size_t n = 0;
    for (const Block &block : blocks)
        for (int i = 0; i < block.count; i++, n++)
            if (r.iobs[n] >= 0 && (size_t)r.iobs[n] < block.list.size())
                results.residuals.push_back(make_residual(from, block, n));
}

void collect_kinds(const ResultSource &from, Results &results)
{
    if (!from.coordinates() || !from.tested()) return;
    const result &r = from.run;
    const int naz = selected(from.model.p.azimuths, from.model.p.nazimuths);
    const KindFields kinds[] = {
        {"distance", r.ndist, r.sdist, r.spdist, r.ichidist, r.nnormdist, r.nnormbdist, r.ntaudist, r.ntaubdist},
        {"height difference", r.ndifh, r.sdifh, r.spdifh, r.ichidifh, r.nnormdifh, r.nnormbdifh, r.ntaudifh,
         r.ntaubdifh},
        {"direction", r.ndir1, r.sdir1, r.spdir1, r.ichidir1, r.nnormdir1, r.nnormbdir1, r.ntaudir1, r.ntaubdir1},
        {"vertical angle", r.ndir2, r.sdir2, r.spdir2, r.ichidir2, r.nnormdir2, r.nnormbdir2, r.ntaudir2, r.ntaubdir2},
        {"azimuth", naz, r.saz, r.spaz, r.ichiaz, r.nnormaz, r.nnormbaz, r.ntauaz, r.ntaubaz}};
    for (const KindFields &kind : kinds)
        if (kind.count > 0) results.kinds.push_back(make_kind(kind));
}

} // namespace vornhost
