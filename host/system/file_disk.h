// Files in the place of memory, for factor and inverse of a network that is larger than the memory for them.
//
// A file has no name, is reserved whole before it is used and mapped to addresses, and is gone with the process. It
// lies in the folder that the environment names in TMPDIR, or in /var/tmp.

#ifndef VORNHOST_FILE_DISK_H
#define VORNHOST_FILE_DISK_H

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "adjust/disk.h"

namespace vornhost {

class FileDisk : public vornadjust::Disk {
public:
    // Whether this system has such files.
    static bool available();

    // limit in bytes. Where a file cannot be read or written later on (the medium fails), `failed` is called as a
    // signal handler is; it must not return.
    FileDisk(std::size_t limit, void (*failed)());

    // Who is told, in one line, that memory does not hold factor and inverse; once.
    void tell(std::function<void(const std::string &)> listener) { told = std::move(listener); }

    std::size_t limit() const override { return most; }
    void begin(std::size_t bytes) override;
    // These throw std::runtime_error.
    void refuse(std::size_t least_bytes) override;
    double *take(std::size_t numbers) override;
    void give_back(double *numbers, std::size_t count) override;
    void leave(const double *numbers, std::size_t count) override;

private:
    const std::size_t most;
    const std::string folder;
    std::function<void(const std::string &)> told;
};

} // namespace vornhost

#endif
