// How a long computation tells how far it is, and how it is told to stop.

#ifndef VORNADJUST_WATCH_H
#define VORNADJUST_WATCH_H

#include <atomic>
#include <functional>

namespace vornadjust {

// Steps of an adjustment. An iteration goes through equations and factor again.
enum class Step { equations, datum, order, factor, inverse, statistics };

// Called by the calling thread only; must not throw. Any of them may be empty.
struct Watch {
    std::function<void(Step)> begin;            // a step begins; the one before has ended
    std::function<void(double share)> progress; // share of a factor or inverse done, 0 to 1, never less than before
    const std::atomic<bool> *stop = nullptr;    // set by anybody: the computation ends early

    void tell(Step step) const
    {
        if (begin) begin(step);
    }
    bool stopped() const { return stop && stop->load(std::memory_order_relaxed); }
};

} // namespace vornadjust

#endif
