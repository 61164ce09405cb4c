// Whole runs beside those of a second implementation (tests/reference/README.md).

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>

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

void expect_as_kept(const json &kept)
{
    SCOPED_TRACE(kept["name"].get<std::string>());
    const json found = ownhost::whole_run(kept["project"]);
    EXPECT_EQ(printed::difference(joined(kept["report"]), found["report"]), "");
    for (const char *part : {"start", "solve", "feedback", "questions", "result", "host"})
        compare(kept[part], found[part], part);
    json side = kept["side"];
    for (json &text : side) text = joined(text);
    compare(side, found["side"], "side");
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

TEST(AllRuns, EqualThoseOfASecondImplementation)
{
    const std::vector<fs::path> families = json_files(SOURCE_DIR "/../shared/data/reference");
    if (families.empty()) GTEST_SKIP() << "the families of runs are not at hand";
    for (const fs::path &family : families)
        for (const json &kept : read(family)) expect_as_kept(kept);
}

} // namespace
