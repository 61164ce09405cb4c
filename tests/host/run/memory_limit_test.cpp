// A process asks for more memory than the machine has.

#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/resource.h>

#include "host/run/memory_limit.h"

using namespace vornhost;

namespace {

rlim_t limit()
{
    rlimit found;
    return getrlimit(RLIMIT_AS, &found) == 0 ? found.rlim_cur : 0;
}

// Ends the process with 0 when the second of two halves is refused. Nothing is written into them.
void ask_for_all()
{
    limit_memory();
    const size_t half = (size_t)(machine_memory() / 2);
    void *const first = calloc(half, 1), *const second = calloc(half, 1);
    exit(second == nullptr ? 0 : first == nullptr ? 1 : 2);
}

// A tighter limit stays.
void limit_twice()
{
    rlimit tight;
    if (getrlimit(RLIMIT_AS, &tight) != 0) exit(1);
    tight.rlim_cur = (rlim_t)1 << 30;
    if (setrlimit(RLIMIT_AS, &tight) != 0) exit(2);
    limit_memory();
    exit(limit() == tight.rlim_cur ? 0 : 3);
}

bool sanitized()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#else
    return false;
#endif
}

} // namespace

TEST(MemoryLimit, RefusesWhatTheMachineDoesNotHave)
{
    if (sizeof(void *) < 8) GTEST_SKIP() << "the address space is the limit";
    if (sanitized()) GTEST_SKIP() << "a sanitizer holds more addresses than the machine has memory";
    EXPECT_EXIT(ask_for_all(), testing::ExitedWithCode(0), "");
}

TEST(MemoryLimit, LeavesATighterLimit)
{
    if (sanitized()) GTEST_SKIP() << "a sanitizer cannot live within the limit";
    EXPECT_EXIT(limit_twice(), testing::ExitedWithCode(0), "");
}

TEST(MemoryLimit, LeavesAProcessAloneThatHoldsMoreAddresses)
{
    if (!sanitized()) GTEST_SKIP() << "without a sanitizer it holds few";
    const rlim_t before = limit();
    limit_memory();
    EXPECT_EQ(limit(), before);
}
