#include "machine/UrdfNumbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "text/InputError.h"
#include "text/Numbers.h"
#include "text/Quoted.h"

namespace host
{

namespace
{

constexpr double kLargestNumber = 1e9; // [m], [rad]

std::vector<std::string_view> Words(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r\n";
    std::vector<std::string_view> words;
    std::size_t begin = text.find_first_not_of(kBlanks);
    while (begin != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
        words.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(kBlanks, end);
    }
    return words;
}

} // namespace

void UrdfNumbers::Refuse(const XmlElement& element, const std::string& sentence) const
{
    throw InputError(file, element.at, sentence);
}

std::optional<double> UrdfNumbers::Number(const XmlElement& element, const std::string& attribute,
                                          const std::string& what) const
{
    const auto text = element.Attribute(attribute);
    return text ? std::optional(Value(element, *text, attribute, what)) : std::nullopt;
}

std::optional<Vec3> UrdfNumbers::Triple(const XmlElement& element, const std::string& attribute,
                                        const std::string& what) const
{
    const auto values = Numbers(element, attribute, what, "0 0 0.1");
    return values ? std::optional(Vec3{values->at(0), values->at(1), values->at(2)}) : std::nullopt;
}

std::optional<std::vector<double>> UrdfNumbers::Numbers(const XmlElement& element,
                                                        const std::string& attribute,
                                                        const std::string& what,
                                                        std::string_view example) const
{
    const auto text = element.Attribute(attribute);
    if (!text) {
        return std::nullopt;
    }
    const std::vector<std::string_view> words = Words(*text);
    const std::size_t wanted = Words(example).size();
    if (words.size() != wanted) {
        Refuse(element, attribute + " of " + what + " has " + std::to_string(words.size()) +
                            (words.size() == 1 ? " number, not " : " numbers, not ") +
                            std::to_string(wanted) + "; write it like " + attribute + "=\"" +
                            std::string(example) + "\"");
    }
    std::vector<double> values;
    std::transform(words.begin(), words.end(), std::back_inserter(values),
                   [&](std::string_view word) { return Value(element, word, attribute, what); });
    return values;
}

double UrdfNumbers::Value(const XmlElement& element, std::string_view text,
                          const std::string& attribute, const std::string& what) const
{
    const auto value = ParseNumber(text);
    if (!value) {
        Refuse(element, Quoted(text) + " in " + attribute + " of " + what +
                            " is not a finite number; write it like 0.125 or -1.0e-3");
    }
    if (std::fabs(*value) > kLargestNumber) {
        Refuse(element, Quoted(text) + " in " + attribute + " of " + what +
                            " is beyond any machine; lengths are in metres, angles in radians");
    }
    return *value;
}

} // namespace host
