#include "host/formats/import.h"

#include <cmath>
#include <filesystem>

#include "host/formats/csv_points.h"
#include "host/formats/datum_options.h"
#include "host/formats/dna_files.h"
#include "host/formats/gkf.h"
#include "host/formats/gsi.h"
#include "host/formats/gvx.h"
#include "host/formats/jobxml.h"
#include "host/formats/landxml.h"
#include "host/formats/lines.h"
#include "host/formats/m5.h"
#include "host/formats/network_json.h"
#include "host/formats/network_writer.h"
#include "host/formats/number_text.h"
#include "host/formats/sdr.h"
#include "host/formats/sinex.h"
#include "host/formats/usual_sigmas.h"
#include "host/formats/xml.h"
#include "host/input/network_file.h"
#include "host/input/text_file.h"

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

// Why a root element is not that of a format.
void wrong_root(const XmlElement &root, const char *wanted, const char *what, Faults &faults)
{
    const bool results = root.name == "gama-local-adjustment";
    faults.add(root.at,
               results ? "the file holds results of gama-local, not a network"
                       : "root element " + quote(root.name) + " is not " + wanted,
               results ? "import the .gkf beside it" : std::string("import a file of ") + what);
}

bool import_xml(Format format, const std::string &path, const std::string &geoid, Draft &draft, Faults &faults)
{
    XmlElement root;
    if (!read_xml(path, root, faults)) return false;
    if (format == Format::dynaml) {
        if (root.name == "DnaXmlFormat") return import_dynaml(path, root, geoid, draft, faults);
        wrong_root(root, "DnaXmlFormat", "DynAdjust", faults);
    } else if (format == Format::gvx) {
        if (root.name == "GVX") return read_gvx(root, draft, faults);
        wrong_root(root, "GVX", "GNSS vectors", faults);
    } else {
        if (root.name == "gama-local" || root.name == "gama-xml") return read_gkf(root, draft, faults);
        wrong_root(root, "gama-local", "GNU Gama", faults);
    }
    return false;
}

bool import_lines(Format format, const std::string &path, Draft &draft, Faults &faults)
{
    TextFile file;
    if (!file.read_foreign(path, faults)) return false;
    return format == Format::sinex ? read_sinex(file, draft, faults) : read_lines(file, draft, faults);
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

// A format of lines or elements that says what it knows of standard deviations itself.
bool import_network(const std::string &path, Format format, const ImportOptions &options, Draft &draft, Faults &faults)
{
    const bool good = format == Format::dna ? import_dna_columns(path, options.geoid, draft, faults)
                      : format == Format::sinex || format == Format::lines
                          ? import_lines(format, path, draft, faults)
                          : import_xml(format, path, options.geoid, draft, faults);
    if (good) apply_usual_sigmas(options.sigma, draft, faults);
    return good && faults.empty();
}

// A file may be cut off behind its head.
bool holds_points(const std::string &path, const Draft &draft, Faults &faults)
{
    if (draft.points.empty())
        faults.add({faults.add_file(path), 0, 0}, "it holds no points and no observations", "is the file whole?");
    return !draft.points.empty();
}

bool import_format(const std::string &path, Format format, const ImportOptions &options, Draft &draft, Faults &faults)
{
    switch (format) {
    case Format::gsi:
    case Format::sdr:
    case Format::m5:
    case Format::csv: return import_records(path, format, options, draft, faults) && check_sizes(draft, faults);
    case Format::jobxml:
    case Format::landxml: return import_xml_records(path, format, options, draft, faults) && check_sizes(draft, faults);
    default: return import_network(path, format, options, draft, faults);
    }
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
           holds_points(path, draft, faults) && add_known_points(options, draft, faults) &&
           choose_datum(options, draft, faults);
}

// A network in JSON leaves nothing to options; true after a fault.
static bool says_more(const ImportOptions &o, const std::string &path, Faults &faults)
{
    const bool more = o.keep_sets || !o.sigma.empty() || !o.station.empty() || !o.points.empty() || !o.fixed.empty() ||
                      !o.datum.empty() || !o.geoid.empty();
    if (more)
        faults.add({faults.add_file(path), 0, 0}, "a network in JSON says all by itself",
                   "leave out --sets, --sigma, --station, --points, --fix, --datum and --geoid");
    return more;
}

bool import_text(const std::string &path, const ImportOptions &options, MadeText &made, std::vector<std::string> &notes,
                 Faults &faults)
{
    if (options.format.value_or(recognise_file(path).value_or(Format::gkf)) == Format::json)
        return !says_more(options, path, faults) && read_network_json(path, made, faults);
    Draft draft;
    if (!import_file(path, options, draft, faults)) return false;
    WrittenNetwork network = write_network(draft);
    notes = note_lines(draft);
    made = {std::move(network.text), std::move(network.origins), {}};
    return true;
}

bool read_any_network(const std::string &path, Model &model, std::vector<std::string> &notes, Faults &faults,
                      const ImportOptions &options, Mode usual)
{
    const std::optional<Format> format = options.format ? options.format : recognise_file(path);
    if (!format && options.given) {
        unknown_format(path, faults);
        return false;
    }
    if (!format) return read_network(path, model, faults, usual);
    MadeText made;
    return import_text(path, options, made, notes, faults) && read_network_text(path, std::move(made), model, faults);
}

} // namespace vornhost
