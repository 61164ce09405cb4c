// How the program's own adjustment tests observations and states precision, as section [tests] of the file says.

#ifndef VORNHOST_TEST_SETTINGS_H
#define VORNHOST_TEST_SETTINGS_H

namespace vornhost {

enum class ObservationTest {
    baarda,  // normalised residual, standard deviations as the file gives them
    tau,     // residual by its standard deviation with the a-posteriori sigma
    b_method // as baarda; the level of the global test follows from the same power
};

// Weights that grow small with residuals.
enum class Robust { none, huber, danish, l1 };

struct TestSettings {
    bool given = false; // the file has the section
    ObservationTest test = ObservationTest::baarda;
    double level = 0.001;           // of the test of one observation; with sidak of all together
    double power = 0.80;            // with which a detectable bias is found
    bool sidak = false;             // corrected for the number of observations
    double global_level = 0.05;     // of the test of the variance factor, not with b_method
    double least_redundancy = 0.01; // share of control below which an observation counts as not checked
    double confidence = 0.0;        // of ellipses in the report; 0: standard ellipses
    bool a_priori = false;          // precision without the variance factor of the adjustment
    int suspects = 5;               // how many suspicious observations are looked at closely
    bool snoop = false;             // leave the worst out and adjust again, until none is left
    Robust robust = Robust::none;
};

} // namespace vornhost

#endif
