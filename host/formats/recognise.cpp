#include "host/formats/recognise.h"

#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "host/formats/csv_points.h"
#include "host/formats/gsi_block.h"
#include "host/formats/lines.h"
#include "host/formats/m5_line.h"
#include "host/formats/sdr.h"

namespace vornhost {

namespace {

constexpr size_t beginning_size = 65536; // bytes; comments may stand before the first element

std::string_view without_blanks(std::string_view text)
{
    const size_t at = text.find_first_not_of(" \t\r\n");
    return at == std::string_view::npos ? std::string_view() : text.substr(at);
}

bool begins(std::string_view text, std::string_view with) { return text.substr(0, with.size()) == with; }

std::string_view behind(std::string_view text, std::string_view mark)
{
    const size_t at = text.find(mark);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + mark.size());
}

// A document type may hold declarations between brackets.
std::string_view behind_doctype(std::string_view text)
{
    const size_t bracket = text.find('['), end = text.find('>');
    return behind(bracket < end ? behind(text, "]") : text, ">");
}

// Name of the first element of an XML text, empty when there is none.
std::string_view root_name(std::string_view text)
{
    for (text = without_blanks(text); !text.empty(); text = without_blanks(text)) {
        if (begins(text, "<?"))
            text = behind(text, "?>");
        else if (begins(text, "<!--"))
            text = behind(text, "-->");
        else if (begins(text, "<!"))
            text = behind_doctype(text);
        else
            break;
    }
    if (!begins(text, "<")) return std::string_view();
    text.remove_prefix(1);
    return text.substr(0, std::min(text.find_first_of(" \t\r\n/>"), text.size()));
}

// The first line that is not blank, without the marks of a serial transfer.
std::string_view first_line(std::string_view text)
{
    const size_t at = text.find_first_not_of(" \t\r\n\x02\x03");
    if (at == std::string_view::npos) return std::string_view();
    const size_t line = text.find_last_of("\r\n\x02", at) + 1; // blanks before it count
    return text.substr(line, std::min(text.find_first_of("\r\n", at), text.size()) - line);
}

std::optional<Format> recognise_lines(std::string_view beginning)
{
    const std::string_view line = first_line(beginning);
    if (looks_like_gsi(line)) return Format::gsi;
    if (looks_like_sdr(line)) return Format::sdr;
    if (looks_like_m5(line)) return Format::m5;
    if (looks_like_csv_points(line)) return Format::csv;
    return std::nullopt;
}

} // namespace

const std::vector<FormatWord> &importable_formats()
{
    static const std::vector<FormatWord> formats = {{Format::gkf, "gkf", "network of GNU Gama"},
                                                    {Format::dna, "dynadjust", "measurements of DynAdjust in columns"},
                                                    {Format::dynaml, "dynaml", "DynaML of DynAdjust"},
                                                    {Format::sinex, "sinex", "SINEX"},
                                                    {Format::gvx, "gvx", "GNSS vectors, GVX"},
                                                    {Format::lines, "lines", "coded lines of STAR*NET"},
                                                    {Format::gsi, "gsi", "Leica GSI-8 or GSI-16"},
                                                    {Format::sdr, "sdr", "Sokkia SDR33 or SDR2x"},
                                                    {Format::m5, "m5", "Trimble or Zeiss M5"},
                                                    {Format::jobxml, "jobxml", "Trimble JobXML"},
                                                    {Format::landxml, "landxml", "LandXML"},
                                                    {Format::csv, "csv", "list of coordinates"},
                                                    {Format::json, "json", "network of vorn export as JSON"}};
    return formats;
}

std::optional<Format> recognise(std::string_view beginning)
{
    if (begins(beginning, "\xEF\xBB\xBF")) beginning.remove_prefix(3);
    const std::string_view root = root_name(beginning);
    if (root == "gama-local" || root == "gama-xml") return Format::gkf;
    if (root == "gama-local-adjustment") return Format::gama_results;
    if (root == "DnaXmlFormat") return Format::dynaml;
    if (root == "GVX") return Format::gvx;
    const std::string_view name = root.substr(root.find(':') + 1); // with any prefix
    if (name == "JOBFile") return Format::jobxml;
    if (name == "LandXML") return Format::landxml;
    if (begins(first_line(beginning), "{")) return Format::json;
    if (begins(beginning, "!#=DNA")) return Format::dna;
    if (begins(beginning, "%=SNX")) return Format::sinex;
    const std::optional<Format> records = recognise_lines(beginning);
    if (records) return records;
    if (looks_like_lines(beginning.substr(0, beginning.rfind('\n')))) return Format::lines;
    return std::nullopt;
}

std::optional<Format> recognise_file(const std::string &path)
{
    struct Close {
        void operator()(FILE *file) const { fclose(file); }
    };
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return std::nullopt;
    const std::unique_ptr<FILE, Close> file(fopen(path.c_str(), "rb"));
    if (!file) return std::nullopt;
    std::string bytes(beginning_size, '\0');
    bytes.resize(fread(&bytes[0], 1, bytes.size(), file.get()));
    const std::optional<Format> format = recognise(bytes);
    const bool measurements = std::filesystem::path(path).extension() == ".msr"; // the oldest version has no header
    return !format && measurements ? Format::dna : format;
}

} // namespace vornhost
