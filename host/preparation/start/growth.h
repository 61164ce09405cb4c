// A frame grows point by point: the next is always the one that most observations agree on, then the one that is known
// best, so that what nothing checks waits as long as it can. Each point is taken up when a neighbour gets a place, so
// that the work is proportional to the observations.

#ifndef VORNHOST_START_GROWTH_H
#define VORNHOST_START_GROWTH_H

#include <queue>
#include <vector>

#include "host/preparation/start/frame.h"
#include "host/preparation/start/voting.h"
#include "host/preparation/start/way.h"

namespace vornhost::start {

class Growth {
public:
    // Points with a place in `ground` are placed too, but nothing is carried from one of them to another.
    // Where two places fit alike, the way tells which one is taken.
    Growth(const Sightings &sightings, Frame *frame, const Frame *ground, const Way &way);

    // A point with a place of its own; a turn for a circle.
    void plant(int point, double x, double y, double sigma) { place(point, x, y, sigma); }
    void orient(int circle, const Turn &turn);

    // Takes up all that has a place, where the frame has changed as a whole.
    void begin_again();

    // Carries on from what was planted.
    void grow();

    std::vector<Choice> choices; // points that two places fitted alike

private:
    struct Waiting {
        int rank;     // 0: not looked at; then by how well it is known
        double sigma; // metres
        int point, version;
        int turn; // in the queue: of equals the first one is taken, so that the frame grows round and not in threads
        bool operator<(const Waiting &o) const
        {
            if (rank != o.rank) return rank > o.rank;
            return sigma != o.sigma ? sigma > o.sigma : turn > o.turn;
        }
    };

    void place(int point, double x, double y, double sigma);
    void vote(int circle);
    void touch(int from, int point);
    void touch_neighbours(int point);
    void look(const Waiting &w);
    int rank_of(const Determination &d) const;
    void scale_by(int point);
    void take(int point, const Determination &d);

    const Sightings &s;
    Frame &frame;
    const Frame *ground;
    const Way &way;
    unsigned bits;            // of the way that are left
    std::vector<int> version; // [points] of what is known of each
    std::priority_queue<Waiting> queue;
    int queued = 0;
};

} // namespace vornhost::start

#endif
