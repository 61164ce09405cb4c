// Failing allocations: the engine takes all its memory with calloc, which the linker
// redirects here (--wrap=calloc).

#ifndef TESTS_FAULTS_H
#define TESTS_FAULTS_H

// The n-th calloc of this thread from now returns null, all others succeed; 0: none fails.
void fail_allocation(int n);

// Callocs of this thread since the last fail_allocation.
int allocations();

// The n-th object that this thread makes with new (std::nothrow) from now is null; 0: none. The
// engine makes its solvers so, and the search for first coordinates.
void fail_object(int n);

// Whether the object that was to fail has failed.
bool object_failed();

#endif
