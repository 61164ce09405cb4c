#include "host/results/output_file.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace vornhost {

OutputError::OutputError(int number, const std::string &path)
    : std::system_error(number, std::generic_category()), text("cannot write " + path + ": " + code().message())
{
}

namespace {

// The file behind symbolic links, so that a link to an output stays a link.
std::string behind_links(const std::string &path)
{
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

#ifdef _WIN32

void give_usual_permissions(int) {}

#else

void give_usual_permissions(int handle)
{
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(handle, 0666 & ~mask);
}

#endif

// Takes the place of a file that is there. Returns 0 or the number of the error.
int give_name(const std::string &temporary, const std::string &name)
{
    std::error_code error;
    std::filesystem::rename(temporary, name, error);
    return error ? error.default_error_condition().value() : 0;
}

} // namespace

OutputFile::OutputFile(const std::string &path) : target(path)
{
    struct stat info;
    const bool exists = stat(path.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode)) throw OutputError(EISDIR, path);
    if (!exists || S_ISREG(info.st_mode)) {
        if (exists && access(path.c_str(), W_OK) != 0) throw OutputError(errno, path);
        open_temporary();
        if (exists) chmod(temporary.c_str(), info.st_mode & 07777);
    } else {
        file = fopen(path.c_str(), "wb");
    }
    if (!file) throw OutputError(errno, path);
}

// Leaves file null, with errno, when it fails.
void OutputFile::open_temporary()
{
    temporary = behind_links(target) + ".XXXXXX";
    const int handle = mkstemp(&temporary[0]);
    if (handle < 0) {
        temporary.clear();
        return;
    }
    give_usual_permissions(handle);
    file = fdopen(handle, "w+b");
    if (file) return;
    const int number = errno;
    close(handle);
    unlink(temporary.c_str());
    temporary.clear();
    errno = number;
}

OutputFile::~OutputFile()
{
    if (file) fclose(file);
    if (!temporary.empty()) unlink(temporary.c_str());
}

void OutputFile::write(std::string_view text)
{
    if (fwrite(text.data(), 1, text.size(), file) != text.size()) throw OutputError(errno, target);
}

// A write that failed earlier, inside the engine, left no more than the mark in the stream.
// Its cause shows again when one more byte is written to what is lost anyway.
void flush_checked(FILE *file, const std::string &name)
{
    errno = 0;
    const bool failed = ferror(file) != 0;
    if (fflush(file) == 0 && !failed) return;
    if (errno == 0 && fputc('\n', file) != EOF) fflush(file);
    throw OutputError(errno ? errno : EIO, name);
}

void OutputFile::close_checked()
{
    flush_checked(file, target);
    FILE *closing = file;
    file = nullptr;
    if (fclose(closing) != 0) throw OutputError(errno, target);
}

void OutputFile::finish()
{
    if (!file) return;
    close_checked();
    if (temporary.empty()) return;
    const int number = give_name(temporary, behind_links(target));
    if (number != 0) throw OutputError(number, target);
    temporary.clear();
}

void write_file(const std::string &path, std::string_view text)
{
    OutputFile file(path);
    file.write(text);
    file.finish();
}

} // namespace vornhost
