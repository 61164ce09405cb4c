#include "columns.h"

#include <cmath>
#include <memory>

namespace py = pybind11;

namespace vornpython {

namespace {

std::string utf8(const py::handle &word)
{
    py::ssize_t size = 0;
    const char *text = PyUnicode_AsUTF8AndSize(word.ptr(), &size);
    if (!text) throw py::error_already_set();
    return std::string(text, (size_t)size);
}

bool is_unknown(const py::handle &value)
{
    if (value.is_none()) return true;
    if (PyFloat_Check(value.ptr())) return std::isnan(PyFloat_AsDouble(value.ptr()));
    const std::string type = Py_TYPE(value.ptr())->tp_name;
    return type == "NAType" || type == "NaTType" || type.rfind(".NAType") != type.npos;
}

// A number, word or answer as a cell; empty where it is not known.
std::string cell_of(const std::string &heading, const py::handle &value)
{
    if (PyUnicode_Check(value.ptr())) return utf8(value);
    if (is_unknown(value)) return {};
    if (PyBool_Check(value.ptr())) return value.ptr() == Py_True ? "yes" : "no";
    if (PyLong_Check(value.ptr())) return utf8(py::str(value));
    if (PyNumber_Check(value.ptr())) return utf8(py::repr(py::float_(py::reinterpret_borrow<py::object>(value))));
    throw py::type_error("column " + heading + ": " + utf8(py::repr(value)) + " is neither a number nor a word");
}

std::vector<std::string> cells_of(const std::string &heading, const py::array &array)
{
    const py::list values = array.attr("tolist")();
    std::vector<std::string> cells;
    cells.reserve(values.size());
    for (const py::handle &value : values) cells.push_back(cell_of(heading, value));
    return cells;
}

vornapi::Column column_of(const std::string &heading, const py::array &array)
{
    if (array.ndim() != 1)
        throw py::type_error("column " + heading + " has " + std::to_string(array.ndim()) + " dimensions, not one");
    vornapi::Column column;
    column.heading = heading;
    if (array.dtype().kind() != 'f') {
        column.words = cells_of(heading, array);
        return column;
    }
    const auto values = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(array);
    if (!values) throw py::error_already_set();
    column.numbers.assign(values.data(), values.data() + values.size());
    return column;
}

// One value repeated.
py::array filled(const py::array &value, size_t rows)
{
    return py::module_::import("numpy").attr("repeat")(value, rows);
}

} // namespace

vornapi::Table table_of(const std::string &name, const py::dict &columns)
{
    const py::object asarray = py::module_::import("numpy").attr("asarray");
    std::vector<std::pair<std::string, py::array>> arrays;
    size_t rows = 1;
    for (const auto &[heading, values] : columns) {
        arrays.emplace_back(utf8(py::str(heading)), asarray(values));
        if (const py::array &a = arrays.back().second; a.ndim() > 0) rows = (size_t)a.shape(0);
    }
    vornapi::Table table;
    table.name = name;
    for (const auto &[heading, array] : arrays)
        table.columns.push_back(column_of(heading, array.ndim() == 0 ? filled(array, rows) : array));
    return table;
}

vornapi::Matrix matrix_of(const std::string &name, const py::object &values)
{
    const auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(values);
    if (!array) throw py::error_already_set();
    if (array.ndim() != 2 || array.shape(0) != array.shape(1))
        throw py::type_error("covariance " + name + " is not a square array");
    return {name, (int)array.shape(0), std::vector<double>(array.data(), array.data() + array.size())};
}

py::array_t<double> numbers(std::vector<double> values)
{
    auto kept = std::make_unique<std::vector<double>>(std::move(values));
    const auto size = (py::ssize_t)kept->size();
    double *first = kept->data();
    const py::capsule owner(kept.get(), [](void *p) { delete static_cast<std::vector<double> *>(p); });
    kept.release();
    return py::array_t<double>(size, first, owner);
}

py::array_t<double> every_third(const std::vector<double> &values, size_t k)
{
    std::vector<double> one;
    one.reserve(values.size() / 3);
    for (size_t i = k; i < values.size(); i += 3) one.push_back(values[i]);
    return numbers(std::move(one));
}

py::object Words::of(const std::string &word)
{
    const auto text = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(word.data(), (py::ssize_t)word.size(), "surrogateescape"));
    if (!text) throw py::error_already_set();
    return py::reinterpret_borrow<py::object>(PyDict_SetDefault(known.ptr(), text.ptr(), text.ptr()));
}

} // namespace vornpython
