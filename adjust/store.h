// The numbers of a factor or an inverse: in memory or, where it does not hold them, on a disk.
//
// Both have addresses. So that no more of those on a disk is in memory than was agreed, whoever works along them
// leaves behind what is done (Trail).

#ifndef VORNADJUST_STORE_H
#define VORNADJUST_STORE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "adjust/disk.h"

namespace vornadjust {

class Store {
public:
    Store() = default;
    // On a disk, from the first assign() or resize() on.
    //   chunk  numbers that one trail may hold in memory
    Store(Disk *its_disk, std::size_t its_chunk) : disk(its_disk), chunk(its_chunk) {}
    ~Store() { give_back(); }
    Store(Store &&other) noexcept;
    Store &operator=(Store &&other) noexcept;
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    // An empty one in the same place.
    Store beside() const { return Store(disk, chunk); }
    bool on_disk() const { return disk != nullptr; }

    // n numbers, all x. Throws std::bad_alloc, or what the disk says.
    void assign(std::size_t n, double x);
    // n numbers; those that were there stay, unless n is another number and they are on a disk.
    void resize(std::size_t n);

    std::size_t size() const { return count; }
    double *data() { return first; }
    const double *data() const { return first; }
    double &operator[](std::size_t i) { return first[i]; }
    const double &operator[](std::size_t i) const { return first[i]; }
    const double *begin() const { return first; }
    const double *end() const { return first + count; }

    // Numbers that may be worked on at a time: all that are in memory anyway.
    std::size_t stride() const { return disk ? chunk : count; }
    // Numbers from to end - 1 are done with for now.
    void leave(std::size_t from, std::size_t end) const
    {
        if (disk && end > from) disk->leave(first + from, end - from);
    }

private:
    void give_back() noexcept;

    std::vector<double> memory;
    Disk *disk = nullptr;
    std::size_t chunk = 0;
    double *first = nullptr;
    std::size_t count = 0;
};

bool operator==(const Store &a, const Store &b);

// What one thread has done with along a store: left when it has become a chunk, or is not joined by what follows.
class Trail {
public:
    explicit Trail(const Store &its_store) : store(its_store) {}
    ~Trail() { store.leave(from, end); }
    Trail(const Trail &) = delete;
    Trail &operator=(const Trail &) = delete;

    void done(std::int64_t begin, std::int64_t behind)
    {
        if (store.on_disk()) add((std::size_t)begin, (std::size_t)behind);
    }

private:
    void add(std::size_t begin, std::size_t behind);

    const Store &store;
    std::size_t from = 0, end = 0;
};

} // namespace vornadjust

#endif
