#include "host/run/memory_limit.h"

#ifdef _WIN32
#include <windows.h>
#elif defined(__EMSCRIPTEN__)
#include <emscripten/heap.h>
#else
#include <stdio.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <algorithm>
#include <optional>
#endif

namespace vornhost {

#ifdef _WIN32

unsigned long long machine_memory()
{
    MEMORYSTATUSEX machine = MEMORYSTATUSEX();
    machine.dwLength = sizeof machine;
    return GlobalMemoryStatusEx(&machine) ? machine.ullTotalPageFile : 0;
}

// The system hands out no more than it has.
void limit_memory() {}

#elif defined(__EMSCRIPTEN__)

unsigned long long machine_memory() { return emscripten_get_heap_max(); }

// The browser hands out no more than that.
void limit_memory() {}

#else

namespace {

// The number that a file begins with; nothing when it begins with a word, like "max", or is not there.
std::optional<unsigned long long> first_number(const char *path)
{
    FILE *file = fopen(path, "r");
    if (!file) return std::nullopt;
    unsigned long long number = 0;
    const bool found = fscanf(file, "%19llu", &number) == 1;
    fclose(file);
    return found ? std::optional(number) : std::nullopt;
}

} // namespace

unsigned long long machine_memory()
{
    struct sysinfo machine;
    if (sysinfo(&machine) != 0) return 0;
    const unsigned long long unit = machine.mem_unit, swap = machine.totalswap * unit,
                             all = machine.totalram * unit + swap;
    const auto memory = first_number("/sys/fs/cgroup/memory.max"); // of a container, swap space apart
    if (!memory || *memory >= all) return all;
    const unsigned long long own_swap = first_number("/sys/fs/cgroup/memory.swap.max").value_or(swap);
    return std::min(all, *memory + std::min(swap, own_swap));
}

void limit_memory()
{
    const unsigned long long all = machine_memory();
    const unsigned long long held =
        first_number("/proc/self/statm").value_or(0) * (unsigned long long)sysconf(_SC_PAGESIZE);
    rlimit limit;
    if (all == 0 || held == 0 || held >= all || getrlimit(RLIMIT_AS, &limit) != 0) return;
    if (limit.rlim_cur <= all) return; // unlimited is the largest number
    limit.rlim_cur = (rlim_t)all;
    setrlimit(RLIMIT_AS, &limit);
}

#endif

} // namespace vornhost
