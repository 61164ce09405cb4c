// Axes and senses of a .gkf file, and how its angles become those of the network file, which run from x towards y.
//
// Coordinates stay as they are. Where the sense of the file's angles is not that from x to y, directions and azimuths
// are turned (full circle less value) and angles change their ends.

#ifndef VORNHOST_GKF_AXES_H
#define VORNHOST_GKF_AXES_H

#include <optional>
#include <string_view>

namespace vornhost {

class GkfAxes {
public:
    // The words of axes-xy and angles; nothing when a word is none of them.
    static std::optional<GkfAxes> of(std::string_view axes, std::string_view angles)
    {
        struct Word {
            std::string_view axes;
            bool clockwise; // from x to y
            double x;       // gon, clockwise from x to north
        };
        static constexpr Word words[] = {{"ne", true, 0},    {"sw", true, 200}, {"es", true, 300},  {"wn", true, 100},
                                         {"en", false, 300}, {"nw", false, 0},  {"se", false, 200}, {"ws", false, 100}};
        const bool left = angles == "left-handed";
        if (!left && angles != "right-handed") return std::nullopt;
        for (const Word &word : words)
            if (word.axes == axes) return GkfAxes(word.clockwise == left, left ? word.x : 400.0 - word.x);
        return std::nullopt;
    }

    bool turned() const { return !same_sense; }

    // What [earth] azimuth_rotation adds to the bearing from x towards y to make it an azimuth as written (gon, in
    // (-200, 200]).
    double azimuth_rotation() const
    {
        const double rotation = same_sense ? -shift : shift;
        return rotation <= -200.0 ? rotation + 400.0 : rotation > 200.0 ? rotation - 400.0 : rotation;
    }

private:
    GkfAxes(bool same, double its_shift) : same_sense(same), shift(its_shift < 400.0 ? its_shift : its_shift - 400.0) {}

    bool same_sense;
    double shift; // gon, from an azimuth to the bearing from x in the sense of the file's angles
};

} // namespace vornhost

#endif
