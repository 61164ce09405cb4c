// Numbers as they are written in tables: decimal point, no grouping, independent of locale.

#ifndef VORNHOST_NUMBER_H
#define VORNHOST_NUMBER_H

#include <string>
#include <string_view>

namespace vornhost {

enum class Reading { Number, None, NotFinite, OutOfRange };

// Reads the whole text; value is untouched unless the result is Number.
Reading read_number(std::string_view text, double &value);
Reading read_whole(std::string_view text, int &value);

// How a text that is no number should be written.
std::string number_remedy(std::string_view text);

} // namespace vornhost

#endif
