// What a program settles with the operating system when it begins.

#ifndef VORNHOST_PROCESS_H
#define VORNHOST_PROCESS_H

namespace vornhost {

// A standard stream that is closed would give its number to the next file that is opened. Handles on which writing
// fails take their places. False when there are none.
bool hold_standard_streams();

// A reader that has gone, and a file beyond the user's limit, show as failed writes and do not end the process.
void let_writes_fail();

// Calls the function at every interrupt (SIGINT and SIGTERM, Ctrl-C and Ctrl-Break on Windows) that was not ignored
// when the program began. It may do what a signal handler may.
void when_interrupted(void (*function)());

// Arrays of the adjustment are taken and released again and again: what is up to 32 MB stays with the process, where
// the system would have to be asked for its pages each time.
void keep_memory();

// Gives free memory back to the system, where it knows how: before a step that takes much in one piece.
void give_back_memory();

// Texts on a terminal are UTF-8.
void show_utf8();

} // namespace vornhost

#endif
