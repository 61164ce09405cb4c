// How often a network can be adjusted without coordinates: 280 random networks, each from the
// true values and from nothing but what is held. Prints a table, which docs/approximation.md
// keeps.

#include <gtest/gtest.h>

#include <memory>

#include "approx/random_network.h"
#include "host/run/runner.h"
#include "support/access.h"

namespace {

const int nnetwork = 20;        // of each row that can be adjusted from the true values
const int nseed = 60;           // tried for that
const double same_place = 1e-4; // metres, a tenth of what the noise gives: both runs have converged

struct Share {
    int all = 0, computed = 0, adjusted = 0; // by the engine alone
    int program = 0;                         // adjusted by the program, which computes first values before the engine
};

using Places = std::vector<std::array<double, 3>>;

// Adjusted positions, empty when the run stopped; start is what vornstart returned.
Places adjusted(RandomNetwork &net, bool true_values, int *start)
{
    net.set_values(true_values);
    net.n.messages.answer = true_values ? 0 : 1; // no or yes to new approximate values
    vorn run(net.n.ready());
    *start = run.vornstart();
    Places places;
    if (*start != 0 || run.vornL2() != 0) return places;
    for (int i = 0; i < V(run, npoints); i++) {
        const double *x = V(run, points)[i].xpt;
        places.push_back({x[0], x[1], x[2]});
    }
    return places;
}

template <class Record> void add_records(vornhost::List<Record> &list, const std::vector<Record> &records)
{
    for (const Record &r : records) list.add(r, vornhost::Source());
}

// The network as the program reads it; what is not held has no coordinates.
vornhost::Model model_of(RandomNetwork &net)
{
    net.set_values(false);
    vornhost::Model model;
    model.p = net.n.p;
    model.p.runresults = nullptr; // those of the run before
    model.files = {"random"};
    model.mode = vornhost::Mode::Solution;
    add_records(model.stations, net.n.stations);
    add_records(model.targets, net.n.targets);
    add_records(model.distances, net.n.distances);
    add_records(model.directions, net.n.directions);
    add_records(model.verticals, net.n.verticals);
    for (station_input &s : model.stations.records) {
        if (s.ix[0] != CODE_FIXED) s.status = STATUS_COMPUTE;
        model.station_notes.push_back({s.ir[2] == CODE_FIXED, true});
    }
    for (target_input &t : model.targets.records)
        if (t.ix[0] != CODE_FIXED) t.status = STATUS_COMPUTE;
    return model;
}

// Positions adjusted by the program, empty when it stopped.
Places adjusted_by_program(RandomNetwork &net)
{
    vornhost::Model model = model_of(net);
    Recorder messages;
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    const bool done = vornhost::run(model, report.get(), messages).adjusted();
    const result *r = model.p.runresults;
    Places places;
    for (int i = 0; done && i < r->nstar + r->ntarr; i++)
        places.push_back({r->xpt[i], r->ypt[i], r->zpt ? r->zpt[i] : 0.0});
    if (r) model.p.freerun(model.p.runresults);
    return places;
}

bool same(const Places &a, const Places &b)
{
    if (a.empty() || a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); i++)
        for (int k = 0; k < 3; k++)
            if (!(fabs(a[i][k] - b[i][k]) < same_place)) return false;
    return true;
}

Share share(int dim, Start start, int sights)
{
    Share s;
    for (int seed = 1; seed <= nseed && s.all < nnetwork; seed++) {
        RandomNetwork net(dim, start, sights, (uint64_t)seed);
        int code = 0;
        const Places wanted = adjusted(net, true, &code);
        if (wanted.empty()) continue;
        if (net.n.p.runresults) net.n.p.freerun(net.n.p.runresults);
        net.n.p.runresults = nullptr;
        s.all++;
        const Places found = adjusted(net, false, &code);
        s.computed += code == 0;
        s.adjusted += same(found, wanted);
        s.program += same(adjusted_by_program(net), wanted);
    }
    EXPECT_EQ(s.all, nnetwork);
    return s;
}

TEST(RandomNetworks, AreAdjustedWithoutCoordinatesAsOftenAsTheDocumentSays)
{
    const struct {
        const char *name;
        int dim;
        Start start;
    } rows[] = {{"polar", 2, Start::Polar},
                {"polar", 3, Start::Polar},
                {"resection", 2, Start::Resection},
                {"resection", 3, Start::Resection},
                {"collimation", 2, Start::Collimation},
                {"collimation", 3, Start::Collimation},
                {"guess", 3, Start::Guess}};
    std::string table = "| start | dimension | sights | networks | computed | adjusted | by the program |\n"
                        "|---|---|---|---|---|---|---|\n";
    for (const auto &row : rows)
        for (int sights : {10, 20}) {
            const Share s = share(row.dim, row.start, sights);
            char line[200];
            snprintf(line, sizeof line, "| %s | %d | %d | %d | %d %% | %d %% | %d %% |\n", row.name, row.dim, sights,
                     s.all, 100 * s.computed / s.all, 100 * s.adjusted / s.all, 100 * s.program / s.all);
            table += line;
        }
    printf("%s", table.c_str());
    EXPECT_NE(file_text(SOURCE_DIR "/docs/approximation.md").find(table), std::string::npos);
}

} // namespace
