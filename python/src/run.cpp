#include "run.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace vornpython {

namespace {

constexpr std::chrono::milliseconds look(50); // between two looks at signals

class Run {
public:
    Run(const vornapi::Network &network, vornapi::Options options, const py::object &function) : progress(function)
    {
        options.cancel = &cancel;
        if (!progress.is_none())
            options.progress = [this](const std::string &step, double share) { tell(step, share); };
        worker = std::thread([this, network, options = std::move(options)] {
            result = network.adjust(options);
            const std::lock_guard<std::mutex> lock(mutex);
            done = true;
            changed.notify_one();
        });
    }
    Run(const Run &) = delete;
    Run &operator=(const Run &) = delete;
    ~Run() { end(); }

    vornapi::Result finish()
    {
        while (wait()) call_back();
        call_back();
        end();
        if (error) throw py::error_already_set(*error);
        return std::move(result);
    }

private:
    using Steps = std::vector<std::pair<std::string, double>>;

    // Called by the run; of shares the last one of each step counts.
    void tell(const std::string &step, double share)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (told.empty() || told.back().first != step)
            told.emplace_back(step, share);
        else
            told.back().second = share;
        changed.notify_one();
    }

    // Waits for something to do; false at the end of the run.
    bool wait()
    {
        const py::gil_scoped_release unlocked;
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait_for(lock, look, [this] { return done || !told.empty(); });
        return !done;
    }

    void call_back()
    {
        Steps steps;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            steps.swap(told);
        }
        if (error) return;
        try {
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
            for (const auto &[step, share] : steps) progress(step, share);
        } catch (const py::error_already_set &raised) {
            error.emplace(raised);
            cancel = true;
        }
    }

    void end()
    {
        if (!worker.joinable()) return;
        const py::gil_scoped_release unlocked;
        if (!done) cancel = true;
        worker.join();
    }

    const py::object progress;
    std::atomic<bool> cancel{false};
    std::atomic<bool> done{false};
    std::mutex mutex;
    std::condition_variable changed;
    Steps told; // since the last call back
    std::optional<py::error_already_set> error;
    vornapi::Result result;
    std::thread worker;
};

} // namespace

vornapi::Result run(const vornapi::Network &network, vornapi::Options options, const py::object &progress)
{
    return Run(network, std::move(options), progress).finish();
}

} // namespace vornpython
