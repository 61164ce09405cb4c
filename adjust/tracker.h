// Share of the work that several threads have done, and whether they are to stop.

#ifndef VORNADJUST_TRACKER_H
#define VORNADJUST_TRACKER_H

#include <algorithm>
#include <atomic>

#include "adjust/watch.h"

namespace vornadjust {

class Tracker {
public:
    Tracker(const Watch &watched, double total_work) : watch(watched), total(total_work) {}

    // Counts work of a thread; the first one tells the watch, each hundredth at most.
    void add(double work, int thread)
    {
        double sum = done.load(std::memory_order_relaxed);
        while (!done.compare_exchange_weak(sum, sum + work, std::memory_order_relaxed)) {
        }
        if (thread == 0) tell(std::min(1.0, (sum + work) / total));
    }

    void finish() { tell(1.0); }

    bool stopped() const { return watch.stopped(); }

private:
    void tell(double share)
    {
        if (!watch.progress || share < std::min(1.0, told + 0.01) || told == 1.0) return;
        told = share;
        watch.progress(share);
    }

    const Watch &watch;
    const double total;
    std::atomic<double> done{0.0};
    double told = 0.0;
};

} // namespace vornadjust

#endif
