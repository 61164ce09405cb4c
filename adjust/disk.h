// Room outside of memory, as the host of an adjustment gives it.

#ifndef VORNADJUST_DISK_H
#define VORNADJUST_DISK_H

#include <cstddef>

namespace vornadjust {

class Disk {
public:
    virtual ~Disk() = default;

    // Bytes of memory that factor and inverse may take.
    virtual std::size_t limit() const = 0;
    // They take more, so many bytes, and go to the disk.
    virtual void begin(std::size_t bytes) = 0;
    // The limit is below what the computation needs at a time. Throws what the host says of that.
    virtual void refuse(std::size_t least_bytes) = 0;

    // So many numbers, all 0, at addresses as others have. Throws what the host says where there is no room.
    virtual double *take(std::size_t numbers) = 0;
    virtual void give_back(double *numbers, std::size_t count) = 0;
    // These take no memory until they are touched again; they keep their values.
    virtual void leave(const double *numbers, std::size_t count) = 0;
};

} // namespace vornadjust

#endif
