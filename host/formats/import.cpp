#include "host/formats/import.h"

#include <cmath>
#include <filesystem>

#include "host/formats/csv_points.h"
#include "host/formats/datum_options.h"
#include "host/formats/gkf.h"
#include "host/formats/gsi.h"
#include "host/formats/jobxml.h"
#include "host/formats/landxml.h"
#include "host/formats/m5.h"
#include "host/formats/network_writer.h"
#include "host/formats/number_text.h"
#include "host/formats/sdr.h"
#include "host/formats/xml.h"
#include "host/input/network_file.h"

namespace vornhost {

namespace {

void unknown_format(const std::string &path, Faults &faults)
{
    std::string known;
    for (const FormatWord &format : importable_formats())
        known += (known.empty() ? "" : ", ") + std::string(format.word) + " (" + format.meaning + ")";
    faults.add({faults.add_file(path), 0, 0}, "its format is not recognised",
               "it can be " + known + "; name it with --from");
}

bool is_gkf_root(const XmlElement &root) { return root.name == "gama-local" || root.name == "gama-xml"; }

bool import_gkf(const std::string &path, Draft &draft, Faults &faults)
{
    XmlElement root;
    if (!read_xml(path, root, faults)) return false;
    if (is_gkf_root(root)) return read_gkf(root, draft, faults);
    const bool results = root.name == "gama-local-adjustment";
    faults.add(root.at,
               results ? "the file holds results of gama-local, not a network"
                       : "root element " + quote(root.name) + " is not gama-local",
               results ? "import the .gkf beside it" : "import a file of GNU Gama");
    return false;
}

// A format of lines that an instrument wrote.
bool import_records(const std::string &path, Format format, const ImportOptions &options, Draft &draft, Faults &faults)
{
    RecordLines file;
    if (!file.read(path, faults)) return false;
    RecordAccount account;
    bool good = false;
    switch (format) {
    case Format::gsi: good = read_gsi(file, options, account, draft, faults); break;
    case Format::sdr: good = read_sdr(file, options, account, draft, faults); break;
    case Format::m5: good = read_m5(file, options, account, draft, faults); break;
    case Format::csv: good = read_csv_points(file, account, draft, faults); break;
    default: break;
    }
    account.close(draft);
    return good;
}

// A format of elements that a field book or an office wrote.
bool import_xml_records(const std::string &path, Format format, const ImportOptions &options, Draft &draft,
                        Faults &faults)
{
    XmlElement root;
    if (!read_xml(path, root, faults)) return false;
    RecordAccount account;
    const bool good = format == Format::jobxml ? read_jobxml(root, options, account, draft, faults)
                                               : read_landxml(root, options, account, draft, faults);
    account.close(draft);
    return good;
}

// Whether all coordinates and observations are numbers that a network may have.
bool check_sizes(const Draft &draft, Faults &faults)
{
    constexpr double largest = 1e9;
    const auto check = [&](const std::array<MaybeNumber, 3> &values, Source at) {
        for (const MaybeNumber &value : values)
            if (value && !(std::fabs(*value) <= largest))
                faults.add(at, number_text(*value) + " is no coordinate and no reading", "correct it or its unit");
    };
    for (const DraftPoint &point : draft.points) check(point.value, point.where);
    for (const auto &rows : draft.rows)
        for (const DraftRow &row : rows) check(row.value, row.where);
    return faults.empty();
}

bool import_format(const std::string &path, Format format, const ImportOptions &options, Draft &draft, Faults &faults)
{
    if (format == Format::gkf || format == Format::gama_results) return import_gkf(path, draft, faults);
    const bool xml = format == Format::jobxml || format == Format::landxml;
    const bool good = xml ? import_xml_records(path, format, options, draft, faults)
                          : import_records(path, format, options, draft, faults);
    return good && check_sizes(draft, faults);
}

} // namespace

bool import_file(const std::string &path, const ImportOptions &options, Draft &draft, Faults &faults)
{
    draft = Draft();
    draft.file = path;
    std::error_code ignored;
    const bool readable = std::filesystem::is_regular_file(path, ignored);
    std::optional<Format> format = options.format;
    if (!format && readable) format = recognise_file(path);
    if (!format && readable) {
        unknown_format(path, faults);
        return false;
    }
    // What cannot be read is said there.
    return import_format(path, format.value_or(Format::gkf), options, draft, faults) &&
           add_known_points(options, draft, faults) && choose_datum(options, draft, faults);
}

bool read_any_network(const std::string &path, Model &model, std::vector<std::string> &notes, Faults &faults,
                      const ImportOptions &options)
{
    const std::optional<Format> format = options.format ? options.format : recognise_file(path);
    if (!format && options.given) {
        unknown_format(path, faults);
        return false;
    }
    if (!format) return read_network(path, model, faults);
    Draft draft;
    if (!import_file(path, options, draft, faults)) return false;
    WrittenNetwork network = write_network(draft);
    notes = note_lines(draft);
    return read_network_text(path, network.text, std::move(network.origins), model, faults);
}

} // namespace vornhost
