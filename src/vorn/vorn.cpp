// Class vorn: the state of its run lies in the object itself, so that a host may make one
// where there is no memory.

#include "vorn/vorn.h"

#include <new>

#include "vorn/run.h"

using vornengine::vornrun;

vorn::vorn(project *p) : state(new (room) vornrun(p))
{
    static_assert(sizeof(vornrun) <= sizeof room, "the state must fit into the object");
    static_assert(alignof(vornrun) <= alignof(double), "the state must be aligned");
}

vorn::~vorn() { state->~vornrun(); }

vorn &vorn::operator=(const vorn &other)
{
    if (this != &other) *state = *other.state;
    return *this;
}

int vorn::vornstart() { return state->vornstart(); }
int vorn::vornL2() { return state->vornL2(); }
int vorn::vornjordan() { return state->vornjordan(); }
int vorn::vornL1() { return state->vornL1(); }
