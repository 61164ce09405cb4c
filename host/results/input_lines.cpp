#include "host/results/input_lines.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace vornhost {

namespace {

constexpr size_t longest = 400; // bytes of a line that is shown

// Offset of the byte behind the last whole character of at most size bytes.
size_t whole_characters(const std::string &text, size_t size)
{
    while (size > 0 && ((unsigned char)text[size] & 0xC0) == 0x80) size--;
    return size;
}

} // namespace

InputLines::InputLines(const Model &model)
{
    for (const std::string &file : model.files) read(file);
    for (const image_input &image : model.images.records) read(image.file);
}

void InputLines::read(const std::string &file)
{
    std::error_code error;
    if (texts.count(file) || !std::filesystem::is_regular_file(file, error)) return; // a pipe has gone by
    std::ifstream in(file, std::ios::binary);
    Text &text = texts[file];
    text.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    for (size_t at = 0; at < text.bytes.size();) {
        text.starts.push_back(at);
        const size_t end = text.bytes.find('\n', at);
        at = end == std::string::npos ? text.bytes.size() : end + 1;
    }
    text.starts.push_back(text.bytes.size());
}

std::string InputLines::line(const std::string &file, int number) const
{
    const auto found = texts.find(file);
    if (found == texts.end() || number < 1 || (size_t)number >= found->second.starts.size()) return {};
    const Text &text = found->second;
    const size_t begin = text.starts[(size_t)number - 1];
    std::string line = text.bytes.substr(begin, text.starts[(size_t)number] - begin);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    if (line.size() <= longest) return line;
    return line.substr(0, whole_characters(line, longest)) + " ...";
}

} // namespace vornhost
