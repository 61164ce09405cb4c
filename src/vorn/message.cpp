// Lines to the user, formatted into a buffer on the stack.

#include "vorn/message.h"

#include <stdarg.h>

namespace vornengine {

void tell(Feedback *fb, const char *format, ...)
{
    char line[512];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (fb) fb->feedback(line);
}

void tell_and_print(Feedback *fb, FILE *out, const char *format, ...)
{
    char line[512];
    va_list args;
    va_start(args, format);
    vsnprintf(line, sizeof line, format, args);
    va_end(args);
    if (fb) fb->feedback(line);
    fprintf(out, "%s\n", line);
}

} // namespace vornengine
