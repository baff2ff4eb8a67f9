#include "machine/AxisName.h"

#include <algorithm>
#include <string_view>

namespace host
{

void RefuseUnspeakableName(const std::string& file, const Located<std::string>& name)
{
    const auto isBad = [](char c) {
        return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' ||
               std::string_view("=,;|\"'").find(c) != std::string_view::npos;
    };
    if (std::any_of(name.value.begin(), name.value.end(), isBad)) {
        throw InputError(file, name.at,
                         "the name of an axis has no blanks, quotes or any of = , ; | in it; "
                         "choose a plain one like \"X\"");
    }
}

} // namespace host
