// Which of the rows of a network file a process reads, where several read it together.

#ifndef VORNHOST_FILE_SHARE_H
#define VORNHOST_FILE_SHARE_H

namespace vornhost {

// What a process keeps of a network file that several read together: everything but the rows of observations that begin
// at points of other parts.
struct FileShare {
    int parts = 1, own = 0;
    bool whole() const { return parts < 2; }
};

} // namespace vornhost

#endif
