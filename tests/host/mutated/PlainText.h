#ifndef TRUNNION_TESTS_HOST_MUTATED_PLAIN_TEXT_H
#define TRUNNION_TESTS_HOST_MUTATED_PLAIN_TEXT_H

#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

// What the plain readings of the tests are made of. They share nothing with the readers, and read
// only what those have accepted.
namespace test
{

inline std::vector<std::string> SplitAt(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

/// Without line ends and without byte order mark.
inline std::vector<std::string> PlainLines(const std::string& text)
{
    const bool hasMark = text.rfind("\xEF\xBB\xBF", 0) == 0;
    std::vector<std::string> lines = SplitAt(hasMark ? text.substr(3) : text, '\n');
    for (std::string& line : lines) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
    }
    return lines;
}

inline std::string Trim(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t");
    const std::size_t end = text.find_last_not_of(" \t");
    return begin == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

inline std::string Upper(std::string text)
{
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

inline double PlainNumber(const std::string& text)
{
    return std::strtod(text.c_str(), nullptr);
}

} // namespace test

#endif
