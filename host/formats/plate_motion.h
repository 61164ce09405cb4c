// Baselines of one reference frame and epoch in another one, where frames turn against each other with a plate.

#ifndef VORNHOST_PLATE_MOTION_H
#define VORNHOST_PLATE_MOTION_H

#include <array>
#include <optional>
#include <string>

namespace vornhost {

// What takes differences of coordinates from one frame into another: scale less 1, and a rotation of the frame,
// radians.
struct FrameChange {
    double scale = 0;
    std::array<double, 3> rotation = {};
};

// Years of an epoch written as dd.mm.yyyy; nothing where it is none.
std::optional<double> year_of(const std::string &epoch);

// From a frame at an epoch (dd.mm.yyyy) into another frame; nothing where it is not known. Known are ITRF2014 and
// ITRF2008 into GDA2020, which is fixed to the Australian plate (ICSM, GDA2020 Technical Manual, tables of
// transformation parameters with reference epoch 2020.0; shifts do not act on differences).
std::optional<FrameChange> frame_change(const std::string &from, const std::string &epoch, const std::string &to);

// A difference of coordinates in the other frame (coordinate frame rotation).
std::array<double, 3> changed(const std::array<double, 3> &d, const FrameChange &change);

} // namespace vornhost

#endif
