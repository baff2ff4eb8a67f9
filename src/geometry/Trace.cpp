#include "geometry/Trace.h"

#include <algorithm>
#include <array>
#include <cwchar>

namespace trunnion
{

TraceSwitches& Tracing()
{
    static TraceSwitches switches;
    return switches;
}

std::wstring TraceLabel(const wchar_t* label, const wchar_t* suffix, std::size_t size)
{
    std::array<wchar_t, kTraceNodeInfoLabel> buffer{};
    const int length = std::swprintf(buffer.data(), std::min(size, buffer.size()), L"%ls%ls",
                                     label == nullptr ? L"" : label, suffix);
    return length < 0 ? std::wstring() : std::wstring(buffer.data());
}

std::wstring TraceSampleCaption(const wchar_t* format, int index)
{
    std::array<wchar_t, kTraceSampleCaption> buffer{};
    const int length = std::swprintf(buffer.data(), buffer.size(), format, index);
    return length < 0 ? std::wstring() : std::wstring(buffer.data());
}

void TraceRows(const TNT::Matrix<double>& matrix, const wchar_t* elementFormat)
{
    for (int i = 0; i < matrix.num_rows(); ++i) {
        std::wstring line;
        for (int j = 0; j < matrix.num_cols(); ++j) {
            std::array<wchar_t, kTraceElement> element{};
            if (std::swprintf(element.data(), element.size(), elementFormat, matrix[i][j]) >= 0) {
                line += element.data();
            }
        }
        TraceLine(line.c_str());
    }
}

} // namespace trunnion
