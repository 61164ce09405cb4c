// A few threads that share the tasks of one computation.

#ifndef VORNADJUST_TEAM_H
#define VORNADJUST_TEAM_H

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace vornadjust {

class Team {
public:
    // The calling thread and size - 1 others; fewer where the system gives no more.
    explicit Team(int size);
    ~Team();
    Team(const Team &) = delete;
    Team &operator=(const Team &) = delete;

    int size() const { return 1 + (int)workers.size(); }

    // Calls task_work(task, thread) once for each task from 0 to tasks - 1, in no order but each begun after
    // those before it; returns when all are done. Thread 0 is the caller's. It must not throw.
    template <class Work> void run(int tasks, const Work &task_work)
    {
        run_all(
            tasks, [](const void *w, int task, int thread) { (*(const Work *)w)(task, thread); }, &task_work);
    }

private:
    typedef void (*Call)(const void *work, int task, int thread);
    void run_all(int tasks, Call call, const void *work);
    void take_tasks(int thread);
    void wait_for_work(int thread);

    std::vector<std::thread> workers;
    std::mutex mutex;
    std::condition_variable begin, end;
    std::atomic<int> next{0};
    int ntask = 0;
    Call call = nullptr;
    const void *work = nullptr;
    long round = 0;  // of tasks, counted
    int working = 0; // workers that are not done with this round
    bool closing = false;
};

} // namespace vornadjust

#endif
