#include "host/formats/import.h"

#include <filesystem>

#include "host/formats/gkf.h"
#include "host/formats/network_writer.h"
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

} // namespace

bool import_file(const std::string &path, std::optional<Format> format, Draft &draft, Faults &faults)
{
    draft = Draft();
    draft.file = path;
    std::error_code ignored;
    const bool readable = std::filesystem::is_regular_file(path, ignored);
    if (!format && readable) format = recognise_file(path);
    if (format || !readable) return import_gkf(path, draft, faults); // what cannot be read is said there
    unknown_format(path, faults);
    return false;
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
