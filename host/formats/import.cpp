#include "host/formats/import.h"

#include <filesystem>

#include "host/formats/dna_files.h"
#include "host/formats/gkf.h"
#include "host/formats/gvx.h"
#include "host/formats/lines.h"
#include "host/formats/network_writer.h"
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

bool import_xml(Format format, const std::string &path, Draft &draft, Faults &faults)
{
    XmlElement root;
    if (!read_xml(path, root, faults)) return false;
    if (format == Format::dynaml) {
        if (root.name == "DnaXmlFormat") return import_dynaml(path, root, draft, faults);
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

bool import_text(Format format, const std::string &path, Draft &draft, Faults &faults)
{
    TextFile file;
    if (!file.read(path, Source(), faults)) return false;
    return format == Format::sinex ? read_sinex(file, draft, faults) : read_lines(file, draft, faults);
}

bool read_as(Format format, const std::string &path, Draft &draft, Faults &faults)
{
    switch (format) {
    case Format::dna: return import_dna_columns(path, draft, faults);
    case Format::sinex:
    case Format::lines: return import_text(format, path, draft, faults);
    default: return import_xml(format, path, draft, faults);
    }
}

} // namespace

bool import_file(const std::string &path, std::optional<Format> format, Draft &draft, Faults &faults)
{
    draft = Draft();
    draft.file = path;
    std::error_code ignored;
    const bool readable = std::filesystem::is_regular_file(path, ignored);
    if (!format && readable) format = recognise_file(path);
    if (!format && readable) {
        unknown_format(path, faults);
        return false;
    }
    // What cannot be read is said there.
    if (!read_as(format.value_or(Format::gkf), path, draft, faults)) return false;
    apply_usual_sigmas({}, draft, faults);
    return faults.empty();
}

bool read_any_network(const std::string &path, Model &model, std::vector<std::string> &notes, Faults &faults)
{
    const std::optional<Format> format = recognise_file(path);
    if (!format) return read_network(path, model, faults);
    Draft draft;
    if (!import_file(path, format, draft, faults)) return false;
    WrittenNetwork network = write_network(draft);
    notes = note_lines(draft);
    return read_network_text(path, {std::move(network.text), std::move(network.origins), {}}, model, faults);
}

} // namespace vornhost
