// Errors of centring that the sights of a stand share.

#ifndef VORNHOST_CENTRING_H
#define VORNHOST_CENTRING_H

#include "host/own/numbers.h"

namespace vornhost {

// Shifts of instruments and targets as weighted unknowns in the place of what centring adds to the variances of single
// sights, where the file asks for it; rows of a covariance have none.
void share_centring(const Model &network, Numbers &numbers);

} // namespace vornhost

#endif
