#include "scratch.h"

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "host/results/csv_writer.h"
#include "host/results/json_writer.h"
#include "host/input/network_file.h"
#include "host/results/results.h"
#include "host/run/network_run.h"

namespace {

std::string folder;

void leave_scratch()
{
    std::error_code ignored;
    std::filesystem::current_path("/", ignored);
    std::filesystem::remove_all(folder, ignored);
}

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    _exit(99);
}

} // namespace

void enter_scratch()
{
    const char *named = getenv("TMPDIR");
    folder = (named ? named : access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/vorn-fuzz-XXXXXX");
    if (!mkdtemp(&folder[0]) || chdir(folder.c_str()) != 0) give_up("scratch folder");
    atexit(leave_scratch);
}

void write_bytes(const char *name, const uint8_t *data, size_t size)
{
    FILE *f = fopen(name, "wb");
    if (!f) give_up(name);
    const bool whole = size == 0 || fwrite(data, 1, size, f) == size;
    if (fclose(f) != 0 || !whole) give_up(name);
}

FILE *open_report()
{
    FILE *f = fopen("report", "w+b");
    if (!f) give_up("report");
    return f;
}

void adjust_silently(vornhost::Model &model, vornhost::Solver solver)
{
    Silent silent;
    FILE *report = open_report();
    model.solver = solver;
    const vornhost::Results results = vornhost::run_network(model, report, silent, "0").results;
    fclose(report);
    vornhost::not_numbers(results);
    const nlohmann::json read_back = nlohmann::json::parse(vornhost::to_json(results)); // throws on what is not JSON
    vornhost::make_folder("tables");
    vornhost::write_csv("tables", results);
}

void adjust_file(const char *path, vornhost::Solver solver)
{
    vornhost::Model model;
    vornhost::Faults faults;
    if (vornhost::read_network(path, model, faults))
        adjust_silently(model, solver);
    else
        faults.lines();
}
