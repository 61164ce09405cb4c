// A process beside each process of the adjustment, which says so when that one is lost.
//
// A process that the system kills (no memory, no time, kill -9) cannot speak, and what starts the processes would end
// the run with the status of the signal. The watcher holds no memory and starts no MPI, so it outlives it.

#ifndef VORN_RANKS_WATCHER_H
#define VORN_RANKS_WATCHER_H

// Splits the program in two. Returns in the child, which works; the caller stays as its watcher, ends with the status
// of the child, and with 3 and one line when a signal ended it. Signals that ask the watcher to end reach the child; a
// watcher that is killed takes the child with it. To be called first of all: nothing may be in use but what the
// system gave.
void become_worker();

#endif
