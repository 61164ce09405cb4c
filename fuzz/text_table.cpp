// The bytes are a text table, read with cells between blanks, commas, semicolons and tabs, and with headings of its
// own.

#include "scratch.h"
#include "host/input/row.h"
#include "host/input/table.h"
#include "host/input/text_file.h"

using namespace vornhost;

static void read_table(const TextFile &file, Layout layout, const CsvForm &form = CsvForm())
{
    static const std::vector<Column> columns = {{"name", true}, {"x", true}, {"code"}, {"code_x"}};
    Faults faults;
    faults.add_file("table.csv");
    Table table("stations", Passage(file, 0, file.text().size()), layout, Source(), form);
    table.parse(columns, faults);
    size_t known = 0;
    for (size_t i = 0; i < table.rows(); i++) {
        Row row(table, i, faults);
        row.number(1, 0.0);
        row.name(0);
    }
    for (size_t row = 0; row < table.rows(); row++)
        for (int c = 0; c < (int)columns.size(); c++) {
            table.place(row, c);
            if (table.given(row, c)) known += table.cell(row, c)->text.size();
        }
    if (known > file.text().size() + table.rows()) __builtin_trap(); // cells are pieces of the text
    faults.lines();
}

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const int ready = (enter_scratch(), 1);
    (void)ready;
    write_bytes("table.csv", data, size);
    TextFile file;
    Faults faults;
    if (!file.read("table.csv", Source(), faults)) return 0;
    read_table(file, Layout::Blanks);
    read_table(file, Layout::Commas);
    read_table(file, Layout::Commas, {';', ',', {}});
    read_table(file, Layout::Commas, {'\t', '.', {{"name", "Punkt", Source()}, {"x", "Wert", Source()}}});
    return 0;
}
