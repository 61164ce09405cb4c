// Runs whose memory gives out: each allocation fails in turn.

#include <stdlib.h>

#include <atomic>
#include <new>

#include "host/own/own_run.h"
#include "host/results/csv_writer.h"

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

// Adjusts and formats. Reading and JSON rest on libraries that allocate where nothing may be thrown; the program has
// its own end for these.
std::string whole_run(vornhost::Model &model, FILE *report)
{
    Silent silent;
    const vornhost::NetworkRun run = vornhost::run_network(model, report, silent, "test");
    std::string all = run.results.code + "\n";
    for (const vornhost::CsvTable &table : vornhost::to_csv(run.results)) all += table.text;
    return all;
}

// What a run gives whose n-th allocation fails, empty when it ends by bad_alloc; in failed whether it came that far.
std::string run_without(const std::string &path, FILE *report, long n, bool *failed)
{
    vornhost::Model model;
    read(path, model);
    std::string all;
    try {
        allocations_left = n;
        all = whole_run(model, report);
    } catch (const std::bad_alloc &) {
    }
    *failed = n >= 0 && allocations_left < 0;
    allocations_left = -1;
    return all;
}

} // namespace

// A sort that gets no room for its copies does without them: such a run gives what any other gives.
TEST(OwnRuns, EndByBadAllocOrAsAlwaysWhicheverAllocationFails)
{
    const Folder folder;
    const InFolder inside(folder.path);
    folder.write("net.inp", "[run]\ndimension = 2\n[tables]\nstations = '''\nname x y code\nA 0 0 fixed\n'''\n"
                            "targets = '''\nname x y sx sy code\nB 100 0 - - fixed\nP 50 50 0.01 0.01 weighted\n'''\n"
                            "directions = '''\nfrom to value sigma\nA B 0 0.001\nA P 50 0.001\n'''\n"
                            "distances = '''\nfrom to value sigma\nA P 70.711 0.001\n'''\n");
    const std::unique_ptr<FILE, int (*)(FILE *)> report(tmpfile(), fclose);
    bool failed = true;
    const std::string whole = run_without("net.inp", report.get(), -1, &failed);
    EXPECT_EQ(whole.find("adjusted\n"), 0u) << whole;
    long ended = 0;
    failed = true;
    for (long n = 0; failed; n++) {
        const std::string all = run_without("net.inp", report.get(), n, &failed);
        if (all.empty())
            ended++;
        else
            EXPECT_EQ(all, whole) << "allocation " << n;
    }
    EXPECT_GT(ended, 200);
}
