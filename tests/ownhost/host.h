// The host of these tests: its conversions leave every angle as it is unless a test gives them
// factors, one for each operation and mode, so that a wrong operation or mode shows.

#ifndef TESTS_OWNHOST_HOST_H
#define TESTS_OWNHOST_HOST_H

namespace ownhost {

// Factors of the operations by their first argument, 0 to 2.
struct Conversions {
    double rawtoh[3] = {1.0, 1.0, 1.0}, rawtoaz[3] = {1.0, 1.0, 1.0}, rawtov[3] = {1.0, 1.0, 1.0};
    double htoraw[3] = {1.0, 1.0, 1.0}, aztoraw[3] = {1.0, 1.0, 1.0}, vtoraw[3] = {1.0, 1.0, 1.0};
};

// The conversions in use.
Conversions &conversions();

// Puts conversions in use as long as it lives.
class Converting {
public:
    explicit Converting(const Conversions &c) { conversions() = c; }
    ~Converting() { conversions() = Conversions(); }
    Converting(const Converting &) = delete;
    Converting &operator=(const Converting &) = delete;
};

} // namespace ownhost

#endif
