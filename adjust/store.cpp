#include "adjust/store.h"

#include <algorithm>
#include <utility>

namespace vornadjust {

Store::Store(Store &&other) noexcept { *this = std::move(other); }

Store &Store::operator=(Store &&other) noexcept
{
    if (this == &other) return *this;
    give_back();
    memory = std::move(other.memory);
    disk = std::exchange(other.disk, nullptr);
    chunk = std::exchange(other.chunk, 0);
    first = std::exchange(other.first, nullptr);
    count = std::exchange(other.count, 0);
    return *this;
}

void Store::give_back() noexcept
{
    if (disk && first) disk->give_back(first, count);
    first = nullptr;
    count = 0;
}

void Store::resize(std::size_t n)
{
    if (!disk) {
        memory.resize(n);
        first = memory.data();
    } else if (n != count) {
        give_back();
        first = disk->take(n);
    }
    count = n;
}

void Store::assign(std::size_t n, double x)
{
    if (!disk) {
        memory.assign(n, x);
        first = memory.data();
        count = n;
        return;
    }
    const bool fresh = n != count;
    resize(n);
    if (fresh && x == 0.0) return;
    for (std::size_t from = 0; from < n; from += chunk) {
        const std::size_t end = std::min(n, from + chunk);
        std::fill(first + from, first + end, x);
        leave(from, end);
    }
}

bool operator==(const Store &a, const Store &b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

void Trail::add(std::size_t begin, std::size_t behind)
{
    if (begin == end)
        end = behind;
    else if (behind == from)
        from = begin;
    else {
        store.leave(from, end);
        from = begin;
        end = behind;
    }
    if (end - from < store.stride()) return;
    store.leave(from, end);
    from = end = behind;
}

} // namespace vornadjust
