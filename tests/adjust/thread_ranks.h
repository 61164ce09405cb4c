// Ranks that are threads of one process, with a plain dense factor of the boundary.

#ifndef TESTS_ADJUST_THREAD_RANKS_H
#define TESTS_ADJUST_THREAD_RANKS_H

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "adjust/ranks.h"

namespace vornadjust {

// What an adjustment of all ranks leaves on those that are not needed any more.
struct Left {};

// The table around which the threads sit: each puts down what it has, and all read it.
class Table {
public:
    explicit Table(int size) : place(size) {}

    int size() const { return (int)place.size(); }

    // What every rank has put down.
    std::vector<std::vector<double>> meet(int rank, std::vector<double> own)
    {
        std::unique_lock<std::mutex> lock(mutex);
        place[rank] = std::move(own);
        wait(lock);
        std::vector<std::vector<double>> all = place;
        wait(lock);
        return all;
    }

private:
    void wait(std::unique_lock<std::mutex> &lock)
    {
        const int round = rounds;
        if (++here == size()) {
            here = 0;
            rounds++;
            turn.notify_all();
        } else {
            turn.wait(lock, [&] { return rounds != round; });
        }
    }

    std::mutex mutex;
    std::condition_variable turn;
    std::vector<std::vector<double>> place;
    int here = 0, rounds = 0;
};

class ThreadRanks : public Ranks {
public:
    ThreadRanks(Table *its_table, int rank) : table(*its_table), self(rank) {}

    int size() const override { return table.size(); }
    int own() const override { return self; }
    void begin() override {}
    void leave_to_first() override
    {
        if (self > 0) throw Left();
        is_alone = true;
    }
    bool alone() const override { return is_alone; }

    void stand_by() override {}
    void hear(double *x, std::size_t count) override
    {
        const auto all = table.meet(self, self == 0 ? std::vector<double>(x, x + count) : std::vector<double>());
        if (all[0].empty()) throw Left();
        std::copy(all[0].begin(), all[0].end(), x);
    }
    std::vector<std::string> bring(const std::string &own_bytes) override
    {
        std::vector<std::string> all;
        for (const std::vector<double> &one : table.meet(self, std::vector<double>(own_bytes.begin(), own_bytes.end())))
            all.emplace_back(one.begin(), one.end());
        return self == 0 ? all : std::vector<std::string>();
    }
    // Of the first rank: the others, which stand by, are left.
    void dismiss() { table.meet(self, {}); }

    void sum(double *x, std::size_t count) override
    {
        const auto all = table.meet(self, std::vector<double>(x, x + count));
        std::fill_n(x, count, 0.0);
        for (const std::vector<double> &one : all)
            for (std::size_t i = 0; i < count; i++) x[i] += one[i];
    }

    void most(double *x, std::size_t count) override
    {
        for (const std::vector<double> &one : table.meet(self, std::vector<double>(x, x + count)))
            for (std::size_t i = 0; i < count; i++) x[i] = std::fmax(x[i], std::isnan(one[i]) ? INFINITY : one[i]);
    }

    void set_boundary(int count, const std::vector<int> &own_ones) override
    {
        n = (std::size_t)count, which = own_ones;
    }

    void sum_boundary(double *x) override
    {
        std::vector<double> all = spread(1, x);
        sum(all.data(), all.size());
        for (std::size_t i = 0; i < which.size(); i++) x[i] = all[which[i]];
    }

    // Cholesky factor L in l[i][j], j <= i.
    bool factorize(const double *block, const double *diagonal, double least_pivot, double *pivot) override
    {
        l.assign(n * n, 0.0);
        const std::size_t m = which.size();
        for (std::size_t j = 0; j < m; j++)
            for (std::size_t i = j; i < m; i++) l[which[i] * n + which[j]] = block[j * m + i];
        sum(l.data(), l.size());
        std::vector<double> whole(n, 0.0), relative(n, 0.0);
        for (std::size_t i = 0; i < m; i++) whole[which[i]] = diagonal[i];
        most(whole.data(), n);
        for (std::size_t j = 0; j < n; j++) {
            for (std::size_t i = j; i < n; i++)
                for (std::size_t k = 0; k < j; k++) l[i * n + j] -= l[i * n + k] * l[j * n + k];
            const double d = l[j * n + j];
            if (!(d >= least_pivot * whole[j]) || !(d > 0.0)) return false;
            relative[j] = d / whole[j];
            for (std::size_t i = j; i < n; i++) l[i * n + j] /= std::sqrt(d);
        }
        for (std::size_t i = 0; i < m; i++) pivot[i] = relative[which[i]];
        return true;
    }

    void solve(int k, double *b) override
    {
        std::vector<double> x = spread(k, b);
        sum(x.data(), x.size());
        for (int c = 0; c < k; c++) substitute(x.data() + c * n);
        for (int c = 0; c < k; c++)
            for (std::size_t i = 0; i < which.size(); i++) b[c * which.size() + i] = x[c * n + which[i]];
    }

    void invert(double *z) override
    {
        std::vector<double> x;
        for (std::size_t j = 0; j < which.size(); j++) {
            x.assign(n, 0.0);
            x[which[j]] = 1.0;
            substitute(x.data());
            for (std::size_t i = 0; i < which.size(); i++) z[j * which.size() + i] = x[which[i]];
        }
    }

    std::size_t boundary() const { return n; }

private:
    std::vector<double> spread(int k, const double *b) const
    {
        std::vector<double> x(k * n, 0.0);
        for (int c = 0; c < k; c++)
            for (std::size_t i = 0; i < which.size(); i++) x[c * n + which[i]] = b[c * which.size() + i];
        return x;
    }

    void substitute(double *x) const
    {
        for (std::size_t i = 0; i < n; i++) {
            for (std::size_t k = 0; k < i; k++) x[i] -= l[i * n + k] * x[k];
            x[i] /= l[i * n + i];
        }
        for (std::size_t i = n; i-- > 0;) {
            for (std::size_t k = i + 1; k < n; k++) x[i] -= l[k * n + i] * x[k];
            x[i] /= l[i * n + i];
        }
    }

    Table &table;
    const int self;
    bool is_alone = false;
    std::size_t n = 0;
    std::vector<int> which;
    std::vector<double> l;
};

// Calls work(ranks) on so many ranks; those that are left end there.
inline void on_ranks(int count, const std::function<void(ThreadRanks &)> &work)
{
    Table table(count);
    std::vector<std::thread> threads;
    threads.reserve((std::size_t)count);
    for (int r = 0; r < count; r++)
        threads.emplace_back([&, r] {
            ThreadRanks ranks(&table, r);
            try {
                work(ranks);
            } catch (const Left &) {
            }
        });
    for (std::thread &t : threads) t.join();
}

} // namespace vornadjust

#endif
