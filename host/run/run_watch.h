// How a run tells how far it is, and how it is told to stop.

#ifndef VORNHOST_RUN_WATCH_H
#define VORNHOST_RUN_WATCH_H

#include <atomic>

namespace vornadjust {
class Ranks;
}

namespace vornhost {

class FileDisk;

// Takes note of the steps of a run.
class Progress {
public:
    virtual ~Progress() = default;
    virtual void begin(const char *step) = 0; // "reading", "factor", ...; the step before has ended
    virtual void share(double done) = 0;      // of the step, 0 to 1
};

// None need be there. A stop that is set ends a run of the solver sparse at its next look.
struct RunWatch {
    Progress *progress = nullptr;
    const std::atomic<bool> *stop = nullptr;
    vornadjust::Ranks *ranks = nullptr; // processes that share the run; all but the first end within it
    FileDisk *disk = nullptr;           // for factor and inverse of the solver sparse, beyond its limit

    void begin(const char *step) const
    {
        if (progress) progress->begin(step);
    }
    bool stopped() const { return stop && stop->load(std::memory_order_relaxed); }
};

} // namespace vornhost

#endif
