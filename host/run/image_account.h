// Account of the lines of the image files: the engine passes over lines that it cannot use.

#ifndef VORNHOST_IMAGE_ACCOUNT_H
#define VORNHOST_IMAGE_ACCOUNT_H

#include <functional>
#include <string>

#include "host/run/accounts.h"

namespace vornhost {

// What is wrong with a point of the run, by its name; empty when nothing is.
using PointFault = std::function<std::string(const std::string &)>;

// The lines that are not blank in the files of the images that took part.
Account account_of_image_points(const Model &model, const PointFault &fault);

} // namespace vornhost

#endif
