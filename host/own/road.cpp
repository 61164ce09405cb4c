#include "host/own/road.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <unordered_set>

#include "adjust/robust.h"

#include "host/own/centring.h"
#include "host/own/components.h"
#include "host/own/covariances.h"
#include "host/own/derived.h"
#include "host/own/deselect.h"
#include "host/own/doubt_words.h"
#include "host/own/earth.h"
#include "host/own/exports.h"
#include "host/own/first_coordinates.h"
#include "host/own/item_names.h"
#include "host/own/joint_tests.h"
#include "host/own/parts.h"
#include "host/own/refusals.h"
#include "host/own/round_doubts.h"
#include "host/own/snooping.h"
#include "host/results/test_rule.h"
#include "host/run/determinacy_words.h"
#include "host/system/file_disk.h"
#include "host/system/process.h"

namespace vornhost {

namespace {

namespace va = vornadjust;

constexpr int weakest_listed = 5; // pairs of points
constexpr double senseless = 3;   // standard deviation of unit weight, from which on readings stand in the wrong place
constexpr size_t large = 100000;  // observations, from which on memory counts
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
    std::vector<std::string> open_reference();
    void place_again();
    void look_over(bool placed);
    bool shares_rows(const AccountKeeper &keeper);
    bool stop(Ending ending, std::vector<std::string> words);
    void adjust();
    std::vector<std::string> adjust_by_weights();
    void estimate_components();
    void leave_out();
    void account_for_image_points();
    void tell(std::string line) { user.feedback(&line[0]); }
    void note(const std::string &line);
    void note_of_part(const std::string &line);
    bool by_parts() const { return !network.share.whole(); }
    void bring_together(const AccountKeeper &keeper);
    template <class Record> void remember_computed(const List<Record> &list)
    {
        for (const Record &r : list.records)
            if (r.status == STATUS_COMPUTE) computed.insert(r.name);
    }
    std::vector<int> joint_unknowns() const;
    va::Options options() const;
    void set_tests(va::Options &options) const;
    va::Watch told() const;

    Model &network;
    Feedback &user;
    const bool checking;
    const RunWatch &watch;
    std::unordered_set<std::string> computed; // points that get first coordinates
    va::OwnObservations own_observations;     // of a network that is read by parts
    std::vector<std::string> notes_of_part;   // which the first process tells with those of the others
    OwnOutcome outcome;
};

void Road::note(const std::string &line)
{
    outcome.run.prepared.notes.push_back(line);
    tell(line);
}

// Of observations, of which each process may have others.
void Road::note_of_part(const std::string &line)
{
    if (by_parts())
        notes_of_part.push_back(line);
    else
        note(line);
}

bool Road::stop(Ending ending, std::vector<std::string> words)
{
    if (by_parts() && any_has(*watch.ranks, !words.empty())) throw WholeWanted();
    if (words.empty()) return false;
    outcome.ending = ending;
    outcome.run.words = std::move(words);
    return true;
}

// Closures, and what looks wrong, before anything is adjusted. `placed`: all points have first coordinates.
void Road::look_over(bool placed)
{
    if (by_parts()) {
        note("read by parts: closures and values that look wrong were not looked for");
        return;
    }
    watch.begin("closures");
    outcome.closures = closures::find_closures(outcome.numbers.model, placed);
    for (const std::string &line : doubt_notes(network, outcome.numbers, placed && computed.empty())) note(line);
}

// The reference system of the network; why not, where it has one that cannot be had.
std::vector<std::string> Road::open_reference()
{
    if (!network.crs.given() || network.crs.local()) return {};
    std::string fault;
    std::optional<Reference> reference = Reference::open(network.crs, &fault);
    if (!reference) return {fault + " (" + network.path + ")"};
    outcome.reference = std::make_shared<const Reference>(std::move(*reference));
    return {};
}

// From the records to numbers with first values; false when it ends there.
bool Road::prepare()
{
    if (by_parts()) watch.ranks->begin();
    if (stop(Ending::not_available, not_adjusted_here(network))) return false;
    if (stop(Ending::bad_import, take_imports(network))) return false;
    if (stop(Ending::not_available, open_reference())) return false;
    watch.begin("first coordinates");
    remember_computed(network.stations);
    remember_computed(network.targets);
    FirstNumbers first = make_first_numbers(network, outcome.reference.get(), watch.ranks);
    outcome.numbers = std::move(first.numbers);
    if (stop(Ending::bad_import, outcome.numbers.words)) return false;
    const bool speaks = !watch.ranks || watch.ranks->own() == 0;
    const bool placed = first.words.empty(), on_earth = network.crs.given();
    if (on_earth && placed &&
        stop(Ending::not_available, set_on_earth(network, outcome.reference.get(), outcome.numbers)))
        return false;
    if (speaks && network.mode != Mode::Propagation && (placed || !on_earth)) look_over(placed);
    if (stop(Ending::no_first_coordinates, first.words)) return false;
    for (const std::string &line : first.notes) note_of_part(line);
    watch.begin("equations");
    share_centring(network, outcome.numbers);
    if (by_parts()) own_observations = number_observations(network, outcome.numbers);
    for (const std::string &line : outcome.numbers.notes) note_of_part(line);
    return true;
}

// What the adjustment tells, in words.
va::Watch Road::told() const
{
    static const char *const steps[] = {"equations", "datum", "order", "factor", "inverse", "statistics"};
    va::Watch w;
    w.begin = [this](va::Step step) {
        if (step == va::Step::inverse && outcome.numbers.items.size() > large) give_back_memory(); // what is behind it
        watch.begin(steps[(int)step]);
    };
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
    o.ranks = watch.ranks;
    if (by_parts()) o.own = &own_observations;
    o.disk = watch.disk;
    o.iterate = network.mode != Mode::Propagation;
    o.statistics = !checking && network.mode != Mode::Solution;
    o.residuals = network.mode != Mode::Solution && network.residual_statistics;
    o.threads = network.threads > 0 ? network.threads : std::thread::hardware_concurrency() > 1 ? 2 : 1;
    for (const PointPlace &point : outcome.numbers.points)
        o.made.push_back(!computed.empty() && computed.count(point_name(network, point)) > 0);
    o.limits.steps = network.steps;
    o.limits.length = network.p.convergence;
    if (o.statistics) o.pairs = wanted_pairs(network, outcome.numbers);
    if (o.statistics) o.joint = joint_unknowns();
    o.weak_pairs = weakest_listed;
    o.a_priori = network.tests.a_priori;
    if (o.statistics && network.derived.size() > 0)
        o.forms = [this](const va::Model &adjusted) { return derived_forms(network, outcome.numbers, adjusted); };
    if (o.statistics && o.residuals) set_tests(o);
    return o;
}

void Road::set_tests(va::Options &o) const
{
    const TestSettings &tests = network.tests;
    o.together = tested_together(outcome.numbers);
    const int most = tests.snoop ? std::max(1, tests.suspects) : tests.suspects;
    o.suspects.most = network.mode == Mode::Statistics ? most : 0;
    o.suspects.least_share = tests.least_redundancy;
    o.suspects.limit = [&tests](int tested, int redundancy, double variance_factor) {
        return TestRule(tests, tested, redundancy, std::sqrt(variance_factor)).limit();
    };
}

// Observations without a derivative take no part; each is named.
void Road::leave_out()
{
    for (const int i : outcome.adjustment.left_out) {
        const ItemName name = item_name(network, outcome.numbers, i);
        const bool image = outcome.numbers.items[(size_t)i].item == Item::image_point;
        note_of_part(item_text(name) + ": left out, " +
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

// Robust estimation. Returns what is to be told of it.
std::vector<std::string> Road::adjust_by_weights()
{
    const Robust robust = network.tests.robust;
    va::Robust r = va::adjust_robustly(&outcome.numbers.model, options(),
                                       robust == Robust::huber    ? va::Estimator::huber
                                       : robust == Robust::danish ? va::Estimator::danish
                                                                  : va::Estimator::least_absolute);
    outcome.adjustment = std::move(r.outcome);
    outcome.weights = std::move(r.weight);
    if (r.settled || outcome.adjustment.status != va::Status::adjusted) return {};
    return {"the weights of the robust estimation changed up to its last round"};
}

// Reductions and places hold for the coordinates that they were made with: again, until nothing changes.
void Road::place_again()
{
    constexpr int most = 5;
    constexpr double enough = 1e-5; // metres
    for (int k = 0; k < most && outcome.adjustment.status == va::Status::adjusted; k++) {
        if (set_again(network, outcome.reference.get(), outcome.numbers) < enough) return;
        outcome.adjustment = va::adjust(&outcome.numbers.model, options());
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
    std::vector<std::string> steps;
    const bool snoop = network.tests.snoop && !checking;
    const bool robust = network.tests.robust != Robust::none && !checking;
    const bool on_earth = network.crs.given() && network.mode != Mode::Propagation;
    if (network.components != Components::none && watch.ranks) watch.ranks->leave_to_first(); // they need all rows
    if (on_earth || !(snoop || robust)) outcome.adjustment = va::adjust(&outcome.numbers.model, options());
    if (by_parts() && outcome.adjustment.status != va::Status::adjusted) throw WholeWanted();
    if (on_earth) place_again();
    if (snoop)
        steps = adjust_by_snooping(network, options(), outcome);
    else if (robust)
        steps = adjust_by_weights();
    if (outcome.adjustment.status == va::Status::stopped) {
        outcome.ending = Ending::stopped;
        return;
    }
    for (const std::string &line : steps) note(line);
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
    const double off = std::sqrt(outcome.adjustment.variance_factor);
    if (!outcome.adjusted() || off <= senseless) return;
    std::vector<std::string> stations = contradicting_stations(network, outcome.numbers);
    if (by_parts()) stations = lines_of_all(*watch.ranks, stations);
    if (!stations.empty()) note(contradiction_line(stations));
}

// What each process knows of its part of an adjusted network, on the first one.
void Road::bring_together(const AccountKeeper &keeper)
{
    va::Ranks &ranks = *watch.ranks;
    for (const std::string &line : lines_of_all(ranks, notes_of_part)) note(line);
    outcome.run.accounts = accounts_of_all(ranks, keeper.close(network, outcome.numbers.left_out));
    std::vector<va::JointStatistics> &together = outcome.adjustment.statistics.together;
    together = joint_tests_of_all(ranks, together);
}

// The first process alone has words and files to write. True on the others where they have rows for it.
bool Road::shares_rows(const AccountKeeper &keeper)
{
    va::Ranks &ranks = *watch.ranks;
    if (!outcome.adjusted() || ranks.alone() || ranks.size() < 2) {
        ranks.leave_to_first();
        return false;
    }
    if (by_parts()) bring_together(keeper);
    outcome.ranks = &ranks;
    ranks.stand_by();
    return ranks.own() > 0;
}

OwnOutcome Road::run()
{
    const auto start = std::chrono::steady_clock::now();
    const AccountKeeper keeper(network);
    if (watch.disk) watch.disk->tell([this](const std::string &line) { note(line); });
    if (prepare()) adjust();
    if (watch.disk) watch.disk->tell(nullptr);
    if (watch.ranks && shares_rows(keeper)) return std::move(outcome);
    if (watch.stopped()) outcome.ending = Ending::stopped;
    if (outcome.ending == Ending::stopped) return std::move(outcome);
    watch.begin("writing");
    const size_t told = outcome.run.prepared.notes.size();
    if (!checking) write_export(network, outcome);
    for (size_t i = told; i < outcome.run.prepared.notes.size(); i++) tell(outcome.run.prepared.notes[i]);
    outcome.run.reached = outcome.adjusted() ? Stage::Done : Stage::Refused;
    if (!by_parts()) outcome.run.accounts = keeper.close(network, outcome.numbers.left_out);
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
