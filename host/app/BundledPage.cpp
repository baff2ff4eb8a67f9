#include "app/BundledPage.h"

#include <cstddef>

extern "C" {
extern const char trunnion_report_page[];     // NOLINT: the assembler's arrays
extern const char trunnion_report_page_end[]; // NOLINT
}

namespace host
{

BuiltPage BundledPage()
{
    const auto size = static_cast<std::size_t>(trunnion_report_page_end - trunnion_report_page);
    return std::string_view(trunnion_report_page, size);
}

} // namespace host
