// Numbers of a text report in the units of the network file: values in the file's unit, precision and residuals in a
// small one beside it.

#ifndef VORNHOST_REPORT_UNITS_H
#define VORNHOST_REPORT_UNITS_H

#include <string>

#include "host/results/results.h"

namespace vornhost {

class ReportUnits {
public:
    explicit ReportUnits(const FileUnits &its_units) : units(its_units) {}

    const char *length_name() const;       // "m", "mm", "inch", ...
    const char *small_length_name() const; // "mm", "um", "mil", ...
    const char *angle_name() const;        // "gon", "degree", "ddd.mmss", "rad", ...
    const char *small_angle_name() const;  // "mgon", "arcsec", "urad", ...

    std::string length(double metres) const;
    std::string small_length(double metres) const;
    std::string angle(double radians) const;     // from 0 to a full circle
    std::string bearing(double radians) const;   // the same, rounded
    std::string elevation(double radians) const; // as the file writes vertical angles
    std::string signed_angle(double radians) const;
    std::string small_angle(double radians) const;

    // Of vertical angles: a residual of an elevation is the opposite one of a zenith angle.
    double vertical_sign() const { return units.zenith ? -1.0 : 1.0; }

private:
    std::string angle_text(double raw) const;

    FileUnits units;
};

// A number with so many decimals; a zero has no sign.
std::string decimal(double value, int decimals);

// A probability: "<0.0001" where four decimals would say nothing.
std::string probability_text(double p);

} // namespace vornhost

#endif
