#include "host/input/units.h"

namespace vornhost {

double metres_in(int length_unit)
{
    static const double metres[] = {1.0, 0.001, 0.0254, 0.01, 1000.0, 0.3048, 1200.0 / 3937.0};
    return metres[length_unit];
}

int record_length(int length_unit) { return length_unit <= LENGTH_INCH ? length_unit : (int)LENGTH_METRE; }

int record_angle(int angle_unit)
{
    switch (angle_unit) {
    case ANGLE_MGON:
    case ANGLE_CC:
    case ANGLE_MIL: return ANGLE_GON;
    case ANGLE_ARC_SECOND:
    case ANGLE_DMS: return ANGLE_DEGREE;
    default: return angle_unit;
    }
}

} // namespace vornhost
