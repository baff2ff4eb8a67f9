#include "mutated/PlainUrdf.h"

#include <cstddef>

namespace test
{

namespace
{

constexpr const char* kBlanks = " \t\r\n";

/// From the text between < and >, behind the name.
PlainAttributes AttributesIn(const std::string& tag)
{
    PlainAttributes attributes;
    std::size_t next = tag.find_first_of(kBlanks);
    while (next != std::string::npos) {
        const std::size_t begin = tag.find_first_not_of(kBlanks, next);
        const std::size_t equals = tag.find('=', next);
        if (begin == std::string::npos || equals == std::string::npos) {
            break;
        }
        const std::string name = tag.substr(begin, tag.find_first_of(" \t\r\n=", begin) - begin);
        const std::size_t open = tag.find_first_of("\"'", equals);
        const std::size_t close = tag.find(tag[open], open + 1);
        attributes[name] = tag.substr(open + 1, close - open - 1);
        next = close + 1;
    }
    return attributes;
}

/// Where the tag that begins at `begin` has its >.
std::size_t EndOfTag(const std::string& text, std::size_t begin)
{
    char quote = '\0';
    for (std::size_t i = begin; i < text.size(); ++i) {
        if (quote != '\0') {
            quote = text[i] == quote ? '\0' : quote;
        } else if (text[i] == '"' || text[i] == '\'') {
            quote = text[i];
        } else if (text[i] == '>') {
            return i;
        }
    }
    return text.size();
}

} // namespace

std::optional<std::vector<PlainJoint>> PlainUrdf(const std::string& text)
{
    if (text.find("<!") != std::string::npos || text.find('&') != std::string::npos) {
        return std::nullopt;
    }
    std::vector<PlainJoint> joints;
    std::vector<std::string> open;
    for (std::size_t begin = text.find('<'); begin < text.size();) {
        const std::size_t end =
            text[begin + 1] == '?' ? text.find("?>", begin) + 1 : EndOfTag(text, begin);
        std::string tag = text.substr(begin + 1, end - begin - 1);
        begin = text.find('<', end);
        if (tag.front() == '?') {
            continue;
        }
        if (tag.front() == '/') {
            open.pop_back();
            continue;
        }
        const bool isClosed = tag.back() == '/';
        tag = isClosed ? tag.substr(0, tag.size() - 1) : tag;
        const std::string name = tag.substr(0, tag.find_first_of(kBlanks));
        if (open.size() == 1 && name == "joint") {
            joints.push_back({AttributesIn(tag), {}});
        } else if (open.size() == 2 && open.back() == "joint") {
            joints.back().elements[name] = AttributesIn(tag);
        }
        if (!isClosed) {
            open.push_back(name);
        }
    }
    return joints;
}

} // namespace test
