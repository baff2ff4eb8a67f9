#ifndef TRUNNION_HOST_TEXT_XML_TEXT_H
#define TRUNNION_HOST_TEXT_XML_TEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/InputError.h"

namespace host
{

/// An element of an XML text. Text between elements is not kept.
struct XmlElement
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<XmlElement> children;
    TextPosition at; //!< of its "<"

    /// Nothing where there is no such attribute.
    std::optional<std::string> Attribute(std::string_view wanted) const;
};

/// Parses a text of UTF-8, throwing InputError with the place for one that is not well-formed,
/// nested or split up without bound, or has a document type (which could define entities).
XmlElement ParseXml(std::string_view text, const std::string& file);

/// The element with all that is in it as XML text.
std::string XmlTextOf(const XmlElement& element);

} // namespace host

#endif
