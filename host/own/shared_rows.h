// Residuals of a network that processes share: each has those of its own rows, and the first fetches them block by
// block, so that no process ever has all.

#ifndef VORNHOST_SHARED_ROWS_H
#define VORNHOST_SHARED_ROWS_H

#include <vector>

#include "adjust/ranks.h"
#include "host/own/observation_results.h"

namespace vornhost {

// Residuals `first` to `first + count - 1` of all processes. Of the first one; the others serve.
std::vector<ResidualResult> fetch_rows(const ObservationResults &own, vornadjust::Ranks &ranks, size_t first,
                                       size_t count);

// Answers the first process until it has no more need of this one; does not return.
[[noreturn]] void serve_rows(const ObservationResults &own, vornadjust::Ranks &ranks);

// Residuals as bytes, and back; for processes of one program on machines of one kind.
std::string packed(const std::vector<ResidualResult> &residuals, const std::vector<size_t> &places);
void unpack(const std::string &bytes, size_t first,
            std::vector<ResidualResult> *block); // to their places from first on

} // namespace vornhost

#endif
