// Opening and closing of the files that a run writes beside its report. None of them stops a
// run; what could not be opened or written is left as an errno where the caller wants it.

#ifndef VORN_SIDEFILE_H
#define VORN_SIDEFILE_H

#include <stdio.h>

namespace vornengine {

// Enters the errno unless an earlier one stands there. first may be null.
void keep_error(int *first, int number);

// A new file of that name in the working directory; null when it cannot be opened.
FILE *open_side(const char *name, int *error);

// Closes the file. A failure of this or of any write before goes to error.
void close_side(FILE *f, int *error);

} // namespace vornengine

#endif
