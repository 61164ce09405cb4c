#include "host/own/road.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <unordered_set>

#include "host/own/components.h"
#include "host/own/covariances.h"
#include "host/own/exports.h"
#include "host/own/first_coordinates.h"
#include "host/own/item_names.h"
#include "host/own/refusals.h"
#include "host/run/determinacy_words.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

const std::string beside_camera = "the point stands in the plane of the camera, across its axis";

class Road {
public:
    Road(Model &model, Feedback &feedback, bool check, const RunWatch &its_watch)
        : network(model), user(feedback), checking(check), watch(its_watch)
    {
    }

    OwnOutcome run();

private:
    bool prepare();
    bool stop(Ending ending, std::vector<std::string> words);
    void adjust();
    void estimate_components();
    void leave_out();
    void account_for_image_points();
    void tell(std::string line) { user.feedback(&line[0]); }
    void note(const std::string &line);
    template <class Record> void remember_computed(const List<Record> &list)
    {
        for (const Record &r : list.records)
            if (r.status == STATUS_COMPUTE) computed.insert(r.name);
    }
    std::vector<int> joint_unknowns() const;
    va::Options options() const;
    va::Watch told() const;

    Model &network;
    Feedback &user;
    const bool checking;
    const RunWatch &watch;
    std::unordered_set<std::string> computed; // points that get first coordinates
    OwnOutcome outcome;
};

void Road::note(const std::string &line)
{
    outcome.run.prepared.notes.push_back(line);
    tell(line);
}

bool Road::stop(Ending ending, std::vector<std::string> words)
{
    if (words.empty()) return false;
    outcome.ending = ending;
    outcome.run.words = std::move(words);
    return true;
}

// From the records to numbers with first values; false when it ends there.
bool Road::prepare()
{
    if (stop(Ending::not_available, not_adjusted_here(network))) return false;
    if (stop(Ending::bad_import, take_imports(network))) return false;
    watch.begin("first coordinates");
    remember_computed(network.stations);
    remember_computed(network.targets);
    FirstNumbers first = make_first_numbers(network);
    outcome.numbers = std::move(first.numbers);
    if (stop(Ending::bad_import, outcome.numbers.words)) return false;
    if (stop(Ending::no_first_coordinates, first.words)) return false;
    for (const std::string &line : first.notes) note(line);
    watch.begin("equations");
    for (const std::string &line : outcome.numbers.notes) note(line);
    return true;
}

// What the adjustment tells, in words.
va::Watch Road::told() const
{
    static const char *const steps[] = {"equations", "datum", "order", "factor", "inverse", "statistics"};
    va::Watch w;
    w.begin = [this](va::Step step) { watch.begin(steps[(int)step]); };
    if (watch.progress) w.progress = [this](double share) { watch.progress->share(share); };
    w.stop = watch.stop;
    return w;
}

// Unknowns whose covariances are wanted, all with all: those of the export first.
std::vector<int> Road::joint_unknowns() const
{
    std::vector<int> unknowns = exported_unknowns(network, outcome.numbers);
    const std::vector<int> more = covariance_unknowns(network, outcome.numbers);
    unknowns.insert(unknowns.end(), more.begin(), more.end());
    return unknowns;
}

va::Options Road::options() const
{
    va::Options o;
    o.watch = told();
    o.iterate = network.mode != Mode::Propagation;
    o.statistics = !checking && network.mode != Mode::Solution;
    o.residuals = network.mode != Mode::Solution && network.residual_statistics;
    o.threads = network.threads > 0 ? network.threads : std::thread::hardware_concurrency() > 1 ? 2 : 1;
    for (const PointPlace &point : outcome.numbers.points)
        o.made.push_back(computed.count(point_name(network, point)) > 0);
    o.limits.steps = network.steps;
    o.limits.length = network.p.convergence;
    if (o.statistics) o.pairs = wanted_pairs(network, outcome.numbers);
    if (o.statistics) o.joint = joint_unknowns();
    return o;
}

// Accounts name what is deselected; lines of image files have an account of their own.
void deselect(Model &network, const ItemPlace &item)
{
    const auto off = [&](List<measure_input> &list) {
        measure_input &m = list.records[(size_t)item.record];
        if (m.typ > 0) m.typ = -m.typ;
    };
    const auto unused = [&](List<SightRow> &list) { list.records[(size_t)item.record].use = false; };
    switch (item.item) {
    case Item::horizontal_distance: return unused(network.horizontal_distances);
    case Item::bearing: return unused(network.bearings);
    case Item::angle: return unused(network.angles);
    case Item::scale_bar: return unused(network.scale_bars);
    case Item::distance: return off(network.distances);
    case Item::height_difference: return off(network.heightdiffs);
    case Item::direction: return off(network.directions);
    case Item::vertical_angle: return off(network.verticals);
    case Item::azimuth: return off(network.azimuths);
    default: return;
    }
}

// Observations without a derivative take no part; each is named.
void Road::leave_out()
{
    for (const int i : outcome.adjustment.left_out) {
        const ItemName name = item_name(network, outcome.numbers, i);
        const bool image = outcome.numbers.items[(size_t)i].item == Item::image_point;
        note(item_text(name) + ": left out, " +
             (image ? beside_camera : "its ends stand in one place or straight above one another"));
        deselect(network, outcome.numbers.items[(size_t)i]);
    }
}

// Image points stand in files of their own, where nothing can be deselected.
void Road::account_for_image_points()
{
    std::vector<Account> &accounts = outcome.run.accounts;
    const auto points =
        std::find_if(accounts.begin(), accounts.end(), [](const Account &a) { return a.kind == "image points"; });
    for (const int i : outcome.adjustment.left_out) {
        if (outcome.numbers.items[(size_t)i].item != Item::image_point || points == accounts.end()) continue;
        const ItemName name = item_name(network, outcome.numbers, i);
        points->used--;
        points->left_out.push_back({name.file, name.line, name.from, name.to, beside_camera});
    }
}

void Road::estimate_components()
{
    if (network.components == Components::none || outcome.adjustment.status != va::Status::adjusted) return;
    if (outcome.adjustment.statistics.rows.empty() || network.mode != Mode::Statistics) return;
    std::vector<std::string> notes;
    outcome.components = find_components(network, outcome.numbers, outcome.adjustment, options(),
                                         network.components == Components::use, notes);
    for (const std::string &line : notes) note(line);
}

void Road::adjust()
{
    outcome.adjustment = va::adjust(&outcome.numbers.model, options());
    if (outcome.adjustment.status == va::Status::stopped) {
        outcome.ending = Ending::stopped;
        return;
    }
    estimate_components();
    const va::Iteration &i = outcome.adjustment.iteration;
    if (i.steps > 0) tell(std::to_string(i.steps) + (i.steps == 1 ? " iteration" : " iterations"));
    leave_out();
    judge(network, outcome);
    const va::Datum &datum = outcome.adjustment.determinacy.datum;
    if (datum.state != va::DatumState::loose) outcome.datum = datum_line(datum);
    if (!outcome.datum.empty()) tell("datum: " + outcome.datum);
    if (outcome.adjusted())
        for (const std::string &line : weak_notes(network, outcome)) note(line);
}

OwnOutcome Road::run()
{
    const auto start = std::chrono::steady_clock::now();
    const AccountKeeper keeper(network);
    if (prepare()) adjust();
    if (watch.stopped()) outcome.ending = Ending::stopped;
    if (outcome.ending == Ending::stopped) return std::move(outcome);
    watch.begin("writing");
    const size_t told = outcome.run.prepared.notes.size();
    if (!checking) write_export(network, outcome);
    for (size_t i = told; i < outcome.run.prepared.notes.size(); i++) tell(outcome.run.prepared.notes[i]);
    outcome.run.reached = outcome.adjusted() ? Stage::Done : Stage::Refused;
    outcome.run.accounts = keeper.close(network, outcome.numbers.left_out);
    account_for_image_points();
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return std::move(outcome);
}

} // namespace

OwnOutcome run_own(Model &network, Feedback &feedback, bool check, const RunWatch &watch)
{
    return Road(network, feedback, check, watch).run();
}

} // namespace vornhost
