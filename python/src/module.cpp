// The module _vorn: networks and results of include/vorn/network.h for the package vorn, which gives them their shape
// for people. Faults become InputError and AdjustmentError of vorn._errors.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <string>
#include <utility>

#include "columns.h"
#include "run.h"
#include "vorn/compare.h"

namespace py = pybind11;

namespace vornpython {

namespace {

using vornapi::Point;
using vornapi::Residual;
using Shared = std::shared_ptr<vornapi::Result>;

// Strings that come from outside may hold bytes that are not UTF-8: names of files.
py::object text(const std::string &bytes) { return Words().of(bytes); }

py::list texts(const std::vector<std::string> &all)
{
    py::list out;
    for (const std::string &one : all) out.append(text(one));
    return out;
}

[[noreturn]] void raise(const char *error, const std::vector<vornapi::Fault> &faults)
{
    const py::module_ errors = py::module_::import("vorn._errors");
    py::list all;
    for (const vornapi::Fault &f : faults)
        all.append(
            errors.attr("Fault")(text(f.file), f.line, f.column, text(f.sentence), text(f.remedy), text(f.text())));
    const py::object type = errors.attr(error);
    PyErr_SetObject(type.ptr(), type(all).ptr());
    throw py::error_already_set();
}

struct Network {
    vornapi::Network network;
    std::vector<std::string> notes;
};

Network network_of(vornapi::Reading reading)
{
    if (!reading.network) raise("InputError", reading.faults);
    return {std::move(*reading.network), std::move(reading.notes)};
}

template <class Read> Network without_lock(Read read)
{
    vornapi::Reading reading;
    {
        const py::gil_scoped_release unlocked;
        reading = read();
    }
    return network_of(std::move(reading));
}

Network read_file(const std::string &path)
{
    return without_lock([&] { return vornapi::read_file(path); });
}

Network read_text(const std::string &content, const std::string &name)
{
    return without_lock([&] { return vornapi::read_text(content, name); });
}

Network read_arrays(const std::string &settings, const py::dict &tables, const py::dict &covariances,
                    const std::string &name)
{
    vornapi::Arrays arrays;
    arrays.settings = settings;
    for (const auto &[table, columns] : tables)
        arrays.tables.push_back(table_of(py::str(table), py::reinterpret_borrow<py::dict>(columns)));
    for (const auto &[matrix, values] : covariances)
        arrays.covariances.push_back(matrix_of(py::str(matrix), py::reinterpret_borrow<py::object>(values)));
    return without_lock([&] { return vornapi::read_arrays(arrays, name); });
}

Shared adjust(const Network &self, int threads, bool report, std::vector<std::string> covariances,
              const py::object &progress)
{
    vornapi::Options options;
    options.threads = threads;
    options.report = report;
    options.covariances = std::move(covariances);
    vornapi::Result result = run(self.network, std::move(options), progress);
    if (!result.adjusted()) raise("AdjustmentError", result.faults);
    return std::make_shared<vornapi::Result>(std::move(result));
}

// Coordinates that the dimension has, under their names with something around them.
void add_axes(py::dict &table, const vornapi::Result &result, const std::string &before,
              std::array<std::optional<double>, 3> Point::*member)
{
    const std::vector<double> all = vornapi::column(result.points, member);
    for (size_t k = 0; k < 3; k++) {
        const bool there = result.dimension == 3 || (result.dimension == 1 ? k == 2 : k < 2);
        if (there) table[(before + "xyz"[k]).c_str()] = every_third(all, k);
    }
}

py::dict points(const Shared &result)
{
    py::dict table;
    table["name"] = words(result->points, [](const Point &p) -> const std::string & { return p.name; });
    table["station"] = answers(result->points, [](const Point &p) { return p.station; });
    add_axes(table, *result, "", &Point::adjusted);
    add_axes(table, *result, "s", &Point::deviation);
    add_axes(table, *result, "approximate_", &Point::approximate);
    for (size_t k = 0; k < 3; k++) {
        const bool there = result->dimension == 3 || (result->dimension == 1 ? k == 2 : k < 2);
        if (!there) continue;
        table[(std::string("code_") + "xyz"[k]).c_str()] =
            words(result->points, [k](const Point &p) -> const std::string & { return p.code[k]; });
    }
    if (result->dimension == 1) return table;
    std::vector<vornapi::Ellipse> ellipses;
    const double absent = std::numeric_limits<double>::quiet_NaN();
    for (const Point &p : result->points)
        ellipses.push_back(p.ellipse.value_or(vornapi::Ellipse{absent, absent, absent}));
    table["a"] = numbers(vornapi::column(ellipses, &vornapi::Ellipse::a));
    table["b"] = numbers(vornapi::column(ellipses, &vornapi::Ellipse::b));
    table["bearing"] = numbers(vornapi::column(ellipses, &vornapi::Ellipse::bearing));
    return table;
}

py::dict residuals(const Shared &result)
{
    const std::vector<Residual> &all = result->residuals;
    const auto add_words = [&](py::dict &table, const char *heading, std::string Residual::*member) {
        table[heading] = words(all, [member](const Residual &r) -> const std::string & { return r.*member; });
    };
    py::dict table;
    add_words(table, "kind", &Residual::kind);
    add_words(table, "from", &Residual::from);
    add_words(table, "to", &Residual::to);
    add_words(table, "at", &Residual::at);
    add_words(table, "component", &Residual::component);
    add_words(table, "id", &Residual::id);
    add_words(table, "file", &Residual::file);
    py::array_t<int> lines((py::ssize_t)all.size());
    for (size_t i = 0; i < all.size(); i++) lines.mutable_data()[i] = all[i].line;
    table["line"] = lines;
    add_words(table, "unit", &Residual::unit);
    table["value"] = numbers(vornapi::column(all, &Residual::value));
    table["sigma"] = numbers(vornapi::column(all, &Residual::sigma));
    table["adjusted"] = numbers(vornapi::column(all, &Residual::adjusted));
    table["residual"] = numbers(vornapi::column(all, &Residual::residual));
    table["redundancy"] = numbers(vornapi::column(all, &Residual::redundancy));
    table["normalised"] = numbers(vornapi::column(all, &Residual::normalised));
    table["suspicious"] = answers(all, [](const Residual &r) { return r.suspicious; });
    table["checked"] = answers(all, [](const Residual &r) { return r.checked.value_or(false); });
    table["p_value"] = numbers(vornapi::column(all, &Residual::p_value));
    table["detectable"] = numbers(vornapi::column(all, &Residual::detectable));
    table["bias_to_noise"] = numbers(vornapi::column(all, &Residual::bias_to_noise));
    table["shift"] = numbers(vornapi::column(all, &Residual::shift));
    return table;
}

py::array_t<double> covariance_matrix(const Shared &result)
{
    const auto n = (py::ssize_t)(3 * result->covariance_points.size());
    return numbers(result->covariance_matrix).reshape({n, n});
}

void define_results(py::module_ &m)
{
    py::class_<vornapi::Result, std::shared_ptr<vornapi::Result>>(m, "Result")
        .def_readonly("dimension", &vornapi::Result::dimension)
        .def_readonly("degrees_of_freedom", &vornapi::Result::degrees_of_freedom)
        .def_readonly("sigma", &vornapi::Result::sigma_aposteriori)
        .def_readonly("variance_test", &vornapi::Result::variance_test)
        .def_property_readonly("datum", [](const vornapi::Result &r) { return text(r.datum); })
        .def_property_readonly("report", [](const vornapi::Result &r) { return text(r.report); })
        .def_property_readonly("notes", [](const vornapi::Result &r) { return texts(r.notes); })
        .def_property_readonly("covariance_points", [](const vornapi::Result &r) { return texts(r.covariance_points); })
        .def("covariance_matrix", &covariance_matrix)
        .def("points", &points)
        .def("residuals", &residuals)
        .def("json", [](const vornapi::Result &r) { return text(r.json()); })
        .def("page", [](const vornapi::Result &r) { return text(r.page()); });
}

void define_networks(py::module_ &m)
{
    py::class_<Network>(m, "Network")
        .def_property_readonly("title", [](const Network &n) { return text(n.network.title()); })
        .def_property_readonly("notes", [](const Network &n) { return texts(n.notes); })
        .def("point_names", [](const Network &n) { return texts(n.network.point_names()); })
        .def("adjust", &adjust, py::arg("threads"), py::arg("report"), py::arg("covariances"), py::arg("progress"))
        .def(
            "simulate",
            [](const Network &n, std::uint64_t seed, double noise) {
                return without_lock([&] { return n.network.simulate(seed, noise); });
            },
            py::arg("seed"), py::arg("noise"));
}

// JSON and report of a comparison.
py::tuple compare(const std::vector<Network> &epochs, double level, bool apriori, bool held,
                  std::vector<std::string> points, std::vector<std::string> dates,
                  std::vector<std::vector<std::string>> groups)
{
    vornapi::CompareOptions options;
    options.level = level;
    options.apriori = apriori;
    options.held = held;
    options.points = std::move(points);
    options.dates = std::move(dates);
    options.groups = std::move(groups);
    std::vector<vornapi::Network> networks;
    networks.reserve(epochs.size());
    for (const Network &n : epochs) networks.push_back(n.network);
    vornapi::Comparison c;
    {
        const py::gil_scoped_release unlocked;
        c = vornapi::compare(networks, options);
    }
    if (!c.made()) raise("AdjustmentError", c.faults);
    return py::make_tuple(text(c.json), text(c.report));
}

} // namespace

PYBIND11_MODULE(_vorn, m)
{
    m.doc() = "The compiled part of the package vorn.";
    define_results(m);
    define_networks(m);
    m.def("read_file", &read_file, py::arg("path"));
    m.def("read_text", &read_text, py::arg("text"), py::arg("name"));
    m.def("read_arrays", &read_arrays, py::arg("settings"), py::arg("tables"), py::arg("covariances"), py::arg("name"));
    m.def("compare", &compare, py::arg("epochs"), py::arg("level"), py::arg("apriori"), py::arg("held"),
          py::arg("points"), py::arg("dates"), py::arg("groups"));
    m.def("version", &vornapi::version);
}

} // namespace vornpython
