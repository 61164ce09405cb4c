// Runs whose memory gives out: each allocation fails in turn.

#include <stdlib.h>

#include <atomic>
#include <new>

#include "host/own/own_run.h"
#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"

namespace {

std::atomic<long> allocations_left(-1); // until one fails; negative for none

void *allocate(size_t size)
{
    if (allocations_left >= 0 && allocations_left-- == 0) throw std::bad_alloc();
    void *p = malloc(size > 0 ? size : 1);
    if (!p) throw std::bad_alloc();
    return p;
}

} // namespace

void *operator new(size_t size) { return allocate(size); }
void *operator new[](size_t size) { return allocate(size); }
void operator delete(void *p) noexcept { free(p); }
void operator delete[](void *p) noexcept { free(p); }
void operator delete(void *p, size_t) noexcept { free(p); }
void operator delete[](void *p, size_t) noexcept { free(p); }

namespace {

struct Silent : Feedback {
    void feedback(char *) override {}
    int decision(char *, char *) override { return 0; }
};

void read(const std::string &path, vornhost::Model &model)
{
    vornhost::Faults faults;
    ASSERT_TRUE(vornhost::read_network(path, model, faults));
    model.solver = Solver::Sparse;
}

// Adjusts and formats.
bool whole_run(vornhost::Model &model, FILE *report)
{
    Silent silent;
    const vornhost::NetworkRun run = vornhost::run_network(model, report, silent, "test");
    return run.results.adjusted && !vornhost::to_json(run.results).empty() && !vornhost::to_csv(run.results).empty();
}

// Whether a run passes whose n-th allocation fails; whether it came that far in failed.
bool passes(const std::string &path, FILE *report, long n, bool *failed)
{
    vornhost::Model model;
    read(path, model);
    bool passed = false;
    try {
        allocations_left = n;
        passed = whole_run(model, report);
    } catch (const std::bad_alloc &) {
    }
    *failed = allocations_left < 0;
    allocations_left = -1;
    return passed;
}

// Fails the first allocation, then the second, ..., until a run has none left to fail; returns how often it failed.
long failures_of(const std::string &path)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    for (long n = 0;; n++) {
        bool failed = false;
        const bool passed = passes(path, report.get(), n, &failed);
        EXPECT_EQ(passed, !failed) << "allocation " << n;
        if (!failed || passed) return n;
    }
}

} // namespace

TEST(OwnRuns, EndWithOneExceptionWhicheverAllocationFails)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\n'''\n"
                            "targets = '''\nname x y sx sy code\nB 100 0 - - fixed\nP 50 50 0.01 0.01 weighted\n'''\n"
                            "directions = '''\nfrom to value sigma\nA B 0 0.001\nA P 50 0.001\n'''\n"
                            "distances = '''\nfrom to value sigma\nA P 70.711 0.001\n'''\n");
    EXPECT_GT(failures_of("net.inp"), 200);
}
