// What the benchmarks share: a silent report, timing of single calls, a folder of their own.
//
// Times are processor times: the engine has one thread and the report goes nowhere, so that
// other work on the machine hardly counts.

#ifndef BENCH_TRIAL_H
#define BENCH_TRIAL_H

#include <stdio.h>
#include <time.h>

#include <filesystem>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "networks.h"
#include "vorn/result.h"
#include "vorn/vorn.h"

namespace trial {

// Takes no notice of messages; answers no.
class Silent : public Feedback {
public:
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

// A new folder that is the working folder for as long as it lives: the engine writes files there.
class Workplace {
public:
    Workplace();
    ~Workplace();
    Workplace(const Workplace &) = delete;
    Workplace &operator=(const Workplace &) = delete;

private:
    std::filesystem::path before, folder;
};

// A network and the project that runs it, with the report thrown away.
struct Trial {
    explicit Trial(networks::Network made);
    ~Trial();
    Trial(const Trial &) = delete;
    Trial &operator=(const Trial &) = delete;

    // To be called before every run: a run leaves its results in the project.
    void release_results();

    Silent feedback;
    std::unique_ptr<FILE, int (*)(FILE *)> report;
    networks::Network network;
    project p;
};

// Seconds of processor time that this process has used.
inline double processor_time()
{
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return (double)t.tv_sec + 1.0e-9 * (double)t.tv_nsec;
}

// Processor time of a call, seconds.
template <class Call> double seconds(Call call)
{
    const double start = processor_time();
    call();
    return processor_time() - start;
}

// Times a solver on the plane network of state.range(0) stations, without the loading.
void adjust(benchmark::State &state, int (vorn::*solver)(), int irun);

// Points and observations as columns of the table of results.
void count(benchmark::State &state, const networks::Network &network);

// Adds the least of the repetitions to the table; other work on the machine only ever adds time.
void report_least(benchmark::internal::Benchmark *bench);

} // namespace trial

#endif
