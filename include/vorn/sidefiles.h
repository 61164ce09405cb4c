// Whether the files that a run writes beside its report are whole.
// Part of the static library only; the dynamic library exports class vorn alone.

#ifndef VORN_SIDEFILES_H
#define VORN_SIDEFILES_H

class vorn;

namespace vornengine {

// For each file 0, or the errno with which it could first not be opened or written to its end.
struct side_files {
    int rejects;      // "rejects": image coordinates with large residuals
    int cofactors;    // "tessalpin.cov": cofactors of stations
    int similarities; // "simili.out": transformations between epochs; one without the file is not made

    // Lets the run enter here what it loses. To be called between constructor and vornstart;
    // the record must outlive the run, whose destructor writes as well.
    static void watch(vorn &run, side_files *files);
};

} // namespace vornengine

#endif
