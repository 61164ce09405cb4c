// The bytes choose a project (random_project.h), a solver, an answer to the questions and an
// allocation that fails. Whatever the project holds, the run ends by a documented code and
// the results are as long as they say.

#include <stdlib.h>

#include "random_project.h"
#include "vorn/result.h"
#include "scratch.h"
#include "support/faults.h"
#include "vorn/vorn.h"

static void require(bool good)
{
    if (!good) abort();
}

// Reads n values: the sanitizer sees an array that is shorter.
template <class Value> static void read_all(const Value *values, int n)
{
    for (int i = 0; values && i < n; i++) {
        const volatile Value &value = values[i];
        (void)(value == value);
    }
}

static void read_results(const result &r)
{
    const int npt = r.nstar + r.ntarr, nres = r.ndist + r.ndifh + r.ndir1 + r.ndir2;
    require(r.nstar >= 0 && r.ntarr >= 0 && r.ndist >= 0 && r.ndifh >= 0 && r.ndir1 >= 0 && r.ndir2 >= 0);
    require(r.nrow >= 0);
    for (const int *a : {r.ihost, r.code1, r.code2, r.code3}) read_all(a, npt);
    for (const double *a : {r.x0, r.y0, r.z0, r.xpt, r.ypt, r.zpt, r.sxpt, r.sypt, r.szpt}) read_all(a, npt);
    for (const double *a : {r.ell12a, r.ell12b, r.ell12t, r.ell13a, r.ell13b, r.ell13t}) read_all(a, npt);
    for (const double *a : {r.ell23a, r.ell23b, r.ell23t}) read_all(a, npt);
    for (const double *a : {r.rx, r.ry, r.rz, r.srx, r.sry, r.srz}) read_all(a, r.nstar);
    for (const int *a : {r.iobs, r.iout, r.inorm, r.inormb, r.itau, r.itaub}) read_all(a, nres);
    for (const double *a : {r.res, r.sres}) read_all(a, nres);
    for (const int *a : {r.ilump, r.iepoch, r.iref}) read_all(a, r.nrow);
    for (const double *a : {r.tx, r.ty, r.tz, r.lrx, r.lry, r.lrz, r.tscale}) read_all(a, r.nrow);
    for (const double *a : {r.stx, r.sty, r.stz, r.slrx, r.slry, r.slrz, r.stscale}) read_all(a, r.nrow);
    for (int i = 0; r.ihost && i < npt; i++) require(r.ihost[i] >= 0);
}

static void adjust(RandomProject &network)
{
    fail_allocation(network.failing);
    vorn run(&network.p);
    const int start = run.vornstart();
    require(start <= 0 && start >= -6);
    if (start != 0) return;
    int code = 0;
    switch (network.solver) {
    case Solve::Compact: code = run.vornL2(); break;
    case Solve::Jordan: code = run.vornjordan(); break;
    case Solve::Simplex: code = run.vornL1(); break;
    }
    require(code <= 0 && code >= -5);
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (enter_scratch(), 1);
    (void)ready;
    Bytes bytes(data, size);
    RandomProject network(bytes);
    Silent silent;
    silent.answer = network.answer;
    network.p.pfeedback = &silent;
    network.p.out = open_report();
    adjust(network);
    fail_allocation(0);
    fclose(network.p.out);
    if (network.p.runresults) read_results(*network.p.runresults);
    return 0;
}
