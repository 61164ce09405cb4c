#include "host/formats/lines_include.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

namespace vornhost {

namespace {

namespace fs = std::filesystem;

constexpr size_t most_files = 100;

bool names_a_file(const CodedLine &line)
{
    static const std::string word = ".INCLUDE";
    constexpr size_t shortest = 4; // .INC; .IN could be .INSTRUMENT
    return line.code.size() >= shortest && word.compare(0, line.code.size(), line.code) == 0;
}

// All that stands behind the code, without quotation marks; other systems write their separators.
std::string named_file(const CodedLine &line)
{
    if (line.items.empty()) return std::string();
    const std::string_view last = line.items.back().text;
    const char *begin = line.items.front().text.data();
    std::string name(begin, (size_t)(last.data() + last.size() - begin));
    if (name.size() > 1 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

bool stays_below(const fs::path &path)
{
    return path.is_relative() && !path.has_root_name() && std::find(path.begin(), path.end(), "..") == path.end();
}

class Including {
public:
    Including(Faults &all, IncludedLines &its_found) : faults(all), found(its_found), silent(unused, unheard) {}

    void take(const TextFile &file)
    {
        std::error_code ignored;
        open.push_back(fs::weakly_canonical(faults.file(file.file()), ignored));
        for (CodedLine &line : coded_lines(file)) {
            const bool counts = !then.ended && !then.skipping;
            if (counts && names_a_file(line)) {
                include(line, fs::path(faults.file(file.file())).parent_path());
                continue;
            }
            if (line.code[0] == '.') read_line_option(line, then, silent);
            found.lines.push_back(std::move(line));
        }
        open.pop_back();
    }

private:
    void include(const CodedLine &line, const fs::path &folder)
    {
        const std::string name = named_file(line);
        if (name.empty()) return faults.add(line.at, "a file is included without a name", "write it behind .INCLUDE");
        if (!stays_below(name))
            return faults.add(line.at, "file " + quote(name) + " lies in another folder",
                              "put it beside the text and write its name alone");
        const fs::path path = folder / name;
        std::error_code ignored;
        if (!fs::is_regular_file(path, ignored))
            return faults.add(line.at, "file " + quote(name) + " is not there",
                              "put it beside the text, or its lines in place of this one");
        if (std::find(open.begin(), open.end(), fs::weakly_canonical(path, ignored)) != open.end())
            return faults.add(line.at, "file " + quote(name) + " is included in itself", "leave this line out");
        if (found.files.size() >= most_files)
            return faults.add(line.at, "more than 100 files are included", "join some of them");
        read(path.string(), line.at);
    }

    void read(const std::string &path, Source at)
    {
        found.files.push_back(std::make_unique<TextFile>());
        const TextFile &file = *found.files.back();
        if (!found.files.back()->read_foreign(path, faults)) return;
        const auto above = found.named.find(at.file);
        found.named[file.file()] = above == found.named.end() ? at : above->second;
        take(file);
    }

    Faults &faults;
    IncludedLines &found;
    Draft unused;
    Faults unheard;
    DraftBuilder silent;
    LineOptions then;
    std::vector<fs::path> open; // files that are being read
};

} // namespace

IncludedLines with_included(const TextFile &file, Faults &faults)
{
    IncludedLines found;
    Including(faults, found).take(file);
    return found;
}

void place_in_first(const IncludedLines &included, const Faults &faults, Draft &draft)
{
    const auto place = [&](Source &at) {
        const auto named = included.named.find(at.file);
        if (named != included.named.end()) at = named->second;
    };
    for (DraftNote &note : draft.notes) {
        if (included.named.count(note.at.file) == 0) continue;
        note.text = fs::path(faults.file(note.at.file)).filename().string() + ":" + std::to_string(note.at.line) +
                    ": " + note.text;
        place(note.at);
    }
    for (DraftPoint &point : draft.points) place(point.where);
    for (DraftSetup &setup : draft.setups) place(setup.where);
    for (DraftCovariance &covariance : draft.covariances) place(covariance.where);
    for (auto &rows : draft.rows)
        for (DraftRow &row : rows) place(row.where);
}

} // namespace vornhost
