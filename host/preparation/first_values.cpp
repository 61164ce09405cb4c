#include "host/preparation/first_values.h"

#include <cmath>
#include <memory>

#include "host/input/names.h"
#include "host/system/temporary_file.h"
#include "vorn/result.h"
#include "host/preparation/sketch.h"
#include "vorn/vorn.h"

namespace vornhost {

namespace {

constexpr size_t most_points = 20; // named in lines of their own

using File = std::unique_ptr<FILE, int (*)(FILE *)>;

// Wants new approximate values and hears nothing else.
class Wish : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 1; }
};

// How the engine may start: from known stations, or from targets and pairs of stations alone.
enum class Way { KnownStations, Targets };

// A copy of the network for one computation of stations by the engine: what is placed is held,
// the rest is to be computed.
class Trial {
public:
    Trial(const Model &network, const Sketch &known) : model(network), sketch(known) {}
    bool run(Way way, FILE *report, Sketch &found);

private:
    void copy_points(Way way);
    void copy_observations();
    double raw_elevation(const measure_input &direction);
    void attach(FILE *report);
    bool take(Sketch &found) const;

    const Model &model;
    const Sketch &sketch;
    Wish wish;
    project p = project();
    std::vector<station_input> stations;
    std::vector<target_input> targets;
    std::vector<measure_input> distances, heightdiffs, directions, verticals, azimuths;
    std::vector<gps_input> baselines;
};

template <class Record> void hold(Record &r, const SketchPoint &point, double unit, int dim)
{
    r.status = STATUS_ON;
    r.ilump = r.iconn = 0;
    for (int k = 0; k < 3; k++) {
        r.x[k] = point.placed ? point.x[k] / unit : 0.0;
        if (k < dim) r.ix[k] = point.placed ? CODE_FIXED : CODE_FREE;
    }
}

void Trial::copy_points(Way way)
{
    const double unit = metres_per_unit(model.p);
    for (station_input s : model.stations.records) {
        if (s.status <= 0) continue;
        const SketchPoint &point = sketch.points[(size_t)sketch.find(s.name)];
        const bool known = point.placed && point.oriented && way == Way::KnownStations;
        hold(s, point, unit, model.p.dim);
        s.typ = known || (way == Way::KnownStations && !point.placed) ? 1 : 0;
        s.ilevel = 1;
        s.ir[0] = s.ir[1] = CODE_FIXED;
        s.ir[2] = known ? CODE_FIXED : CODE_FREE;
        s.r[2] = known ? -point.turn : 0.0;
        stations.push_back(s);
    }
    for (target_input t : model.targets.records) {
        if (t.status <= 0) continue;
        hold(t, sketch.points[(size_t)sketch.find(t.name)], unit, model.p.dim);
        targets.push_back(t);
    }
}

// The engine takes directions and vertical angles as parallel lists: each direction gets the
// vertical angle of its sight, or a level one.
void Trial::copy_observations()
{
    distances = model.distances.records;
    heightdiffs = model.heightdiffs.records;
    azimuths = model.azimuths.records;
    baselines = model.baselines.records;
    for (const measure_input &m : model.directions.records)
        if (m.typ > 0 && sketch.find(m.from) >= 0 && sketch.find(m.to) >= 0) directions.push_back(m);
    if (model.p.dim != 3) return;
    for (measure_input m : directions) {
        m.typ = KIND_VERTICAL;
        m.val = p.vtoraw(1, sketch.elevation(sketch.find(m.from), sketch.find(m.to)));
        verticals.push_back(m);
    }
}

template <class Record> void attach_list(std::vector<Record> &list, Record **array, int *count)
{
    *array = list.empty() ? nullptr : list.data();
    *count = (int)list.size();
}

void Trial::attach(FILE *report)
{
    p.pfeedback = &wish;
    p.out = report;
    p.irun = 0;
    p.idebug = 0;
    p.iearth = p.iredux = p.iphoto = p.lumpmethod = 0;
    p.runresults = nullptr;
    attach_list(stations, &p.stations, &p.nstations);
    attach_list(targets, &p.targets, &p.ntargets);
    attach_list(distances, &p.distances, &p.ndistances);
    attach_list(heightdiffs, &p.heightdiffs, &p.nheightdiffs);
    attach_list(directions, &p.directions, &p.ndirections);
    attach_list(verticals, &p.verticals, &p.nverticals);
    attach_list(azimuths, &p.azimuths, &p.nazimuths);
    attach_list(baselines, &p.baselines, &p.nbaselines);
    p.ngroups = p.ncameras = p.nimages = p.nlumpdefs = p.npairs = 0;
}

// Positions of the stations that were not placed. Targets are left: the engine gives those that
// it did not reach a place too.
bool Trial::take(Sketch &found) const
{
    const result *r = p.runresults;
    if (!r || !r->xpt || !r->ypt) return false;
    for (int i = 0; i < r->nstar; i++) {
        const int at = found.find(stations[(size_t)r->ihost[i]].name);
        SketchPoint &point = found.points[(size_t)at];
        if (point.placed) continue;
        if (!std::isfinite(r->xpt[i]) || !std::isfinite(r->ypt[i])) return false;
        point.x[0] = r->xpt[i];
        point.x[1] = r->ypt[i];
        point.placed = true;
    }
    return true;
}

bool Trial::run(Way way, FILE *report, Sketch &found)
{
    p = model.p;
    copy_points(way);
    copy_observations();
    attach(report);
    int code = 0;
    {
        vorn engine(&p);
        code = engine.vornstart();
    }
    const bool done = code == 0 && take(found);
    if (p.runresults) p.freerun(p.runresults);
    return done;
}

// Copies what the engine said behind its summary of the problem.
void copy_diagnosis(FILE *from, FILE *to)
{
    char line[4096];
    bool summary = true;
    rewind(from);
    while (fgets(line, sizeof line, from)) {
        const std::string text = line;
        summary = summary && (text == "\n" || text == "Summary\n" || text.find("D problem\n") == 1 ||
                              text.rfind("number of ", 0) == 0);
        if (!summary) fputs(line, to);
    }
}

// The whole computation.
class Computation {
public:
    Computation(Model &network, FILE *out) : model(network), report(out), sketch(network) {}
    FirstValues run();

private:
    int missing() const;
    int missing_stations() const;
    void make_frame();
    void ask_engine(Way way);
    void move_to_known_point();
    void write();
    void complain();
    void refuse_held();
    template <class Record> void name_held(const List<Record> &list);
    template <class Record> void write_list(List<Record> &list);
    template <class Record> void name_missing(const List<Record> &list, const char *kind);

    Model &model;
    FILE *report;
    Sketch sketch;
    bool framed = false; // the frame was made up
    int lone = -1;       // the only known point, when the frame was made up
    double target[2] = {0, 0};
    File diagnosis = File(nullptr, fclose); // report of the engine's first try
    FirstValues values;
};

int Computation::missing() const
{
    int n = 0;
    for (const SketchPoint &p : sketch.points) n += !p.placed;
    return n;
}

int Computation::missing_stations() const
{
    int n = 0;
    for (const SketchPoint &p : sketch.points) n += p.station && !p.placed;
    return n;
}

// Less than two points are known or carried there by baselines, and no orientation with one: the
// network is computed in a frame around the start of a baseline, which has the axes of the network,
// otherwise around the station with most distances, and moved to the known point at the end.
void Computation::make_frame()
{
    int known = 0;
    for (size_t i = 0; i < sketch.points.size(); i++) {
        if (!sketch.points[i].placed) continue;
        known++;
        lone = (int)i;
        if (sketch.points[i].oriented) known++;
    }
    if (known > 1) {
        lone = -1;
        return;
    }
    framed = true;
    const int start = sketch.baseline_start(), centre = start >= 0 ? start : sketch.best_centre();
    if (lone >= 0) {
        target[0] = sketch.points[(size_t)lone].x[0];
        target[1] = sketch.points[(size_t)lone].x[1];
        sketch.points[(size_t)lone].placed = false;
    }
    if (centre < 0) return;
    SketchPoint &p = sketch.points[(size_t)centre];
    p.placed = true;
    p.oriented = start < 0;
    p.x[0] = p.x[1] = 0.0;
}

// Has the engine compute the stations that are missing. A made-up frame is given up when the
// engine is to find a start of its own.
void Computation::ask_engine(Way way)
{
    if (missing_stations() == 0) return;
    Sketch found = sketch;
    if (framed && way == Way::Targets)
        for (SketchPoint &p : found.points) p.placed = p.oriented = false;
    File words(temporary_file(), fclose);
    const bool done = words && Trial(model, found).run(way, words.get(), found);
    if (!diagnosis) diagnosis = std::move(words);
    if (!done) return;
    sketch = found;
    sketch.carry();
}

void Computation::move_to_known_point()
{
    if (lone < 0) return;
    const double *x = sketch.points[(size_t)lone].x;
    const double dx = target[0] - x[0], dy = target[1] - x[1];
    for (SketchPoint &p : sketch.points) {
        p.x[0] += dx;
        p.x[1] += dy;
    }
}

template <class Record> void Computation::write_list(List<Record> &list)
{
    const double unit = metres_per_unit(model.p);
    for (Record &r : list.records) {
        if (r.status != STATUS_COMPUTE) continue;
        const SketchPoint &p = sketch.points[(size_t)sketch.find(r.name)];
        for (int k = 0; k < model.p.dim; k++)
            if (!is_held(r.ix[k])) r.x[k] = p.x[k] / unit;
        r.status = STATUS_ON;
    }
}

void Computation::write()
{
    move_to_known_point();
    if (model.p.dim == 3) sketch.carry_heights();
    write_list(model.stations);
    write_list(model.targets);
}

template <class Record> void Computation::name_missing(const List<Record> &list, const char *kind)
{
    for (size_t i = 0; i < list.size(); i++) {
        const Record &r = list.records[i];
        if (r.status != STATUS_COMPUTE || sketch.points[(size_t)sketch.find(r.name)].placed) continue;
        values.words.push_back(std::string("first coordinates of ") + kind + " " + shown_name(model, r.name) +
                               " could not be computed (" + place(model, list.where[i]) + ")");
    }
}

void Computation::complain()
{
    if (diagnosis) {
        fprintf(report, "\nFirst coordinates\n\n");
        copy_diagnosis(diagnosis.get(), report);
    }
    name_missing(model.stations, "station");
    name_missing(model.targets, "target");
    const size_t n = values.words.size();
    if (n > most_points) {
        values.words.resize(most_points);
        values.words.push_back("and of " + std::to_string(n - most_points) + " more points");
    }
    values.words.push_back("give their approximate coordinates, or observations that place them: directions from two "
                           "stations, a direction and a distance, or for a station directions to three points");
}

template <class Record> void Computation::name_held(const List<Record> &list)
{
    for (size_t i = 0; i < list.size(); i++) {
        const Record &r = list.records[i];
        if (r.status != STATUS_COMPUTE) continue;
        for (int k = 0; k < 2; k++)
            if (is_held(r.ix[k]))
                values.words.push_back(std::string(1, "xy"[k]) + " of point " + shown_name(model, r.name) +
                                       " is held, and its other coordinate cannot be computed in the axes of the "
                                       "network (" +
                                       place(model, list.where[i]) + ")");
    }
}

// In a made-up frame a point that holds one coordinate has no other that fits it.
void Computation::refuse_held()
{
    name_held(model.stations);
    name_held(model.targets);
    if (!values.words.empty()) values.words.push_back("give its approximate coordinates, or those of two points");
}

FirstValues Computation::run()
{
    const int wanted = missing();
    sketch.carry();
    make_frame();
    sketch.carry();
    for (const Way way : {Way::KnownStations, Way::Targets}) ask_engine(way);
    if (missing() > 0) {
        complain();
        return std::move(values);
    }
    if (framed) refuse_held();
    if (!values.words.empty()) return std::move(values);
    write();
    values.notes.push_back("first coordinates of " + std::to_string(wanted) +
                           (wanted == 1 ? " point were computed" : " points were computed"));
    return std::move(values);
}

template <class Record> bool any_missing(const List<Record> &list)
{
    for (const Record &r : list.records)
        if (r.status == STATUS_COMPUTE) return true;
    return false;
}

} // namespace

FirstValues compute_first_values(Model &model, FILE *report)
{
    if (model.p.dim == 1 || model.mode == Mode::Propagation || model.p.iphoto != 0) return {};
    if (!any_missing(model.stations) && !any_missing(model.targets)) return {};
    return Computation(model, report).run();
}

} // namespace vornhost
