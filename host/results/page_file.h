// The page for a browser, with a title and the data of a run or a comparison in it.

#ifndef VORNHOST_PAGE_FILE_H
#define VORNHOST_PAGE_FILE_H

#include <string>

namespace vornhost {

// title: any text; data: JSON, as the modules of host/results/page/ read it.
std::string page_file(const std::string &title, const std::string &data);

} // namespace vornhost

#endif
