// Foreign formats, and which of them a file is by its content.

#ifndef VORNHOST_RECOGNISE_H
#define VORNHOST_RECOGNISE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vornhost {

enum class Format { gkf, gama_results, dna, dynaml, sinex, gvx, lines, gsi, sdr, m5, csv, jobxml, landxml, json };

struct FormatWord {
    Format format;
    const char *word; // of the option --from
    const char *meaning;
};

// Those that can be read.
const std::vector<FormatWord> &importable_formats();

// By the beginning of a file; nothing when it is none of them.
std::optional<Format> recognise(std::string_view beginning);

// The same of a file; nothing when it cannot be read.
std::optional<Format> recognise_file(const std::string &path);

} // namespace vornhost

#endif
