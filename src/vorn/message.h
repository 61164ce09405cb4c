// Lines to the user: to Feedback alone, or to Feedback and the report.

#ifndef VORN_MESSAGE_H
#define VORN_MESSAGE_H

#include <stdio.h>

#include "vorn/project.h"

namespace vornengine {

#if defined(__GNUC__) && !defined(__MINGW32__)
#define PRINTF_LIKE(text, first) __attribute__((format(printf, text, first)))
#elif defined(__GNUC__)
#define PRINTF_LIKE(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define PRINTF_LIKE(text, first)
#endif

// Sends one formatted line to Feedback::feedback; a longer one than 511 characters is cut.
void tell(Feedback *fb, const char *format, ...) PRINTF_LIKE(2, 3);

// Sends the line to Feedback::feedback, then prints it on out with a newline.
void tell_and_print(Feedback *fb, FILE *out, const char *format, ...) PRINTF_LIKE(3, 4);

} // namespace vornengine

#endif
