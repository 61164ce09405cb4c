// Class vorn: one adjustment run on a project.
//
//   vorn run(&p);                        // the project is filled in
//   if (run.vornstart() == 0) run.vornL2();
//                                        // the destructor leaves p.runresults
//
// One object serves one run, from one thread. No operation throws; failure is a
// negative integer and a line on the report, on Feedback, or on both.

#ifndef VORN_VORN_H
#define VORN_VORN_H

#include <stdio.h>

#include "vorn/project.h"
#include "vorn/result.h"

#if defined(_WIN32) && defined(VORN_EXPORT)
#define VORN_API __declspec(dllexport)
#elif defined(_WIN32) && defined(VORN_IMPORT)
#define VORN_API __declspec(dllimport)
#elif defined(_WIN32)
#define VORN_API
#else
#define VORN_API __attribute__((visibility("default")))
#endif

namespace vornengine {
class vornrun;
struct inside;
} // namespace vornengine

class vorn {
public:
    // Copies settings and pointers from the project; allocates nothing.
    VORN_API explicit vorn(project *p);

    // Hands the results back into the project and releases all working arrays.
    // Runs whether or not the run succeeded.
    VORN_API ~vorn();

    // Plain member-by-member copy, pointers included: the left side becomes a second
    // owner of the same arrays, and what it held is not released.
    VORN_API vorn &operator=(const vorn &other);

    vorn(const vorn &) = delete;

    // Loads and checks the network and numbers the unknowns, once. Returns 0, or
    //   -1 loading failed, or was begun before
    //                                    -4 no approximate coordinates found
    //   -2 the lumps could not be set up -5 coordinates missing in a run that computes none
    //   -3 no datum                      -6 the connected net could not be set up
    VORN_API int vornstart();

    // Adjust: least squares in compact storage, least squares by Gauss-Jordan, least
    // absolute values by the simplex method. Call one of them once, after vornstart
    // returned 0. Return 0, or
    //   -1 no memory, or no vornstart    -4 divergence or no convergence
    //   -2 the solver could not be set up -5 no inverse
    //   -3 the system could not be solved
    VORN_API int vornL2();
    VORN_API int vornjordan();
    VORN_API int vornL1();

private:
    friend struct vornengine::inside;

    vornengine::vornrun *state;      // the run's inner state, which lies in room
    alignas(double) char room[1024]; // an object of its own: the constructor takes no memory
};

#endif
