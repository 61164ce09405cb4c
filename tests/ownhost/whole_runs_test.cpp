// Whole runs beside those of a second implementation (tests/reference/README.md).

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <sstream>

#include "ownhost/printed.h"
#include "ownhost/whole_run.h"

namespace {

using ownhost::joined;
using ownhost::json;
namespace fs = std::filesystem;

// Relative to the larger number; near zero what rounding leaves of sums of far larger numbers.
bool same_number(double a, double b) { return fabs(a - b) <= 1e-9 * fmax(fabs(a), fabs(b)) + 1e-12; }

void compare(const json &wanted, const json &found, const std::string &what)
{
    if (wanted.is_object() || wanted.is_array()) {
        ASSERT_EQ(wanted.size(), found.size()) << what << "\nwanted: " << wanted << "\nfound:  " << found;
        for (const auto &[key, part] : wanted.items()) {
            const bool has = wanted.is_array() || found.contains(key);
            ASSERT_TRUE(has) << what << " lacks " << key;
            compare(part, wanted.is_array() ? found[std::stoul(key)] : found[key], what + "." + key);
        }
    } else if (wanted.is_number_float() && found.is_number()) {
        EXPECT_TRUE(same_number(wanted, found)) << what << "\nwanted: " << wanted << "\nfound:  " << found;
    } else if (wanted.is_string() && found.is_string()) {
        EXPECT_EQ(printed::difference(wanted, found), "") << what;
    } else {
        EXPECT_EQ(wanted, found) << what;
    }
}

// The second implementation takes a run with images as one in the plane where the project says so.
bool images_in_plane(const json &kept)
{
    return kept["project"].value("iphoto", 0) == 1 && kept["project"].value("dim", 3) != 3;
}

// It hands no a-priori deviations back after a start that failed.
json without_deviations(json result)
{
    for (const char *field : {"sig0", "sdist", "sdifh", "sdir1", "sdir2", "saz"}) result.erase(field);
    return result;
}

// It traces the points of a lump at the reference epoch alone; those of another epoch stand
// between the line of the epoch and that of its comparison.
std::string without_later_points(const std::string &report)
{
    std::istringstream lines(report);
    std::string line, text;
    for (bool points = false; std::getline(lines, line);) {
        if (line.compare(0, 10, "usesimili:") == 0) points = false;
        if (!points) text += line + "\n";
        if (line.compare(0, 6, "epoch ") == 0 && line.find(" versus ") != std::string::npos) points = true;
    }
    return text;
}

void expect_as_kept(const json &kept)
{
    if (images_in_plane(kept)) return;
    SCOPED_TRACE(kept["name"].get<std::string>());
    json wanted = kept, found = ownhost::whole_run(kept["project"]);
    for (json *run : {&wanted, &found}) {
        (*run)["report"] = without_later_points(joined((*run)["report"]));
        for (json &text : (*run)["side"]) text = joined(text);
        if (kept["start"] != 0) (*run)["result"] = without_deviations((*run)["result"]);
    }
    for (const char *part : {"report", "start", "solve", "feedback", "questions", "result", "host", "side"})
        compare(wanted[part], found[part], part);
}

// Puts quotes around the words for numbers that JSON does not know.
std::string quoted(const std::string &text)
{
    const std::pair<std::string, std::string> words[] = {
        {"NaN", "\"nan\""}, {"-Infinity", "\"-inf\""}, {"Infinity", "\"inf\""}};
    std::string out;
    bool inside = false;
    for (size_t i = 0; i < text.size();) {
        if (text[i] == '"') inside = !inside;
        const auto *word = std::find_if(std::begin(words), std::end(words), [&](const auto &w) {
            return !inside && text.compare(i, w.first.size(), w.first) == 0;
        });
        out += word == std::end(words) ? std::string(1, text[i]) : word->second;
        i += word == std::end(words) ? 1 : word->first.size();
    }
    return out;
}

json read(const fs::path &file) { return json::parse(quoted(file_text(file.string()))); }

std::vector<fs::path> json_files(const fs::path &folder)
{
    std::vector<fs::path> files;
    if (fs::is_directory(folder))
        for (const auto &entry : fs::directory_iterator(folder))
            if (entry.path().extension() == ".json") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

class KeptRuns : public testing::TestWithParam<fs::path> {};

TEST_P(KeptRuns, EqualThoseOfASecondImplementation) { expect_as_kept(read(GetParam())); }

INSTANTIATE_TEST_SUITE_P(WholeRuns, KeptRuns, testing::ValuesIn(json_files(SOURCE_DIR "/tests/reference")),
                         [](const auto &one) { return one.param.stem().string(); });

// Some of them wander without converging and magnify the rounding of the C library, which is another
// one with 4-byte pointers.
TEST(AllRuns, EqualThoseOfASecondImplementation)
{
    if (sizeof(void *) == 4) GTEST_SKIP() << "the library of functions rounds otherwise";
    const std::vector<fs::path> families = json_files(SOURCE_DIR "/../shared/data/reference");
    if (families.empty()) GTEST_SKIP() << "the families of runs are not at hand";
    for (const fs::path &family : families)
        for (const json &kept : read(family)) expect_as_kept(kept);
}

} // namespace
