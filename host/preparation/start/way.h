// How one of several ways to the plan begins, and what it takes where two places or two images fit alike.

#ifndef VORNHOST_START_WAY_H
#define VORNHOST_START_WAY_H

#include <algorithm>
#include <vector>

namespace vornhost::start {

// Where a second place, or the mirror image of a local frame, fits alike: the point, or the number of points and the
// centre of the frame.
using Choice = int;

struct Way {
    bool local_first = false;        // a local frame before the ground
    unsigned choices = 0;            // bit after bit the second one
    int skip = 0;                    // so many of the best centres of local frames
    std::vector<Choice> others = {}; // that are taken the other way round; sorted

    bool turned_round(Choice c) const { return std::binary_search(others.begin(), others.end(), c); }
    void turn_round(Choice c)
    {
        const auto at = std::lower_bound(others.begin(), others.end(), c);
        if (at != others.end() && *at == c)
            others.erase(at);
        else
            others.insert(at, c);
    }
};

} // namespace vornhost::start

#endif
