// How a long computation tells how far it is, and how it is told to stop.

#ifndef VORNADJUST_WATCH_H
#define VORNADJUST_WATCH_H

#include <atomic>
#include <functional>

namespace vornadjust {

struct Watch {
    std::function<void(double share)> progress; // share done, 0 to 1, never less than before; may be
                                                // empty; called by the calling thread only; must not throw
    const std::atomic<bool> *stop = nullptr;    // set by anybody: the computation ends early
};

} // namespace vornadjust

#endif
