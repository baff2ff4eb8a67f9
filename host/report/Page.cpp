#include "report/Page.h"

#include <algorithm>
#include <cstddef>

namespace host
{

void WritePage(std::string_view html, const ShownMachine& shown, const ShownRun* run,
               const TextSink& sink)
{
    const std::size_t mark = std::min(html.find(kDataMark), html.size());
    sink(html.substr(0, mark));
    WritePageData(shown, run, sink);
    sink(html.substr(std::min(mark + kDataMark.size(), html.size())));
}

} // namespace host
