// What the factorization and the inverse allocate, and what they do when there is no more.

#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "adjust/factor.h"
#include "adjust/inverse.h"
#include "adjust/order.h"
#include "allocations.h"
#include "patterns.h"

namespace vornadjust {

std::atomic<long long> allocated_bytes(0);
std::atomic<long long> allocations_left(-1);

} // namespace vornadjust

using namespace vornadjust;

static void *allocate(std::size_t size)
{
    if (allocations_left >= 0 && allocations_left-- == 0) throw std::bad_alloc();
    allocated_bytes += (long long)size;
    void *p = std::malloc(size > 0 ? size : 1);
    if (!p) throw std::bad_alloc();
    return p;
}

void *operator new(std::size_t size) { return allocate(size); }
void *operator new[](std::size_t size) { return allocate(size); }
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }

namespace {

template <class Work> double bytes_of(const Work &work)
{
    const long long before = allocated_bytes;
    work();
    return (double)(allocated_bytes - before);
}

// Calls work with its first allocation failing, then its second, ..., until it passes; returns how often
// it failed.
template <class Work> int failures_of(const Work &work)
{
    for (int failures = 0;; failures++) {
        allocations_left = failures;
        try {
            work();
            allocations_left = -1;
            return failures;
        } catch (const std::bad_alloc &) {
        }
    }
}

} // namespace

TEST(Memory, IsWhatWasStatedAndLittleBeside)
{
    for (const Shape &shape : {grid(60, 60, 3, 1), full(700), band(5000, 20)})
        for (const int threads : {1, 2}) {
            const SymmetricMatrix a = matrix_of(shape, 1);
            const Symbolic symbolic = analyse(a, fill_reducing_order(a).unknown);
            FactorOptions options;
            InverseOptions inverse_options;
            options.threads = inverse_options.threads = threads;
            Factor factor;
            const double taken = bytes_of([&] { factorize(a, symbolic, factor, options); });
            EXPECT_NEAR(taken, (double)factor_bytes(symbolic, threads), 0.03 * taken) << shape.name;
            Inverse inverse;
            const double inverted = bytes_of([&] { invert(symbolic, factor, inverse, inverse_options); });
            EXPECT_NEAR(inverted, (double)inverse_bytes(symbolic, threads), 0.03 * inverted) << shape.name;
        }
}

TEST(Memory, BeyondWhatCanBeAddressedIsRefused)
{
    const SymmetricMatrix a = matrix_of(full(3), 1);
    Symbolic symbolic = analyse(a, {0, 1, 2});
    Factor factor;
    Inverse inverse;
    ASSERT_TRUE(factorize(a, symbolic, factor));
    symbolic.valuestart.back() = std::int64_t(1) << 60;
    EXPECT_THROW(factorize(a, symbolic, factor), std::bad_alloc);
    EXPECT_THROW(invert(symbolic, factor, inverse), std::bad_alloc);
}

TEST(Memory, ThatIsMissingIsSaidAndThePartsLeaveNoTrace)
{
    const SymmetricMatrix a = matrix_of(grid(30, 30, 3, 1), 1);
    Order order;
    EXPECT_GT(failures_of([&] { order = fill_reducing_order(a); }), 10);
    Symbolic symbolic;
    EXPECT_GT(failures_of([&] { symbolic = analyse(a, order.unknown); }), 10);
    Factor factor;
    EXPECT_GT(failures_of([&] { factorize(a, symbolic, factor); }), 5);
    Inverse inverse;
    EXPECT_GT(failures_of([&] { invert(symbolic, factor, inverse); }), 5);
    std::vector<double> wanted = random_vector(a.n, 1), x((std::size_t)a.n);
    multiply(a, wanted.data(), x.data());
    EXPECT_GT(failures_of([&] { solve(symbolic, factor, x.data()); }), 1);
    for (int i = 0; i < a.n; i++) EXPECT_NEAR(x[i], wanted[i], 1e-10);
}
