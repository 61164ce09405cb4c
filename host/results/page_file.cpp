#include "host/results/page_file.h"

#include <string_view>

#include "host/results/page_text.h"

namespace vornhost {

namespace {

// In JSON a "<" stands in texts alone, where it may be written as an escape: then nothing ends the script element.
std::string escaped_for_script(const std::string &text)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (c == '<')
            out += "\\u003c";
        else
            out += c;
    }
    return out;
}

std::string escaped_for_html(const std::string &text)
{
    std::string out;
    for (const char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else
            out += c;
    }
    return out;
}

} // namespace

std::string page_file(const std::string &title, const std::string &data)
{
    const std::string_view page = page_text, title_mark = "@title@", data_mark = "@data@";
    const size_t name = page.find(title_mark), at = page.find(data_mark), behind = name + title_mark.size();
    std::string out(page.substr(0, name));
    out += escaped_for_html(title);
    out += page.substr(behind, at - behind);
    out += escaped_for_script(data);
    out += page.substr(at + data_mark.size());
    return out;
}

} // namespace vornhost
