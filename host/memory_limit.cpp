#include "memory_limit.h"

#include <stdio.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace vornhost {

namespace {

// The first number of a file; 0 when there is none.
unsigned long long first_number(const char *path)
{
    FILE *file = fopen(path, "r");
    if (!file) return 0;
    unsigned long long number = 0;
    if (fscanf(file, "%19llu", &number) != 1) number = 0;
    fclose(file);
    return number;
}

} // namespace

unsigned long long machine_memory()
{
    struct sysinfo machine;
    if (sysinfo(&machine) != 0) return 0;
    const unsigned long long all = ((unsigned long long)machine.totalram + machine.totalswap) * machine.mem_unit;
    const unsigned long long container = first_number("/sys/fs/cgroup/memory.max"); // "max": no limit
    return container > 0 && container < all ? container : all;
}

void limit_memory()
{
    const unsigned long long all = machine_memory();
    const unsigned long long held = first_number("/proc/self/statm") * (unsigned long long)sysconf(_SC_PAGESIZE);
    rlimit limit;
    if (all == 0 || held == 0 || held >= all || getrlimit(RLIMIT_AS, &limit) != 0) return;
    if (limit.rlim_cur <= all) return; // unlimited is the largest number
    limit.rlim_cur = (rlim_t)all;
    setrlimit(RLIMIT_AS, &limit);
}

} // namespace vornhost
