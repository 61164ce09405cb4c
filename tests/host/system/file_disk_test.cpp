// Files in the place of memory.

#include "host/system/file_disk.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "../../adjust/patterns.h"
#include "adjust/inverse.h"
#include "adjust/order.h"

using namespace vornadjust;
using vornhost::FileDisk;

namespace {

[[noreturn]] void fail() { std::abort(); }

// Bytes of files, programs among them, that are in the memory of this process.
double resident_files()
{
    unsigned long long all = 0, resident = 0, shared = 0;
    FILE *file = fopen("/proc/self/statm", "r");
    if (!file) return 0.0;
    const int found = fscanf(file, "%llu %llu %llu", &all, &resident, &shared);
    fclose(file);
    return found == 3 ? (double)shared * (double)sysconf(_SC_PAGESIZE) : 0.0;
}

} // namespace

TEST(FileDisk, KeepsWhatWasLeftOutsideOfMemory)
{
    FileDisk disk(1, fail);
    const std::size_t n = 1 << 20;
    double *numbers = disk.take(n);
    EXPECT_TRUE(std::all_of(numbers, numbers + n, [](double x) { return x == 0.0; }));
    for (std::size_t i = 0; i < n; i++) numbers[i] = (double)i;
    const double full = resident_files();
    disk.leave(numbers + 10, n - 20);
    EXPECT_LT(resident_files(), full - 0.9 * (double)n * sizeof(double));
    for (std::size_t i = 0; i < n; i++) ASSERT_EQ(numbers[i], (double)i);
    disk.give_back(numbers, n);
}

TEST(FileDisk, RefusesWhatNoFileHolds)
{
    FileDisk disk(1, fail);
    EXPECT_THROW(disk.take((std::size_t)-1 / 16), std::runtime_error);
    EXPECT_THROW(disk.take((std::size_t)-1), std::runtime_error);
    EXPECT_THROW(disk.refuse(1000), std::runtime_error);
}

// Factor and inverse of 16,200 unknowns: 12 MB each, and trails of half a megabyte.
TEST(FileDisk, HoldsAFactorAndItsInverseOfWhichLittleIsInMemory)
{
    const SymmetricMatrix a = matrix_of(grid(90, 90, 2, 1), 1);
    const Symbolic symbolic = analyse(a, fill_reducing_order(a).unknown);
    FileDisk disk(1, fail);
    const std::size_t chunk = 1 << 16;
    double before = 0.0, most = 0.0;
    FactorOptions options;
    InverseOptions inverse_options;
    options.watch.progress = inverse_options.watch.progress = [&](double) { most = std::max(most, resident_files()); };
    for (const int threads : {1, 2}) {
        options.threads = inverse_options.threads = threads;
        Factor in_memory, on_disk;
        Inverse inverse, inverse_on_disk;
        ASSERT_TRUE(factorize(a, symbolic, in_memory, options));
        ASSERT_TRUE(invert(symbolic, in_memory, inverse, inverse_options));
        before = most = resident_files();
        on_disk.value = Store(&disk, chunk);
        inverse_on_disk.value = on_disk.value.beside();
        ASSERT_TRUE(factorize(a, symbolic, on_disk, options));
        ASSERT_TRUE(factorize(a, symbolic, on_disk, options)); // in the same file
        ASSERT_TRUE(invert(symbolic, on_disk, inverse_on_disk, inverse_options));
        std::vector<double> x = random_vector(a.n, 1), y = x;
        solve(symbolic, in_memory, x.data());
        solve(symbolic, on_disk, y.data());
        EXPECT_EQ(x, y);
        const double values = (double)symbolic.values() * sizeof(double);
        EXPECT_GT(values, 8e6);
        EXPECT_LT(most - before, values / 3.0) << threads;
        EXPECT_LT(resident_files() - before, values / 10.0) << "all of it is left behind";
        EXPECT_TRUE(in_memory.value == on_disk.value);
        EXPECT_TRUE(inverse.value == inverse_on_disk.value);
    }
}

// Numbers that follow one another are left together, others when the next begin.
TEST(Trail, LeavesEveryNumberOnce)
{
    struct Counting : FileDisk {
        using FileDisk::FileDisk;
        void leave(const double *numbers, std::size_t count) override
        {
            for (std::size_t i = 0; i < count; i++) times[(std::size_t)(numbers - first) + i]++;
            calls++;
        }
        const double *first = nullptr;
        std::vector<int> times = std::vector<int>(1000, 0);
        int calls = 0;
    };
    Counting disk(1, fail);
    Store store(&disk, 100);
    store.resize(1000);
    disk.first = store.data();
    {
        Trail trail(store);
        for (int i = 0; i < 500; i += 10) trail.done(i, i + 10);          // upwards: 5
        for (int i = 1000; i > 800; i -= 10) trail.done(i - 10, i);       // downwards: 2
        trail.done(700, 710), trail.done(600, 610), trail.done(500, 600); // apart, joined from below: 1, then 1
    }
    EXPECT_EQ(disk.calls, 9);
    for (int i = 0; i < 1000; i++) EXPECT_EQ(disk.times[i], i < 610 || (i >= 700 && i < 710) || i >= 800) << i;
}
