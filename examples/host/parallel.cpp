// Adjusts one network under many standard deviations at once, one thread each, with progress and a way to stop, and
// prints how well the two points B and C are known against one another.

#include <atomic>
#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "vorn/network.h"

static std::string levelling(double sigma)
{
    const std::string s = std::to_string(sigma);
    return "[run]\ndimension = 1\n[tables]\ntargets = '''\nname z code\nA 100 fixed\nB 101.2 free\nC 103.5 free\n'''\n"
           "height_differences = '''\nfrom to value sigma\nA B 1.234 " +
           s + "\nB C 2.221 " + s + "\nC A -3.452 " + s + "\n'''\n";
}

int main()
{
    std::atomic<bool> cancel{false}; // set by a button, for instance
    std::atomic<int> steps{0};
    std::vector<vornapi::Result> results(4);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; i++)
        threads.emplace_back([&, i] {
            vornapi::Options options;
            options.covariances = {"B", "C"};
            options.cancel = &cancel;
            options.progress = [&](const std::string &, double) { steps++; };
            const vornapi::Reading reading = vornapi::read_text(levelling(0.001 * (i + 1)));
            if (reading.network) results[(size_t)i] = reading.network->adjust(options);
        });
    for (std::thread &thread : threads) thread.join();
    for (const vornapi::Result &r : results) {
        if (!r.adjusted()) return 1;
        const double bb = (*r.covariance("B", "B"))[8], cc = (*r.covariance("C", "C"))[8];
        const double bc = (*r.covariance("B", "C"))[8];
        std::printf("sigma %.3f: from B to C %.5f m\n", *r.sigma_aposteriori, std::sqrt(bb + cc - 2 * bc));
    }
    return steps > 0 ? 0 : 1;
}
