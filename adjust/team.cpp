// Threads that wait for rounds of tasks.

#include "adjust/team.h"

#include <cstddef>
#include <system_error>

namespace vornadjust {

Team::Team(int size)
{
    workers.reserve(size > 1 ? (std::size_t)size - 1 : 0);
    try {
        for (int thread = 1; thread < size; thread++) workers.emplace_back([this, thread] { wait_for_work(thread); });
    } catch (const std::system_error &) { // those that are there do
    }
}

Team::~Team()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        closing = true;
    }
    begin.notify_all();
    for (std::thread &w : workers) w.join();
}

void Team::take_tasks(int thread)
{
    for (int task = next++; task < ntask; task = next++) call(work, task, thread);
}

void Team::wait_for_work(int thread)
{
    long done = 0;
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        begin.wait(lock, [&] { return closing || round != done; });
        if (closing) return;
        done = round;
        lock.unlock();
        take_tasks(thread);
        lock.lock();
        if (--working == 0) end.notify_one();
    }
}

void Team::run_all(int tasks, Call function, const void *argument)
{
    if (workers.empty() || tasks <= 1) {
        for (int task = 0; task < tasks; task++) function(argument, task, 0);
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex);
        call = function;
        work = argument;
        ntask = tasks;
        next = 0;
        working = (int)workers.size();
        round++;
    }
    begin.notify_all();
    take_tasks(0);
    std::unique_lock<std::mutex> lock(mutex);
    end.wait(lock, [&] { return working == 0; });
}

} // namespace vornadjust
