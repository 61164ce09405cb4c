// Python's arrays as columns of tables, and columns of results as NumPy arrays.

#ifndef VORNPYTHON_COLUMNS_H
#define VORNPYTHON_COLUMNS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <string>
#include <vector>

#include "vorn/network.h"

namespace vornpython {

// A table of {heading: array}. Values are numbers, words, yes and no; NaN and None are not known. One value stands for
// all rows. Throws TypeError for what is neither.
vornapi::Table table_of(const std::string &name, const pybind11::dict &columns);

// A square array of numbers. Throws TypeError for another one.
vornapi::Matrix matrix_of(const std::string &name, const pybind11::object &values);

// Numbers as an array that owns them.
pybind11::array_t<double> numbers(std::vector<double> values);

// Coordinate k of each three values side by side.
pybind11::array_t<double> every_third(const std::vector<double> &values, size_t k);

// Words as str objects; those that come again are the same object.
class Words {
public:
    pybind11::object of(const std::string &word);

private:
    pybind11::dict known;
};

// One word of each item as an array of str.
template <class Items, class Word> pybind11::array words(const Items &items, Word word)
{
    Words known;
    pybind11::list all(items.size());
    for (size_t i = 0; i < items.size(); i++) all[i] = known.of(word(items[i]));
    return pybind11::module_::import("numpy").attr("array")(all, "O");
}

// One answer of each item as an array of bool.
template <class Items, class Answer> pybind11::array_t<bool> answers(const Items &items, Answer answer)
{
    pybind11::array_t<bool> all((pybind11::ssize_t)items.size());
    for (size_t i = 0; i < items.size(); i++) all.mutable_data()[i] = answer(items[i]);
    return all;
}

} // namespace vornpython

#endif
