#include "host/formats/model_draft.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/earth/reference.h"
#include "host/formats/number_text.h"
#include "host/input/angle.h"
#include "host/own/builder.h"
#include "host/own/rounds.h"
#include "host/own/stands.h"

namespace vornhost {

namespace {

constexpr int covariance_place[6] = {0, 3, 5, 1, 2, 4}; // of xx, yy, zz, xy, xz, yz in a gps_input

// Reads one model; the members are what its steps share.
class Drafter {
public:
    Drafter(const Model &its_network, Draft &its_draft, Faults &all, bool geocentric)
        : network(its_network), draft(its_draft), faults(all), rounds(find_rounds(its_network))
    {
        if (geocentric) open_reference();
    }

    bool make()
    {
        refuse_settings();
        draft.file = network.path;
        draft.title = network.title;
        draft.dimension = network.p.dim;
        draft.units.length = "m";
        draft.units.angle = draft.units.sigma_angle = "gon";
        metres = metres_per_unit(network.p);
        for (size_t i = 0; i < network.stations.size(); i++) add_station(i);
        for (size_t i = 0; i < network.targets.size(); i++)
            add_point(network.targets.records[i], network.targets.where[i], false);
        for (const SetupRecord &setup : network.setups.records) check_setup(setup);
        add_all_rows();
        if (!network.pairs.records.empty()) note(network.pairs.where[0], "table pairs is not written");
        return faults.empty();
    }

private:
    void refuse(Source at, const std::string &what, const std::string &remedy) { faults.add(at, what, remedy); }
    void note(Source at, const std::string &text) { draft.notes.push_back({at, text}); }

    void refuse_settings()
    {
        const project &p = network.p;
        const struct {
            bool there;
            const char *what;
        } beyond[] = {
            {network.crs.given() && !reference, "a reference system ([crs])"},
            {p.iearth != 0, "an earth model"},
            {p.iredux == 9 || (p.iredux == 2) || (p.iredux != 0 && p.dim == 2), "this reduction of distances"},
            {!network.images.records.empty(), "images"},
            {!network.lumpdefs.records.empty(), "lumps"},
            {network.centring.any(), "errors of centring"},
            {network.unknown_value.line > 0, "a plan with values that are not known"},
            {p.confile[0] != '\0', "a connected net"}};
        for (const auto &[there, what] : beyond)
            if (there)
                refuse(Source(), std::string(what) + " cannot be written in another format", "take it out of the file");
    }

    std::string name(int point) const { return std::string(network.keys.name(record_name(network, point))); }
    std::string name(const char *field) const { return std::string(network.keys.name(field)); }

    void add_station(size_t i)
    {
        const station_input &s = network.stations.records[i];
        const Source at = network.stations.where[i];
        add_point(s, at, true);
        if (s.status <= 0) return;
        const bool held = is_held(s.ir[2]) && network.p.dim > 1;
        if (s.ilevel != 1 || held)
            refuse(at,
                   std::string(held ? "a held orientation" : "an instrument that is not upright") +
                       " cannot be written in another format",
                   "take it out of the row");
    }

    void check_setup(const SetupRecord &setup)
    {
        if (setup.levelled && !is_held(setup.ir[2])) return;
        refuse(Source(), "set-up " + quote(setup.word) + " has an orientation that is held, or is not upright",
               "take it out of the table setups");
    }

    // In three dimensions points of a grid are written in geocentric coordinates.
    void open_reference()
    {
        std::string fault;
        if (!network.crs.given() || network.crs.local() || network.p.dim != 3) return;
        reference = Reference::open(network.crs, &fault);
        if (!fault.empty()) refuse(Source(), fault, "correct [crs]");
    }

    // A point with all its coordinates, in metres.
    void move_from_grid(DraftPoint &point, Source at)
    {
        if (!reference || !point.value[0] || !point.value[1] || !point.value[2]) return;
        const auto place = reference->geographic({*point.value[0], *point.value[1]});
        const auto undulation = place ? reference->undulation(*place) : std::nullopt;
        if (!undulation) {
            refuse(at, "point " + quote(point.name) + " lies where the reference system does not reach",
                   "correct its coordinates");
            return;
        }
        const vornadjust::Vec3<double> x = vornadjust::geocentric(
            reference->ellipsoid(),
            vornadjust::GeographicPlace<double>{place->latitude, place->longitude, *point.value[2] + *undulation});
        point.value = {x.x, x.y, x.z};
    }

    // What is geocentric already: baselines between marks, and points that were observed so.
    template <class Record> void check_geocentric(const List<Record> &list, size_t i, bool is)
    {
        if (!reference) return;
        const bool moved = note_at(list.notes.transformation, i) >= 0;
        if (moved || !is)
            refuse(list.where[i],
                   moved ? "a transformation cannot be written in another format"
                         : "what is not geocentric between marks cannot be written there",
                   "take it out of the row");
    }

    template <class Record> void add_point(const Record &record, Source at, bool station)
    {
        DraftPoint point;
        point.name = name(record.name);
        point.station = station;
        point.where = at;
        point.off = record.status <= 0;
        for (size_t axis = 0; axis < 3; axis++) {
            point.code[axis] = record.ix[axis] == 0 ? CODE_FREE : record.ix[axis] < 0 ? CODE_ABSENT : record.ix[axis];
            const bool known = record.status != STATUS_COMPUTE || is_held(point.code[axis]);
            if (known && point.code[axis] != CODE_ABSENT) point.value[axis] = record.x[axis] * metres;
            if (point.code[axis] == CODE_WEIGHTED) point.sigma[axis] = record.sx[axis] * metres;
        }
        if (record.ilump != 0 || record.iconn != 0)
            refuse(at, "point " + quote(point.name) + " belongs to a lump or a connected net",
                   "take it out of the row");
        move_from_grid(point, at);
        draft.points.push_back(std::move(point));
    }

    // Rows. A kind with a factor in [apriori] has weights as if its standard deviations were smaller by it.

    void add_all_rows()
    {
        const project &p = network.p;
        const Model::Apriori &own = network.apriori;
        add_measures(DraftKind::distance, network.distances, p.sdist);
        add_sights(DraftKind::horizontal_distance, network.horizontal_distances, own.horizontal_distance);
        add_measures(DraftKind::height_difference, network.heightdiffs, p.sdifh);
        add_measures(DraftKind::direction, network.directions, p.sdir1);
        add_measures(DraftKind::vertical_angle, network.verticals, p.sdir2);
        add_measures(DraftKind::azimuth, network.azimuths, p.saz);
        add_sights(DraftKind::azimuth, network.bearings, own.bearing);
        add_sights(DraftKind::angle, network.angles, own.angle);
        for (size_t i = 0; i < network.baselines.size(); i++) add_baseline(i);
        add_vectors(DraftKind::coordinates, network.coordinates, own.coordinate);
        add_vectors(DraftKind::coordinate_difference, network.coordinate_differences, own.coordinate_difference);
        add_sights(DraftKind::distance, network.scale_bars, own.scale_bar);
        for (const CovarianceRecord &record : network.covariances.records) add_covariance(record);
    }

    template <class Record> DraftRow row_of(DraftKind kind, const List<Record> &list, size_t i, double factor)
    {
        DraftRow row;
        row.where = list.where[i];
        row.id = note_at(list.notes.id, i);
        const int group = note_at(list.notes.covariance, i);
        if (group >= 0 && factor != 1.0)
            refuse(row.where,
                   "a covariance of observations that have a weight in [apriori] cannot be written in another format",
                   "take the weight out of the file");
        if (group >= 0) {
            row.covariance = network.covariances.records[(size_t)group].name;
            row_places.push_back({group, note_at(list.notes.place, i), kind, draft.of(kind).size()});
        }
        return row;
    }

    double gon(double raw) const { return in_angle_unit(ANGLE_GON, network.p.iangle, raw); }

    void add_measures(DraftKind kind, const List<measure_input> &list, double factor)
    {
        for (size_t i = 0; i < list.size(); i++) {
            const measure_input &m = list.records[i];
            DraftRow row = row_of(kind, list, i, factor);
            row.from = name(m.from);
            row.to = name(m.to);
            row.use = m.typ > 0;
            const bool angle = kind != DraftKind::distance && kind != DraftKind::height_difference;
            row.value[0] = angle ? gon(m.val) : m.val * metres;
            if (m.sig > 0.0) row.sigma[0] = (angle ? gon(m.sig) : m.sig * metres) / factor;
            if (kind == DraftKind::vertical_angle && network.p.izenith == 0)
                row.value[0] = tidy(100.0 - *row.value[0], 100.0);
            if (kind == DraftKind::azimuth)
                row.value[0] = tidy(*row.value[0] - from_radians(ANGLE_GON, network.p.azrot), 400.0);
            if (kind == DraftKind::height_difference && network.p.dim != 2)
                row.value[0] = *row.value[0] + m.h1 - m.h2; // between the marks
            if (heights_count(kind)) set_heights(m, row);
            if (kind == DraftKind::direction) set_round(note_at(list.notes.setup, i), i, row);
            if (!std::isnan(note_at(list.notes.refraction, i, unknown_note)))
                refuse(row.where, "a refraction of its own cannot be written in another format",
                       "take it out of the row");
            if (std::abs(m.typ) == KIND_DISTANCE_CONSTANTS)
                refuse(row.where, "a distance with constants of its instrument cannot be written in another format",
                       "take the constants out of the row");
            draft.of(kind).push_back(std::move(row));
        }
    }

    bool heights_count(DraftKind kind) const
    {
        if (kind == DraftKind::distance) return network.p.dim == 3 && !network.between_marks;
        return kind == DraftKind::vertical_angle;
    }

    static void set_heights(const measure_input &m, DraftRow &row)
    {
        if (m.h1 != 0.0) row.h1 = m.h1;
        if (m.h2 != 0.0) row.h2 = m.h2;
    }

    // Rounds under one zero share the word of their set-up.
    void set_round(int setup, size_t i, DraftRow &row) const
    {
        row.setup = setup >= 0 ? network.setups.records[(size_t)setup].word : std::string();
        const int zero = i < rounds.orientation.size() ? rounds.orientation[i] : 0;
        if (zero > 0) row.set = std::to_string(zero);
    }

    void add_sights(DraftKind kind, const List<SightRow> &list, double factor)
    {
        const bool angle = kind == DraftKind::angle || kind == DraftKind::azimuth;
        for (size_t i = 0; i < list.size(); i++) {
            const SightRow &s = list.records[i];
            DraftRow row = row_of(kind, list, i, factor);
            if (kind == DraftKind::angle) row.at = name(s.from);
            row.from = name(kind == DraftKind::angle ? s.to : s.from);
            row.to = name(kind == DraftKind::angle ? s.third : s.to);
            row.use = s.use;
            row.value[0] = angle ? from_radians(ANGLE_GON, s.value) : s.value;
            if (s.sigma > 0.0) row.sigma[0] = (angle ? from_radians(ANGLE_GON, s.sigma) : s.sigma) / factor;
            if (s.constants)
                refuse(row.where, "a distance with constants of its instrument cannot be written in another format",
                       "take the constants out of the row");
            draft.of(kind).push_back(std::move(row));
        }
    }

    void add_baseline(size_t i)
    {
        const gps_input &g = network.baselines.records[i];
        DraftRow row = row_of(DraftKind::baseline, network.baselines, i, network.p.sgps);
        row.from = name(g.from);
        row.to = name(g.to);
        row.use = g.status > 0 && network.p.igps != 0;
        const double h1 = note_at(network.baselines.notes.h1, i, 0.0), h2 = note_at(network.baselines.notes.h2, i, 0.0);
        for (size_t axis = 0; axis < 3; axis++) row.value[axis] = g.dx[axis];
        check_geocentric(network.baselines, i, h1 == 0.0 && h2 == 0.0);
        // The verticals of a network without an earth model are parallel to z.
        if (network.p.dim != 2 && (h1 != 0.0 || h2 != 0.0)) row.value[2] = *row.value[2] + h1 - h2;
        for (size_t k = 0; k < 6 && row.covariance.empty(); k++)
            row.product[k] = g.cov[covariance_place[k]] / (network.p.sgps * network.p.sgps);
        draft.of(DraftKind::baseline).push_back(std::move(row));
    }

    void add_vectors(DraftKind kind, const List<VectorRow> &list, double factor)
    {
        for (size_t i = 0; i < list.size(); i++) {
            const VectorRow &v = list.records[i];
            DraftRow row = row_of(kind, list, i, factor);
            row.from = name(v.from);
            if (v.to >= 0) row.to = name(v.to);
            check_geocentric(list, i, is_geocentric(network, i));
            row.use = v.use;
            for (size_t axis = 0; axis < 3; axis++) {
                if (!v.given[axis]) continue;
                row.value[axis] = v.value[axis];
                if (v.sigma[axis] > 0.0) row.sigma[axis] = v.sigma[axis] / factor;
            }
            draft.of(kind).push_back(std::move(row));
        }
    }

    // Square roots of the elements are in metres, and in radians for angles.
    void add_covariance(const CovarianceRecord &record)
    {
        const int group = (int)(&record - network.covariances.records.data());
        DraftCovariance out;
        out.name = record.name;
        out.width = (size_t)record.width;
        out.where = network.covariances.where[(size_t)group];
        std::vector<double> scale((size_t)record.size, 1.0);
        out.components.resize((size_t)record.size);
        for (const RowPlace &place : row_places) {
            if (place.group != group) continue;
            const DraftRow &row = draft.of(place.kind)[place.row];
            int at = place.first;
            for (int axis = 0; axis < 3; axis++) {
                if (!row.value[(size_t)axis]) continue;
                out.components[(size_t)at] = {place.kind, place.row, axis};
                const double gon_per_radian = from_radians(ANGLE_GON, 1.0);
                // The record counts vertical angles from the horizon.
                const double angle = place.kind == DraftKind::vertical_angle ? -gon_per_radian : gon_per_radian;
                scale[(size_t)at++] = is_angle(place.kind) ? angle : 1.0;
            }
        }
        for (int i = 0; i < record.size; i++)
            for (int j = i; j <= std::min(i + record.width, record.size - 1); j++)
                out.elements.push_back(record(i, j) * scale[(size_t)i] * scale[(size_t)j]);
        draft.covariances.push_back(std::move(out));
    }

    static bool is_angle(DraftKind kind)
    {
        return kind == DraftKind::direction || kind == DraftKind::vertical_angle || kind == DraftKind::azimuth ||
               kind == DraftKind::angle;
    }

    struct RowPlace {
        int group, first; // number of the covariance, place of the first component in it
        DraftKind kind;
        size_t row;
    };

    const Model &network;
    Draft &draft;
    Faults &faults;
    const Rounds rounds;
    std::optional<Reference> reference; // where points are to be geocentric
    double metres = 1.0;                // in the unit of the records
    std::vector<RowPlace> row_places;
};

} // namespace

bool draft_of(const Model &network, Draft &draft, Faults &faults, bool geocentric)
{
    draft = Draft();
    return Drafter(network, draft, faults, geocentric).make();
}

} // namespace vornhost
