// What belongs to a reference system: deflections of the vertical, transformations into the systems of baselines and of
// observed points, and these points.

#include "adjust/ellipsoid.h"
#include "host/own/builder.h"
#include "host/own/earth.h"

namespace vornhost {

namespace {

namespace va = vornadjust;
using V = va::Vec3<double>;

bool weighted(int code) { return code == CODE_WEIGHTED; }

// A free or weighted parameter is an unknown.
va::Code code_of(int code) { return code == CODE_FIXED ? va::Code::fixed : va::Code::free; }

bool is_neutral(const TransformationRow &t)
{
    for (int k = 0; k < 7; k++)
        if (t.code[k] != CODE_FIXED || t.value[k] != (k == 6 ? 1.0 : 0.0)) return false;
    return true;
}

// What the observations of a transformation are; shifts act on points alone.
struct Use {
    bool vectors = false, points = false;
};

std::vector<Use> uses_of(const Model &m)
{
    std::vector<Use> uses(m.transformations.size());
    for (size_t i = 0; i < m.baselines.size(); i++) {
        const int t = note_at(m.baselines.notes.transformation, i);
        if (t >= 0 && m.baselines.records[i].status > 0) uses[(size_t)t].vectors = true;
    }
    for (size_t i = 0; i < m.coordinates.size(); i++) {
        const int t = note_at(m.coordinates.notes.transformation, i);
        if (t >= 0 && m.coordinates.records[i].use) uses[(size_t)t].points = true;
    }
    return uses;
}

// Into geocentric coordinates of the network's datum, opened once for each system and epoch.
class Frames {
public:
    explicit Frames(const Builder &builder) : b(builder) {}

    // Nothing where PROJ has no way, with a word in `fault`.
    std::optional<V> moved(const std::string &system, double epoch, const V &x, std::string *fault)
    {
        const auto [at, is_new] = opened.try_emplace({system, epoch});
        if (is_new) at->second = Conversion::open(*b.reference, system, fault, epoch);
        if (!at->second) {
            if (fault->empty()) *fault = "PROJ has no way from " + system;
            return std::nullopt;
        }
        if (!at->second->geocentric()) {
            *fault = system + " is no geocentric reference system";
            return std::nullopt;
        }
        const std::optional<Place3> p = (*at->second)(x.x, x.y, x.z);
        if (!p) *fault = "PROJ has no way from " + system + " at this place";
        if (!p) return std::nullopt;
        return va::geocentric(b.reference->ellipsoid(),
                              va::GeographicPlace<double>{p->at.latitude, p->at.longitude, p->height});
    }

private:
    const Builder &b;
    std::map<std::pair<std::string, double>, std::optional<Conversion>> opened;
};

void fail(Builder &b, Source at, const std::string &why)
{
    b.numbers.words.push_back(place(b.network, at) + ": " + why);
}

// An observed point in geocentric coordinates, for first coordinates in those of the grid.
void add_point(Builder &b, Frames &frames, int record)
{
    const List<VectorRow> &list = b.network.coordinates;
    VectorRow &row = b.network.coordinates.records[(size_t)record];
    if (!row.use) return;
    va::Observation o;
    o.kind = va::Kind::position;
    o.from = b.point(record_name(b.network, row.from));
    o.factor = b.network.apriori.coordinate;
    std::copy(row.sigma, row.sigma + 3, o.sigma);
    row.use = o.from >= 0 && !b.leave_out(o, list.where[(size_t)record]);
    if (!row.use) return;
    const int t = note_at(list.notes.transformation, (size_t)record);
    const TransformationRow *known = t < 0 ? nullptr : &b.network.transformations.records[(size_t)t];
    const bool other = known && !known->system.empty();
    if (known) o.motion_from = b.transformations[(size_t)t];
    std::string fault;
    const std::optional<V> x =
        frames.moved(other ? known->system : b.network.crs.coordinates, other ? known->epoch : 0.0,
                     {row.value[0], row.value[1], row.value[2]}, &fault);
    if (!x) return fail(b, list.where[(size_t)record], fault);
    const auto g = va::geographic(b.reference->ellipsoid(), *x);
    const auto grid = b.reference->grid({g.latitude, g.longitude});
    const auto undulation = b.reference->undulation({g.latitude, g.longitude});
    if (!grid || !undulation)
        return fail(b, list.where[(size_t)record], "the point lies where the reference system does not reach");
    const double at[3] = {grid->north, grid->east, g.height - *undulation};
    for (int k = 0; k < 3; k++) o.value[k] = at[k] - b.numbers.origin[k];
    b.observe(o, {Item::observed_point, record, 0});
    b.numbers.framed[(int)b.numbers.items.size() - 1] = {x->x, x->y, x->z};
    for (int k = 0; k < 3; k++) b.correlate(list.notes, (size_t)record, k, k);
}

} // namespace

void add_deflections(Builder &b)
{
    const List<DeflectionRow> &list = b.network.deflections;
    for (size_t i = 0; i < list.size(); i++) {
        const DeflectionRow &row = list.records[i];
        const int point = b.point(record_name(b.network, row.point));
        if (point < 0) continue;
        const va::Code codes[2] = {row.sigma[0] > 0.0 ? va::Code::free : va::Code::fixed,
                                   row.sigma[1] > 0.0 ? va::Code::free : va::Code::fixed};
        b.numbers.model.add_deflection(point, row.value, codes);
        b.numbers.deflections.push_back((int)i);
    }
}

void add_transformations(Builder &b)
{
    const List<TransformationRow> &list = b.network.transformations;
    const std::vector<Use> uses = uses_of(b.network);
    b.transformations.assign(list.size(), -1);
    for (size_t i = 0; i < list.size(); i++) {
        const TransformationRow &row = list.records[i];
        if (is_neutral(row) || (!uses[i].vectors && !uses[i].points)) continue;
        va::Code codes[7];
        for (int k = 0; k < 7; k++) codes[k] = k < 3 && !uses[i].points ? va::Code::fixed : code_of(row.code[k]);
        MotionPlace place;
        place.transformation = (int)i;
        b.transformations[i] = b.numbers.model.add_motion(row.value, codes);
        b.numbers.motions.push_back(place);
    }
}

bool is_geocentric(const Model &network, size_t row)
{
    return !network.crs.coordinates.empty() && network.coordinates.records[row].components() == 3;
}

void add_observed_points(Builder &b)
{
    if (b.network.crs.coordinates.empty() || !b.reference) return;
    Frames frames(b);
    for (size_t i = 0; i < b.network.coordinates.size(); i++)
        if (is_geocentric(b.network, i)) add_point(b, frames, (int)i);
}

void add_weighted_on_earth(Builder &b)
{
    const va::Model &m = b.numbers.model;
    for (size_t d = 0; d < m.deflections.size(); d++) {
        const int record = b.numbers.deflections[d];
        const DeflectionRow &row = b.network.deflections.records[(size_t)record];
        for (int k = 0; k < 2; k++)
            if (row.sigma[k] > 0.0)
                observe_unknown(b, m.deflections[d].first + k, row.sigma[k], {Item::weighted_deflection, record, k});
    }
    for (size_t i = 0; i < b.transformations.size(); i++) {
        const int motion = b.transformations[i];
        const TransformationRow &row = b.network.transformations.records[i];
        for (int k = 0; k < 7 && motion >= 0; k++) {
            const int unknown = m.motions[(size_t)motion].first + k;
            if (weighted(row.code[k]) && m.estimated(unknown))
                observe_unknown(b, unknown, row.sigma[k], {Item::weighted_parameter, (int)i, k});
        }
    }
}

void set_frames_of_baselines(Builder &b, const GridHorizon &middle)
{
    Frames frames(b);
    for (size_t i = 0; i < b.numbers.items.size(); i++) {
        if (b.numbers.items[i].item != Item::baseline) continue;
        const size_t row = (size_t)b.numbers.items[i].record;
        const int t = note_at(b.network.baselines.notes.transformation, row);
        if (t < 0 || b.network.transformations.records[(size_t)t].system.empty()) continue;
        const TransformationRow &known = b.network.transformations.records[(size_t)t];
        const double *d = b.network.baselines.records[row].dx;
        std::string fault;
        const auto from = frames.moved(known.system, known.epoch, middle.place, &fault);
        const auto to = frames.moved(known.system, known.epoch, middle.place + V{d[0], d[1], d[2]}, &fault);
        if (!from || !to) {
            fail(b, b.network.transformations.where[(size_t)t], fault);
            return;
        }
        const V v = *to - *from;
        b.numbers.framed[(int)i] = {v.x, v.y, v.z};
        b.numbers.raw[(int)i] = {d[0], d[1], d[2]};
    }
}

} // namespace vornhost
