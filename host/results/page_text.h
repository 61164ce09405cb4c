// The page of host/results/page/ as one text, made at build by cmake/page.cmake. @title@ and @data@ stand where the
// writer puts what belongs to a run.

#ifndef VORNHOST_PAGE_TEXT_H
#define VORNHOST_PAGE_TEXT_H

namespace vornhost {

extern const char *const page_text;

} // namespace vornhost

#endif
