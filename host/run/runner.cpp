#include "host/run/runner.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "host/run/coincident.h"
#include "host/run/connected_net.h"
#include "host/run/preface.h"
#include "host/run/report_tee.h"
#include "host/input/faults.h"
#include "host/input/names.h"
#include "host/preparation/first_values.h"
#include "host/preparation/lump_checks.h"
#include "host/results/output_file.h"
#include "vorn/result.h"
#include "host/results/result_parts.h"
#include "vorn/sidefiles.h"
#include "vorn/unknowns.h"
#include "vorn/vorn.h"

namespace vornhost {

namespace {

// Passes the engine's lines on and keeps the last one. Takes no memory: it is called from
// within the engine, which knows no exceptions.
class Listener : public Feedback {
public:
    Listener(Feedback &user, ConnectedNet &connected, const NameKeys &of_network)
        : next(user), net(connected), keys(of_network)
    {
    }
    void feedback(char *line) override
    {
        const size_t length = std::min(strlen(line), sizeof last - 1);
        memcpy(last, line, length);
        last[length] = '\0';
        if (strcmp(line, "backtoproject failed") == 0) handed_over = false;
        if (strcmp(line, "backtoproject: Pb with usesimili") == 0) compared = false;
        net.hear(line);
        if (keys.empty()) return next.feedback(line);
        keys.replace(line, shown, sizeof shown);
        next.feedback(shown);
    }
    int decision(char *question, char *title) override { return next.decision(question, title); }
    void pass_on(std::string line) { next.feedback(&line[0]); }
    std::string last_line() const { return last; }
    bool handed_over = true; // all results reached the project
    bool compared = true;    // the epochs, as far as they were to be

private:
    Feedback &next;
    ConnectedNet &net;
    const NameKeys &keys;
    char last[512] = "", shown[2048] = "";
};

std::string without_blanks(const std::string &line)
{
    const size_t begin = line.find_first_not_of(" \t*\r");
    if (begin == std::string::npos) return {};
    return line.substr(begin, line.find_last_not_of(" \t*\r") + 1 - begin);
}

// The last line in which a routine of the engine names itself ("datumcheck: ..."), otherwise
// the last line.
std::string last_words(const std::string &tail)
{
    std::string last, named;
    for (size_t begin = 0; begin < tail.size();) {
        const size_t end = tail.find('\n', begin);
        const std::string line = without_blanks(tail.substr(begin, end - begin));
        const size_t colon = line.find(": ");
        if (!line.empty()) last = line;
        if (colon != std::string::npos && colon > 0 && line.find(' ') > colon) named = line;
        if (end == std::string::npos) break;
        begin = end + 1;
    }
    return printable(named.empty() ? last : named);
}

// The row that the compact solver names in its last line about a pivot; -1 when it names none.
int failing_row(const std::string &tail)
{
    const size_t at = tail.rfind("*** Problem with routine c");
    const size_t line = at == std::string::npos ? at : tail.find(" at line ", at);
    return line == std::string::npos ? -1 : atoi(tail.c_str() + line + 9);
}

struct Sentence {
    int code;
    const char *what;
    const char *remedy;
};

const Sentence start_sentences[] = {
    {-1, "the network could not be loaded",
     "look at the engine's lines above and at the observations left out: those that remain must fit the dimension"},
    {-2, "the lumps could not be set up", "check the table lumps: every lump needs points observed in two epochs"},
    {-3, "the datum of the network is not defined",
     "look at the engine's lines above: fix or weight more coordinates or an orientation, or give points without "
     "enough observations more of them"},
    {-4, "first coordinates could not be computed",
     "give approximate coordinates of every point, and do not ask for new ones"},
    {-5, "coordinates are missing, and this run computes none", "give approximate coordinates of every point"},
    {-6, "the connected net could not be set up",
     "check that its file belongs to this network, and that the imported points are free in all coordinates"},
};

const Sentence solver_sentences[] = {
    {-1, "there is not enough memory for the adjustment", "free memory, or leave out points"},
    {-2, "there is not enough memory for the normal equations", "choose the solver compact, or leave out points"},
    {-3, "the normal equations are singular: something in the network is not determined",
     "look for points with too few observations, stations whose orientation nothing determines, and parts of the "
     "network that are not tied to the rest"},
    {-4, "the adjustment does not converge",
     "look for wrong approximate coordinates, exchanged point names, wrong units, gross errors, and with the solver "
     "jordan for what nothing determines; first coordinates far from the truth may need more iterations"},
    {-5, "the normal equations could not be inverted",
     "look for points that hardly anything determines; mode solution does without the inverse"},
};

const Sentence simplex_sentences[] = {
    {-1, "there is not enough memory for the adjustment", "free memory, or leave out points"},
    {-2, "the tableau of the simplex solver could not be built",
     "look for sights to points straight above or below their station; without any, free memory or leave out points"},
    {-3, "the simplex solver could not solve the network",
     "in a free network the datum points must hold it, and points on one line do not: fix coordinates; otherwise free "
     "memory or leave out points"},
};

const char *const not_a_number[] = {
    "the coordinates are not numbers: something in the network is not determined, or two points coincide",
    "look for points with the same approximate coordinates and for points with too few observations"};

bool finite(const result *r, int i)
{
    for (const double *x : {r->xpt, r->ypt, r->zpt})
        if (x && !std::isfinite(x[i])) return false;
    return true;
}

// Points whose coordinates in the results are not a number or infinite; the n-th selected point
// of a host list is the n-th that was returned. The solver jordan has no test of singularity.
std::vector<std::string> points_without_numbers(const Model &model)
{
    const result *r = model.p.runresults;
    std::vector<std::string> names;
    if (!r) return names;
    int i = 0;
    const auto look = [&](const auto &records, int end) {
        for (const auto &record : records)
            if (record.status > 0 && i < end && !finite(r, i++)) names.push_back(shown_name(model, record.name));
    };
    look(model.stations.records, r->nstar);
    i = r->nstar;
    look(model.targets.records, r->nstar + r->ntarr);
    return names;
}

// The first of many names.
std::string some_of(const std::vector<std::string> &names)
{
    constexpr size_t most = 5;
    std::string text;
    for (size_t i = 0; i < names.size() && i < most; i++) text += (i > 0 ? ", " : "") + names[i];
    return names.size() > most ? text + " and " + std::to_string(names.size() - most) + " more" : text;
}

template <size_t n> std::vector<std::string> words_of(const Sentence (&table)[n], int code, const std::string &engine)
{
    for (const Sentence &s : table) {
        if (s.code != code) continue;
        std::vector<std::string> words = {s.what};
        if (!engine.empty()) words[0] += " (" + engine + ")";
        words.push_back(s.remedy);
        return words;
    }
    return {"the engine stopped with the unknown code " + std::to_string(code), "report this as a defect"};
}

int run_mode(const Model &model)
{
    if (model.solver == Solver::Simplex) return -1;
    switch (model.mode) {
    case Mode::Solution: return 0;
    case Mode::Propagation: return -2;
    default: return 1;
    }
}

int solve(vorn &engine, Solver solver)
{
    switch (solver) {
    case Solver::Jordan: return engine.vornjordan();
    case Solver::Simplex: return engine.vornL1();
    default: return engine.vornL2();
    }
}

// A run, or its first half: the project as the engine sees it, and where it stopped.
class Run {
public:
    Run(Model &network, FILE *out, Feedback &user)
        : model(network), report(out), tee(out), net(network), listener(user, net, network.keys)
    {
    }
    RunOutcome go(bool solving);

private:
    void set_up();
    void adjust(bool solving);
    void stop(Stage stage, int code);
    void refuse(const FirstValues &first);
    void check_coordinates();
    void check_epochs();
    void check_sights(bool solving);
    void close_export();
    void close_side_files();
    void close_results();
    void name_unknown(const vorn &engine);
    std::string engine_line(Stage stage, int code);

    Model &model;
    FILE *report;
    ReportTee tee;
    ConnectedNet net;
    Listener listener;
    vornengine::side_files side = vornengine::side_files();
    RunOutcome outcome;
};

void Run::set_up()
{
    project &p = model.p;
    p.pfeedback = &listener;
    p.out = tee.stream();
    p.irun = run_mode(model);
    p.imixed = -1;
}

// What the engine said last: a divergence goes to the user only, all else to the report too;
// behind the line of a missing convergence the report lists residuals.
std::string Run::engine_line(Stage stage, int code)
{
    if (stage == Stage::Loading && !net.import_refusal().empty()) return printable(net.import_refusal());
    const std::string told = printable(without_blanks(listener.last_line()));
    if (stage == Stage::Solving && code == -4)
        return told.rfind("Problem at iteration", 0) == 0
                   ? told
                   : "no convergence after " + std::to_string(model.p.itmax) + " iterations";
    const std::string line = last_words(tee.tail());
    return line.empty() ? told : line;
}

void Run::stop(Stage stage, int code)
{
    outcome.reached = stage;
    outcome.code = code;
    const std::string engine = model.keys.replaced(engine_line(stage, code));
    if (stage == Stage::Loading)
        outcome.words = words_of(start_sentences, code, engine);
    else if (model.solver == Solver::Simplex)
        outcome.words = words_of(simplex_sentences, code, engine);
    else
        outcome.words = words_of(solver_sentences, code, engine);
}

// Coordinates are missing that the engine would not find either.
void Run::refuse(const FirstValues &first)
{
    outcome.reached = Stage::Loading;
    outcome.code = -4;
    outcome.words = first.words;
}

// Which point, orientation or constant the row is that could not be eliminated.
void Run::name_unknown(const vorn &engine)
{
    char name[100];
    const int row = failing_row(tee.tail());
    if (vornengine::unknown_names::row(engine, row, name, sizeof name) != 0) return;
    outcome.words.insert(outcome.words.begin() + 1, "unknown " + std::to_string(row) + " of the normal equations is " +
                                                        printable(model.keys.replaced(name)) + ": look there first");
}

void Run::adjust(bool solving)
{
    vorn engine(&model.p);
    vornengine::side_files::watch(engine, &side);
    int code = engine.vornstart();
    if (!solving) model.p.lumpmethod = 0;                               // the destructor would compare epochs
    if (!net.import_refusal().empty()) return stop(Stage::Loading, -6); // the engine goes on without it
    if (code != 0) return stop(Stage::Loading, code);
    if (solving) code = solve(engine, model.solver);
    if (code == 0) {
        outcome.reached = Stage::Done;
        return;
    }
    stop(Stage::Solving, code);
    name_unknown(engine);
}

void Run::check_coordinates()
{
    const std::vector<std::string> names = points_without_numbers(model);
    if (names.empty()) return;
    outcome.reached = Stage::Solving;
    outcome.words = {not_a_number[0], "points without numbers: " + some_of(names), not_a_number[1]};
}

// Epochs of a lump that were not compared, while their coordinates stand in the means of its points.
// Nothing more is said where memory was short, or the file of the transformations was lost.
void Run::check_epochs()
{
    if (side.similarities != 0) return;
    if (model.p.lumpmethod != 9 || model.mode == Mode::Propagation || !listener.compared || !listener.handed_over)
        return;
    const std::vector<std::string> lines = epochs_not_compared(model);
    if (lines.empty()) return;
    outcome.reached = Stage::Solving;
    outcome.words = lines;
    outcome.words.push_back(
        "show at every epoch at least three points, not on one line, that the reference epoch or one "
        "compared before it shows too, or leave out the directions of such an epoch");
}

// A distance without derivative leaves the simplex solver where it started, and makes coordinates
// of the others that are no numbers, which a run without solver does not show. A direction without
// direction leaves out all that stand behind it. Neither stops the engine.
void Run::check_sights(bool solving)
{
    const CoincidentSights sights = coincident_sights(model);
    if (sights.lines.empty()) return;
    if (outcome.adjusted() && sights.distances && (model.solver == Solver::Simplex || !solving)) {
        outcome.reached = Stage::Solving;
        outcome.words = {"distances between points in one place do not determine them"};
    }
    std::vector<std::string> &lines = outcome.adjusted() ? outcome.prepared.notes : outcome.words;
    lines.insert(lines.end(), sights.lines.begin(), sights.lines.end());
    if (outcome.adjusted())
        for (const std::string &line : sights.lines) listener.pass_on(line);
}

void Run::close_export()
{
    const std::string note = net.close(outcome.adjusted());
    if (note.empty()) return;
    outcome.prepared.notes.push_back(note);
    if (net.lost())
        outcome.lost.push_back(note);
    else if (net.spoilt())
        outcome.spoilt.push_back(note);
    else
        listener.pass_on(note);
}

// A run that was adjusted and whose results did not all find memory, or came to their end at
// the file of the connected net.
void Run::close_results()
{
    outcome.handed_over = listener.handed_over;
    if (!listener.handed_over && !net.lost())
        outcome.lost.push_back("not all results could be handed over: free memory");
    std::error_code error;
    const bool cofactors = model.p.dim == 3 && model.mode != Mode::Solution && model.solver != Solver::Simplex;
    if (cofactors && std::filesystem::exists("tessalpin.sta", error) && !finite_file("tessalpin.cov"))
        outcome.spoilt.push_back("the numbers in tessalpin.cov are not all finite");
    if (!listener.compared) outcome.lost.push_back("not all epochs could be compared: free memory");
}

// The engine goes on without the files beside its report.
void Run::close_side_files()
{
    const std::pair<int, const char *> files[] = {
        {side.rejects, "rejects"}, {side.cofactors, "tessalpin.cov"}, {side.similarities, "simili.out"}};
    for (const auto &[number, name] : files)
        if (number != 0) outcome.lost.push_back(OutputError(number, name).what());
    if (side.similarities != 0) outcome.lost.back() += "; transformations between epochs may be missing";
    outcome.prepared.notes.insert(outcome.prepared.notes.end(), outcome.lost.begin(), outcome.lost.end());
}

RunOutcome Run::go(bool solving)
{
    outcome.words = not_available(model);
    if (outcome.words.empty()) outcome.words = import_faults(model);
    if (!outcome.words.empty()) return std::move(outcome);
    const std::string preface = report_preface(model);
    fwrite(preface.data(), 1, preface.size(), report);
    order_sights(model);
    const AccountKeeper keeper(model);
    FirstValues first;
    outcome.prepared = prepare(model, [&] { first = compute_first_values(model, report); });
    outcome.prepared.notes.insert(outcome.prepared.notes.end(), first.notes.begin(), first.notes.end());
    if (const std::string note = import_note(model); !note.empty()) outcome.prepared.notes.push_back(note);
    for (const std::string &note : outcome.prepared.notes) listener.pass_on(note);
    set_up();
    if (first.words.empty())
        adjust(solving);
    else
        refuse(first);
    if (outcome.adjusted() && solving) check_coordinates();
    if (outcome.adjusted() && solving) check_epochs();
    if (outcome.adjusted() || outcome.reached == Stage::Solving) check_sights(solving);
    close_side_files();
    if (solving) close_export();
    if (outcome.adjusted() && solving) close_results();
    model.p.pfeedback = nullptr;
    model.p.out = nullptr;
    tee.close();
    outcome.accounts = keeper.close(model);
    return std::move(outcome);
}

// Points marked for the export and the comparison of epochs, while a check must not write
// their files.
class NoFiles {
public:
    explicit NoFiles(Model &network) : model(network), lumpmethod(network.p.lumpmethod)
    {
        hide(model.stations);
        hide(model.targets);
    }
    ~NoFiles()
    {
        model.p.lumpmethod = lumpmethod;
        show(model.stations);
        show(model.targets);
    }

private:
    static constexpr int hidden = -1;
    template <class Record> static void hide(List<Record> &list)
    {
        for (Record &r : list.records)
            if (r.iconn == 1) r.iconn = hidden;
    }
    template <class Record> static void show(List<Record> &list)
    {
        for (Record &r : list.records)
            if (r.iconn == hidden) r.iconn = 1;
    }
    Model &model;
    const int lumpmethod;
};

} // namespace

RunOutcome run(Model &model, FILE *report, Feedback &feedback) { return Run(model, report, feedback).go(true); }

RunOutcome check(Model &model, FILE *report, Feedback &feedback)
{
    const NoFiles no_files(model);
    return Run(model, report, feedback).go(false);
}

} // namespace vornhost
