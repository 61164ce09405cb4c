// The memory that a process may ask for.

#ifndef VORNHOST_MEMORY_LIMIT_H
#define VORNHOST_MEMORY_LIMIT_H

namespace vornhost {

// Bytes of memory and swap space that the machine, or the container that it is, has; 0 when unknown.
unsigned long long machine_memory();

// From now on this process gets no more memory than the machine has: an allocation beyond fails
// and is told, where the system would hand it out and end the process when it is used. A limit
// that is tighter already stays. A process that holds more addresses than that, as with
// a sanitizer, is left alone.
void limit_memory();

} // namespace vornhost

#endif
