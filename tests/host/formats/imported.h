// Foreign files of tests as drafts.

#ifndef TESTS_HOST_IMPORTED_H
#define TESTS_HOST_IMPORTED_H

#include <gtest/gtest.h>

#include <string>

#include "host/folder.h"
#include "host/formats/import.h"
#include "host/formats/network_writer.h"
#include "host/formats/xml.h"
#include "host/results/results.h"

// X, Y, Z of an adjusted point; in a program without projections they are its coordinates.
inline double geocentric_of(const vornhost::PointResult &p, size_t axis)
{
    return p.earth && p.earth->geocentric ? (*p.earth->geocentric)[axis] : *p.adjusted[axis];
}

// Tests that need the parser of XML.
class Formats : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!vornhost::xml_available()) GTEST_SKIP() << "built without a parser of XML";
    }

    // Imports a file with this text; returns the lines of its faults.
    Lines import(const std::string &text, const std::string &name = "net.gkf",
                 const vornhost::ImportOptions &options = {})
    {
        folder.write(name, text);
        vornhost::Faults faults;
        imported = vornhost::import_file(folder.file(name), options, draft, faults);
        Lines lines = faults.lines();
        for (std::string &line : lines) folder.shorten(line);
        return lines;
    }

    // A network of these elements, with the attributes of network and of points-observations.
    Lines network(const std::string &elements, const std::string &axes = "", const std::string &defaults = "")
    {
        return import("<gama-local><network " + axes + ">\n<points-observations " + defaults + ">\n" + elements +
                      "\n</points-observations></network></gama-local>\n");
    }

    Lines notes() const
    {
        Lines lines = note_lines(draft);
        for (std::string &line : lines) folder.shorten(line);
        return lines;
    }

    const std::vector<vornhost::DraftRow> &rows(vornhost::DraftKind kind) const { return draft.of(kind); }

    Folder folder;
    vornhost::Draft draft;
    bool imported = false;
};

#endif
