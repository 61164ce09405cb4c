// The run driver: the order of the set-up, and the entries of the three solvers.

#include "vorn/run.h"

#include <stdlib.h>

#include <new>

#include "numerics/decimal_point.h"
#include "numerics/memory.h"
#include "vorn/sidefiles.h"
#include "solvers/compact.h"
#include "solvers/jordan.h"
#include "solvers/simplex.h"
#include "vorn/message.h"

namespace vornengine {

vornrun::vornrun(project *p)
    : solverinput(p), papprox(NULL), psimplex(NULL), pcompact(NULL), pjordan(NULL), iapprox(0), nstat100(0), ia1(),
      pointindex(NULL), hostindex(NULL), begun(false), ready(false)
{
}

vornrun::~vornrun()
{
    const decimal_point held;
    if (backtoproject() != 0) tell(pfeedback, "backtoproject failed");
    clean();
    free(lcon); // still here when backtoproject stopped before the connected net
    free(Qcon);
}

vornrun &vornrun::operator=(const vornrun &other) = default;

void side_files::watch(vorn &run, side_files *files) { inside::of(run).sidefiles = files; }

int vornrun::vornstart()
{
    const decimal_point held;
    if (begun) {
        tell(pfeedback, "vornstart: a run is set up once");
        return -1;
    }
    begun = true;
    if (fill_vorn() != 0) {
        fflush(out);
        return -1;
    }
    trigapprox();
    summary();
    fflush(out);

    // Methodology 9 works the lumps out after the run.
    if (nlump != 0 && pproject->lumpmethod != 9 && lumpcheck() < 0) return -2;
    if (!lumps) nlump = 0; // points of lumps may have been counted and not split, for want of epochs

    if (datumcheck() != 0) {
        fflush(out);
        return -3;
    }

    if (irun == -2 || iphoto != 0) {
        if (iapprox != 0) {
            fprintf(out, "\nvornstart: for error propagation, need coordinates\n");
            return -5;
        }
    } else if (vornapprox() != 0) {
        return -4;
    }

    set_prepare();
    if ((icon == 2 || icon == 3) && set_connect() < 0) return -6;
    summary2();
    outputapprox();
    ready = true;
    return 0;
}

// The record that the statistics fill; a run of error propagation has none.
bool vornrun::take_temp_res(const char *entry)
{
    free(temp_res);
    temp_res = NULL;
    if (irun == -2) return true;
    temp_res = (tempresult *)zeroed(1, sizeof(tempresult));
    if (!temp_res) fprintf(out, "%s: Cannot allocate temp_res\n", entry);
    return temp_res;
}

// A run that was not set up to its end has lists without records.
static int not_ready(Feedback *fb, const char *entry)
{
    tell(fb, "%s: vornstart has not returned 0", entry);
    return -1;
}

// Without memory for the object itself.
static int no_solver(Feedback *fb, const char *entry)
{
    tell(fb, "%s: Cannot allocate the solver", entry);
    return -1;
}

int vornrun::vornL2()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornL2");
    if (!take_temp_res("vornL2+")) return -1;
    pcompact = new (std::nothrow) compact(*this);
    if (!pcompact) return no_solver(pfeedback, "vornL2");

    int result = pcompact->iterate();
    fflush(out);
    if (result == 0 && irun != 0) result = pcompact->inversion(); // any mode but 0 inverts
    fflush(out);
    delete pcompact;
    return result;
}

int vornrun::vornjordan()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornjordan");
    if (!take_temp_res("vornjordan")) return -1;
    pjordan = new (std::nothrow) jordan(*this);
    if (!pjordan) return no_solver(pfeedback, "vornjordan");

    int result = pjordan->iterate();
    fflush(out);
    if (result == 0 && (irun == 1 || irun == -2)) result = pjordan->inversion();
    fflush(out);
    delete pjordan;
    return result;
}

// Keeps no statistics: temp_res stays null.
int vornrun::vornL1()
{
    const decimal_point held;
    if (!ready) return not_ready(pfeedback, "vornL1");
    psimplex = new (std::nothrow) simplex(*this);
    if (!psimplex) return no_solver(pfeedback, "vornL1");

    const int result = psimplex->iterate();
    fflush(out);
    delete psimplex;
    return result;
}

} // namespace vornengine
