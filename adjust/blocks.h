// A loop over many items, shared by a few threads in blocks. What is computed of an item must not depend on the others:
// results are then the same for any number of threads.

#ifndef VORNADJUST_BLOCKS_H
#define VORNADJUST_BLOCKS_H

#include <algorithm>
#include <exception>
#include <mutex>

#include "adjust/team.h"

namespace vornadjust {

// Calls work(first, end) for blocks that cover 0 to n - 1; small loops stay with the caller. What a block throws is
// thrown when all have ended.
template <class Work> void in_blocks(int threads, int n, const Work &work)
{
    constexpr int block = 4096;
    if (threads < 2 || n < 2 * block) return work(0, n);
    std::exception_ptr failure;
    std::mutex mutex;
    Team team(threads);
    team.run((n - 1) / block + 1, [&](int task, int) {
        try {
            work(task * block, std::min(n, (task + 1) * block));
        } catch (...) {
            const std::lock_guard<std::mutex> lock(mutex);
            failure = std::current_exception();
        }
    });
    if (failure) std::rethrow_exception(failure);
}

} // namespace vornadjust

#endif
