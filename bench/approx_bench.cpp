// Time of first coordinates against the number of observations: vornstart of a network in the
// plane of which only the targets in a first corner are known, with the wish to compute all
// values, less vornstart of the same network without that wish.
//
// Stations stand in rows of 100 m; every station takes directions to the targets around it and
// distances to a few. A field is as wide as long, so that many stations are resected in a pass;
// a strip is three stations wide, so that every pass resects few.

#include "trial.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

#include <string>

namespace {

const double spacing = 100.0; // metres
const double pi = 4.0 * atan(1.0);

// Takes no notice of messages; answers as told.
class Answer : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return yes; }
    int yes = 0;
};

struct Spot {
    char name[12];
    double x, y;
};

Spot spot(char kind, int number, double x, double y)
{
    Spot s = {"", x, y};
    snprintf(s.name, sizeof s.name, "%c%d", kind, number);
    return s;
}

measure_input sight(int typ, const Spot &from, const Spot &to, double val)
{
    measure_input m = measure_input();
    m.typ = typ;
    strcpy(m.from, from.name);
    strcpy(m.to, to.name);
    m.val = val;
    m.sig = 0.001;
    return m;
}

// Rows of width stations; around each, per cell, a block of targets.
class Ground {
public:
    Ground(int size, int width, int targets_a_cell) : rows(size / width), columns(width), side(targets_a_cell)
    {
        network.dimension = 2;
        for (int i = 0; i < rows * columns; i++) add_cell(i);
        for (int i = 0; i < rows * columns; i++) observe(i);
    }

    networks::Network network;

private:
    int row(int i) const { return i / columns; }
    int column(int i) const { return i % columns; }

    void add_cell(int i)
    {
        stations.push_back(spot('S', i, spacing * row(i) + 3.0, spacing * column(i) + 7.0));
        station_input s = station_input();
        strcpy(s.name, stations.back().name);
        s.typ = 1;
        s.status = STATUS_ON;
        s.ix[2] = s.ir[0] = s.ir[1] = CODE_ABSENT;
        network.stations.push_back(s);
        for (int k = 0; k < side; k++) {
            const double turn = 2.0 * pi * k / side, far = 30.0 + 15.0 * (k % 2);
            targets.push_back(
                spot('T', i * side + k, spacing * row(i) + far * cos(turn), spacing * column(i) + far * sin(turn)));
            target_input t = target_input();
            strcpy(t.name, targets.back().name);
            t.status = STATUS_ON;
            t.ix[2] = CODE_ABSENT;
            if (i == 0)
                for (int c = 0; c < 2; c++) {
                    t.ix[c] = CODE_FIXED;
                    t.x[c] = c == 0 ? targets.back().x : targets.back().y;
                }
            network.targets.push_back(t);
        }
    }

    void shoot(int i, int t)
    {
        const double dx = targets[t].x - stations[i].x, dy = targets[t].y - stations[i].y;
        const double reading = remainder(atan2(dy, dx) - 0.1 * i, 2.0 * pi);
        network.directions.push_back(sight(KIND_DIRECTION, stations[i], targets[t], reading));
        if (t % 5 == 0) network.distances.push_back(sight(KIND_DISTANCE, stations[i], targets[t], hypot(dx, dy)));
    }

    // All targets of the cell and of its neighbours.
    void observe(int i)
    {
        for (int r = row(i) - 1; r <= row(i) + 1; r++)
            for (int c = column(i) - 1; c <= column(i) + 1; c++) {
                if (r < 0 || r >= rows || c < 0 || c >= columns) continue;
                for (int k = 0; k < side; k++) shoot(i, (r * columns + c) * side + k);
            }
    }

    int rows, columns, side;
    std::vector<Spot> stations, targets;
};

double start_time(trial::Trial &t, Answer &answer, int yes, benchmark::State &state)
{
    t.release_results();
    answer.yes = yes;
    vorn run(&t.p);
    int code = 0;
    const double time = trial::seconds([&] { code = run.vornstart(); });
    if (code != 0) state.SkipWithError("vornstart failed");
    return time;
}

void spread(benchmark::State &state, networks::Network network)
{
    Answer answer;
    trial::Trial t(std::move(network));
    t.p.pfeedback = &answer;
    t.p.iangle = ANGLE_RADIAN;
    for (auto _ : state) {
        const double load = start_time(t, answer, 0, state), all = start_time(t, answer, 1, state);
        state.SetIterationTime(all > load ? all - load : 0.0);
    }
    trial::count(state, t.network);
}

const int cell = 10; // targets of a station

void SpreadField(benchmark::State &state)
{
    const int n = (int)state.range(0);
    spread(state, Ground(n, (int)sqrt((double)n), cell).network);
}

void SpreadStrip(benchmark::State &state) { spread(state, Ground((int)state.range(0), 3, cell).network); }

} // namespace

static void sweep(benchmark::internal::Benchmark *bench)
{
    bench->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(0.2);
    trial::report_least(bench);
}

BENCHMARK(SpreadField)->Arg(10)->Arg(100)->Arg(1024)->Apply(sweep);
BENCHMARK(SpreadStrip)->Arg(12)->Arg(102)->Arg(1023)->Apply(sweep);

BENCHMARK_MAIN();
