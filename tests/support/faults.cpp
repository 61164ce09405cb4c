#include "support/faults.h"

#include <stddef.h>

#include <new>

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

static thread_local int object_to_fail = 0; // counts down

void fail_object(int n) { object_to_fail = n; }

bool object_failed() { return object_to_fail == 0; }

void *operator new(size_t size, const std::nothrow_t &) noexcept
{
    if (object_to_fail > 0 && --object_to_fail == 0) return nullptr;
    try {
        return operator new(size);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}
