// Failing allocations: the engine takes all its memory with calloc, which the linker
// redirects here (--wrap=calloc).

#ifndef TESTS_FAULTS_H
#define TESTS_FAULTS_H

// The n-th calloc of this thread from now returns null, all others succeed; 0: none fails.
void fail_allocation(int n);

// Callocs of this thread since the last fail_allocation.
int allocations();

#endif
