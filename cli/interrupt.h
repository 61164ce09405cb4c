// Interrupts of the program (SIGINT, SIGTERM): it ends with status 130 and leaves nothing half-written.

#ifndef VORN_CLI_INTERRUPT_H
#define VORN_CLI_INTERRUPT_H

#include <atomic>
#include <string>

// From here on an interrupt ends the program at once; one that was ignored when it started stays ignored.
void catch_interrupts();

// While a patient one lives, the first interrupt only sets the flag; the next one ends the program at once.
class Interrupts {
public:
    explicit Interrupts(bool patient);
    ~Interrupts();
    Interrupts(const Interrupts &) = delete;
    Interrupts &operator=(const Interrupts &) = delete;

    const std::atomic<bool> *flag() const;
    bool came() const { return flag()->load(); }
};

// An end at once removes this file first. For files under temporary names.
void remove_when_interrupted(const std::string &path);

#endif
