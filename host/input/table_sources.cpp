#include "host/input/table_sources.h"

#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

namespace vornhost {

namespace {

// The passage between the quotation marks of a text.
Passage passage_of(const TextFile &file, const toml::source_region &region)
{
    const size_t begin = file.offset((int)region.begin.line, (int)region.begin.column);
    const size_t end = file.offset((int)region.end.line, (int)region.end.column);
    const std::string_view raw = std::string_view(file.text()).substr(begin, end - begin);
    const bool basic = raw[0] == '"';
    const bool several_lines = raw.size() >= 6 && raw[1] == raw[0] && raw[2] == raw[0];
    const size_t marks = several_lines ? 3 : 1;
    return basic ? Passage::unescaped(file, begin + marks, end - marks) : Passage(file, begin + marks, end - marks);
}

} // namespace

void TableSources::read_form(const toml::table &root)
{
    static const Words separators = {{",", ','}, {";", ';'}, {"tab", '\t'}};
    static const Words decimals = {{".", '.'}, {",", ','}};
    Section section(root, "csv", net.faults);
    csv.separator = (char)section.word("separator", ',', separators);
    csv.decimal = (char)section.word("decimal", '.', decimals);
    net.model.separator = csv.separator, net.model.decimal = csv.decimal;
}

void TableSources::find_tables(const toml::table &root)
{
    read_form(root);
    Section tables(root, "tables", net.faults);
    for (int id = 0; id < TABLE_COUNT; id++) {
        const toml::node *node = tables.find(table_names[id]);
        if (!node) continue;
        net.named[(size_t)id] = true;
        find_table((TableId)id, *node);
    }
}

void TableSources::find_table(TableId id, const toml::node &node)
{
    const Source at = place_of(node.source());
    if (node.is_string())
        net.tables[id] = std::make_unique<Table>(table_names[id], passage_of(main, node.source()), Layout::Blanks, at);
    else if (node.is_table())
        open_table(id, *node.as_table());
    else
        net.faults.add(at, std::string("table ") + table_names[id] + " is neither a text nor a file",
                       "write \"\"\"...\"\"\" or { file = \"" + std::string(table_names[id]) + ".csv\" }");
}

void TableSources::open_table(TableId id, const toml::table &entry)
{
    const std::string name = std::string("table ") + table_names[id];
    CsvForm form = csv;
    for (const auto &[key, value] : entry) {
        if (key == "columns")
            read_headings(value, name, form);
        else if (key != "file")
            net.faults.add(place_of(key.source()), "unknown key " + quote(std::string(key.str())) + " in " + name,
                           "known keys: file, columns");
    }
    const toml::value<std::string> *file = entry["file"].as_string();
    if (!file) {
        net.faults.add(place_of(entry.source()), name + " names no file",
                       "write { file = \"" + std::string(table_names[id]) + ".csv\" }");
        return;
    }
    const TextFile *text = open_file(*file);
    if (!text) return;
    const Source heading = {text->file(), 1, 1};
    net.tables[id] =
        std::make_unique<Table>(table_names[id], Passage(*text, 0, text->text().size()), Layout::Commas, heading, form);
}

// columns = { from = "Standpunkt", ... }: the words of the file's heading.
void TableSources::read_headings(const toml::node &node, const std::string &name, CsvForm &form)
{
    const toml::table *columns = node.as_table();
    if (!columns) {
        net.faults.add(place_of(node.source()), "columns of " + name + " are no list of columns",
                       "write columns = { from = \"...\" }");
        return;
    }
    for (const auto &[key, value] : *columns) {
        const toml::value<std::string> *word = value.as_string();
        if (word)
            form.headings.push_back({std::string(key.str()), word->get(), place_of(key.source())});
        else
            net.faults.add(place_of(value.source()),
                           "column " + quote(std::string(key.str())) + " of " + name + " is not a text",
                           "write the word of the file's heading in quotation marks");
    }
}

// A file that the network file names, null with a fault when it cannot be read.
const TextFile *TableSources::open_file(const toml::value<std::string> &path)
{
    const auto whole = std::filesystem::path(net.model.path).parent_path() / path.get();
    TextFile &text = files.emplace_back();
    if (!text.read(whole.string(), place_of(path.source()), net.faults)) return nullptr;
    net.digest(text);
    return &text;
}

void TableSources::find_covariances(const toml::table &root)
{
    const toml::table *all = root["covariances"].as_table();
    if (!all) return;
    for (const auto &[key, node] : *all) {
        const std::string name(key.str());
        if (node.is_table())
            read_covariance(*all, name);
        else
            net.faults.add(place_of(key.source()), "covariance " + quote(name) + " is not a section",
                           "write [covariances." + printable(name) + "] and its keys below");
    }
}

void TableSources::read_covariance(const toml::table &all, const std::string &name)
{
    static const Words forms = {{"full", (int)MatrixForm::full},
                                {"lower", (int)MatrixForm::lower},
                                {"upper", (int)MatrixForm::upper},
                                {"band", (int)MatrixForm::band}};
    static const std::vector<std::string> keys = {"form", "width", "unit", "sigma_factor", "matrix", "file"};
    constexpr int widest = 1000000;
    check_section({"covariances." + name, keys}, *all.get(name), net.faults);
    Section section(all, name.c_str(), net.faults);
    MatrixText text;
    text.at = section.place();
    text.form = (MatrixForm)section.word("form", (int)MatrixForm::full, forms);
    text.width = section.whole("width", 0, 0, widest);
    text.sigma_factor = section.number("sigma_factor", 1.0, above_zero, "above 0");
    section.word("unit", 0, {{"sigma", 0}});
    text.numbers = matrix_of(section);
    matrices.push_back(text);
    net.covariances.add(name, text.at);
    CovarianceRecord record;
    record.name = printable(name);
    net.model.covariances.add(record, text.at);
}

// The numbers, in the section itself or in a file of their own.
std::optional<Passage> TableSources::matrix_of(Section &section)
{
    const toml::node *inside = section.find("matrix"), *outside = section.find("file");
    if (!inside == !outside)
        net.faults.add(section.place(), inside ? "matrix and file are both given" : "the covariance has no numbers",
                       inside ? "keep one of the two" : "write matrix = \"\"\"...\"\"\" or file = \"NAME.cov\"");
    else if (const toml::node *node = inside ? inside : outside; !node->is_string())
        section.fault(*node, section.name(inside ? "matrix" : "file") + " is not a text",
                      "write it in quotation marks");
    else if (inside)
        return passage_of(main, node->source());
    else if (const TextFile *text = open_file(*node->as_string()))
        return Passage(*text, 0, text->text().size());
    return std::nullopt;
}

} // namespace vornhost
