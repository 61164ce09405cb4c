#include "host/system/file_disk.h"

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#if defined(_WIN32) || defined(__EMSCRIPTEN__)
#define VORN_NO_FILE_DISK
#else
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/vfs.h>
#include <unistd.h>
#endif

namespace vornhost {

namespace {

std::string folder_of_files()
{
    const char *named = std::getenv("TMPDIR");
    return named && *named ? named : "/var/tmp";
}

// Rounded up, in units that --memory takes.
std::string size_text(std::size_t bytes)
{
    const std::size_t kilo = 1 << 10, mega = 1 << 20;
    const bool small = bytes < 10 * mega;
    const std::size_t unit = small ? kilo : mega;
    return std::to_string((bytes + unit - 1) / unit) + (small ? "K" : "M");
}

} // namespace

void FileDisk::refuse(std::size_t least_bytes)
{
    throw std::runtime_error("--memory " + size_text(most) + " is too little for this network; it takes at least " +
                             size_text(least_bytes));
}

#ifdef VORN_NO_FILE_DISK

bool FileDisk::available() { return false; }

FileDisk::FileDisk(std::size_t limit, void (*)()) : most(limit), folder(folder_of_files()) {}

void FileDisk::begin(std::size_t) {}

double *FileDisk::take(std::size_t) { throw std::runtime_error("this system has no files in the place of memory"); }

void FileDisk::give_back(double *, std::size_t) {}

void FileDisk::leave(const double *, std::size_t) {}

#else

namespace {

// What a file system is called, by its number; empty for others.
std::string file_system(const std::string &folder)
{
    static const struct {
        unsigned long number;
        const char *name;
    } known[] = {{0xef53, "ext4"},
                 {0x58465342, "xfs"},
                 {0x9123683e, "btrfs"},
                 {0x2fc12fc1, "zfs"},
                 {0x6969, "nfs"},
                 {0x794c7630, "overlay"},
                 {0x1021994, "tmpfs, which is memory"}};
    struct statfs found;
    if (statfs(folder.c_str(), &found) != 0) return "";
    for (const auto &k : known)
        if ((unsigned long)found.f_type == k.number) return std::string(" (") + k.name + ")";
    return "";
}

[[noreturn]] void fail(const std::string &folder, std::size_t bytes, int why)
{
    throw std::runtime_error("cannot keep " + size_text(bytes) + " in " + folder + ": " + strerror(why));
}

// A file that no folder names; -1 with errno.
int open_unnamed(const std::string &folder)
{
#ifdef O_TMPFILE
    const int unnamed = open(folder.c_str(), O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, 0600);
    if (unnamed >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return unnamed;
#endif
    std::string name = folder + "/vorn-XXXXXX";
    const int named = mkstemp(&name[0]);
    if (named >= 0) unlink(name.c_str());
    return named;
}

// The addresses of a process may be limited to the memory of the machine; a file needs others.
void allow_addresses(std::size_t more)
{
    rlimit limit;
    if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return;
    const rlim_t room = limit.rlim_max - limit.rlim_cur;
    limit.rlim_cur += more < room ? (rlim_t)more : room;
    setrlimit(RLIMIT_AS, &limit);
}

void (*when_failed)() = nullptr;

void take_failure(int) { when_failed(); }

} // namespace

bool FileDisk::available() { return true; }

FileDisk::FileDisk(std::size_t limit, void (*failed)()) : most(limit), folder(folder_of_files())
{
    when_failed = failed;
    struct sigaction action = {};
    action.sa_handler = take_failure;
    sigaction(SIGBUS, &action, nullptr);
}

void FileDisk::begin(std::size_t bytes)
{
    if (!told) return;
    std::exchange(told, nullptr)("factor and inverse take " + size_text(bytes) + ", more than --memory " +
                                 size_text(most) + ": they are kept in " + folder + file_system(folder) +
                                 ", with the same results but more slowly");
}

double *FileDisk::take(std::size_t numbers)
{
    if (numbers == 0) return nullptr;
    if (numbers > SIZE_MAX / 2 / sizeof(double)) fail(folder, SIZE_MAX / 2, ENOSPC);
    const std::size_t bytes = numbers * sizeof(double);
    const int file = open_unnamed(folder);
    if (file < 0) fail(folder, bytes, errno);
    int why = 0;
    do why = posix_fallocate(file, 0, (off_t)bytes);
    while (why == EINTR);
    void *mapped = MAP_FAILED;
    if (why == 0) {
        allow_addresses(bytes);
        mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        why = mapped == MAP_FAILED ? errno : 0;
    }
    close(file);
    if (why != 0) fail(folder, bytes, why);
    return (double *)mapped;
}

void FileDisk::give_back(double *numbers, std::size_t count)
{
    if (numbers) munmap(numbers, count * sizeof(double));
}

// Whole pages: what lies beside the numbers is read again as well.
void FileDisk::leave(const double *numbers, std::size_t count)
{
    char *const begin = (char *)numbers;
    const std::size_t before = (std::uintptr_t)begin % (std::size_t)sysconf(_SC_PAGESIZE);
    madvise(begin - before, before + count * sizeof(double), MADV_DONTNEED); // to the end of its page
}

#endif

} // namespace vornhost
