#include "mutated/Checks.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "mutated/PlainText.h"

namespace test
{

std::string Shown(const std::string& text)
{
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            shown += "\\n\n";
        } else if (byte >= ' ' && byte < 0x7F) {
            shown += c;
        } else {
            char code[8];
            std::snprintf(code, sizeof code, "\\x%02X", byte);
            shown += code;
        }
    }
    return shown;
}

namespace
{

void CheckPlace(const host::InputError& error, const std::string& text)
{
    // A CR ends a line in XML, and in no other text that is read.
    const std::vector<std::string> lines = SplitAt(text, '\n');
    const auto returns = std::count(text.begin(), text.end(), '\r');
    EXPECT_GE(error.Line(), 0);
    EXPECT_LE(error.Line(), static_cast<long>(lines.size()) + returns) << error.what();
    if (error.Line() > 0) {
        EXPECT_GE(error.Column(), 1) << error.what();
    }
    if (error.Line() > 0 && returns == 0) {
        const std::string& line = lines.at(static_cast<std::size_t>(error.Line() - 1));
        const std::size_t behindLineEnd = line.size() + 2;
        EXPECT_LE(error.Column(), static_cast<long>(behindLineEnd)) << error.what();
    }
}

} // namespace

void CheckRefusal(const host::InputError& error, const std::string& text)
{
    CheckPlace(error, text);
    const std::string message = error.what();
    EXPECT_EQ(message.rfind(std::string(kMutatedName) + ":", 0), 0U) << message;
    EXPECT_FALSE(error.Sentence().empty());
    const auto isControl = [](char c) { return (c >= '\0' && c < ' ') || c == '\x7F'; };
    EXPECT_TRUE(std::none_of(message.begin(), message.end(), isControl)) << Shown(message);
}

bool IsUnit(const host::Vec3& direction)
{
    return std::fabs(std::hypot(direction[0], direction[1], direction[2]) - 1.0) < 1e-12;
}

bool IsFinite(const host::Vec3& vector)
{
    return std::isfinite(vector[0]) && std::isfinite(vector[1]) && std::isfinite(vector[2]);
}

} // namespace test
