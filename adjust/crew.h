// Who works on a block: one thread, or all of a team.

#ifndef VORNADJUST_CREW_H
#define VORNADJUST_CREW_H

#include "adjust/team.h"

namespace vornadjust {

struct Crew {
    Team *team; // null for one thread
    int thread; // that has the block in hand

    // work(task, thread) for each task.
    template <class Work> void share(int tasks, const Work &work) const
    {
        if (team)
            team->run(tasks, work);
        else
            for (int task = 0; task < tasks; task++) work(task, thread);
    }
};

} // namespace vornadjust

#endif
