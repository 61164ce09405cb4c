#include "support/faults.h"

#include <stddef.h>

static thread_local int failing = 0, counted = 0;

void fail_allocation(int n)
{
    failing = n;
    counted = 0;
}

int allocations() { return counted; }

extern "C" {
void *__real_calloc(size_t n, size_t size);
void *__wrap_calloc(size_t n, size_t size);

void *__wrap_calloc(size_t n, size_t size)
{
    counted++;
    return counted == failing ? NULL : __real_calloc(n, size);
}
}
