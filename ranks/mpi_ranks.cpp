#include "ranks/mpi_ranks.h"

#include <mpi.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

const std::size_t at_a_time = (std::size_t)1 << 22; // numbers of one message

// Results are made on the first process and sent from there: the same bits everywhere.
void reduce(double *x, std::size_t n, MPI_Op operation)
{
    std::vector<double> result(std::min(n, at_a_time));
    for (std::size_t done = 0; done < n; done += at_a_time) {
        const int count = (int)std::min(at_a_time, n - done);
        MPI_Reduce(x + done, result.data(), count, MPI_DOUBLE, operation, 0, MPI_COMM_WORLD);
        MPI_Bcast(result.data(), count, MPI_DOUBLE, 0, MPI_COMM_WORLD);
        std::copy_n(result.data(), count, x + done);
    }
}

} // namespace

MpiRanks::MpiRanks()
{
    MPI_Comm_rank(MPI_COMM_WORLD, &self);
    MPI_Comm_size(MPI_COMM_WORLD, &processes);
}

// The first process may take long before it calls: the others wait without keeping a processor busy, but answer soon
// what follows soon.
int MpiRanks::call(int go)
{
    constexpr useconds_t shortest = 20, longest = 2000;
    useconds_t nap = shortest;
    MPI_Request request;
    int done = 0;
    MPI_Ibcast(&go, 1, MPI_INT, 0, MPI_COMM_WORLD, &request);
    for (MPI_Test(&request, &done, MPI_STATUS_IGNORE); !done; MPI_Test(&request, &done, MPI_STATUS_IGNORE)) {
        usleep(nap);
        nap = std::min(2 * nap, longest);
    }
    return go;
}

void MpiRanks::begin()
{
    has_begun = true;
    if (call(1) == 0) throw Released();
}

void MpiRanks::leave_to_first()
{
    if (self > 0) throw Released();
    is_alone = true;
}

void MpiRanks::hear(double *x, std::size_t n)
{
    if (call(1) == 0) throw Released();
    MPI_Bcast(x, (int)n, MPI_DOUBLE, 0, MPI_COMM_WORLD);
}

std::vector<std::string> MpiRanks::bring(const std::string &own)
{
    const int n = (int)own.size();
    std::vector<int> sizes(self == 0 ? (std::size_t)processes : 0), starts(sizes.size(), 0);
    MPI_Gather(&n, 1, MPI_INT, sizes.data(), 1, MPI_INT, 0, MPI_COMM_WORLD);
    for (std::size_t r = 1; r < sizes.size(); r++) starts[r] = starts[r - 1] + sizes[r - 1];
    std::string all(self == 0 ? (std::size_t)(starts.back() + sizes.back()) : 0, '\0');
    MPI_Gatherv(own.data(), n, MPI_CHAR, all.data(), sizes.data(), starts.data(), MPI_CHAR, 0, MPI_COMM_WORLD);
    std::vector<std::string> by_rank;
    by_rank.reserve(sizes.size());
    for (std::size_t r = 0; r < sizes.size(); r++)
        by_rank.push_back(all.substr((std::size_t)starts[r], (std::size_t)sizes[r]));
    return by_rank;
}

void MpiRanks::sum(double *x, std::size_t n) { reduce(x, n, MPI_SUM); }

void MpiRanks::most(double *x, std::size_t n)
{
    for (std::size_t i = 0; i < n; i++)
        if (std::isnan(x[i])) x[i] = INFINITY;
    reduce(x, n, MPI_MAX);
}

void MpiRanks::release() { call(0); }

bool MpiRanks::await_release() { return call(0) == 0; }
