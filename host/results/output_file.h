// An output that appears whole or not at all: written under a temporary name in the folder
// of its target and renamed when it is complete. A target that exists and is not a plain
// file, such as a device or a pipe, is written directly.

#ifndef VORNHOST_OUTPUT_FILE_H
#define VORNHOST_OUTPUT_FILE_H

#include <stdio.h>

#include <string>
#include <string_view>
#include <system_error>

namespace vornhost {

// what() is "cannot write PATH: No space left on device".
class OutputError : public std::system_error {
public:
    OutputError(int number, const std::string &path);
    const char *what() const noexcept override { return text.c_str(); }

private:
    std::string text;
};

class OutputFile {
public:
    // Throws OutputError when the target cannot be made; so do the members below.
    explicit OutputFile(const std::string &path);
    ~OutputFile(); // removes what was not finished
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    // Open for writing; a plain file can be read back as well.
    FILE *stream() { return file; }
    void write(std::string_view text);

    // Where it is written for now; empty when that is the target itself.
    const std::string &temporary_name() const { return temporary; }

    // Flushes, closes and gives the file its name.
    void finish();

private:
    void open_temporary();
    void close_checked();

    std::string target;
    std::string temporary; // empty when the target is written directly
    FILE *file = nullptr;
};

// Flushes a stream; throws when this or any earlier write to it failed.
void flush_checked(FILE *file, const std::string &name);

// Writes a whole text.
void write_file(const std::string &path, std::string_view text);

} // namespace vornhost

#endif
