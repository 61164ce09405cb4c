// What the fuzz targets share: a folder for the files of a run, and small helpers.

#ifndef FUZZ_SCRATCH_H
#define FUZZ_SCRATCH_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "host/input/model.h"

// Called by libFuzzer, or by run_files.cpp, once for each input.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// Makes a folder for this process in $TMPDIR, or in memory where the machine has a file system
// in memory, and goes there. It is removed with the files in it when the process ends.
void enter_scratch();

// Writes the bytes as a file of the working folder; ends the process when that fails.
void write_bytes(const char *name, const uint8_t *data, size_t size);

// A report stream that keeps nothing but can be read and positioned like a file.
FILE *open_report();

// Hears everything, answers each question with answer.
class Silent : public Feedback {
public:
    void feedback(char *line) override { letters += line[0] != 0; }
    int decision(char *, char *) override { return answer; }
    int answer = 0;

private:
    int letters = 0;
};

// Adjusts the network with the solver and writes report, JSON and tables as the program would,
// without a word.
void adjust_silently(vornhost::Model &model, vornhost::Solver solver);

// The same with the network of a file, unless that has faults.
void adjust_file(const char *path, vornhost::Solver solver);

#endif
