#include "text/XmlText.h"

#include <algorithm>
#include <memory>
#include <new>
#include <type_traits>

#include <expat.h>

#include "text/Utf8.h"

namespace host
{

namespace
{

constexpr std::size_t kMaxNesting = 64;
constexpr std::size_t kMaxParts = 100000; // elements and attributes

/// Builds the elements from the parser's events. The parser is written in C, so that nothing may be
/// thrown through it: a refusal is kept until it has stopped.
class XmlReader
{
  public:
    explicit XmlReader(const std::string& fileName)
        : file(fileName), parser(XML_ParserCreate("UTF-8"))
    {
        if (!parser) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), Begin, End);
        XML_SetStartDoctypeDeclHandler(parser.get(), BeginDoctype);
    }

    XmlElement Read(std::string_view text)
    {
        const XML_Status status =
            XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE);
        if (refusal) {
            throw InputError(*refusal);
        }
        if (status != XML_STATUS_OK) {
            throw InputError(file, Position(),
                             "this is not well-formed XML (" +
                                 std::string(XML_ErrorString(XML_GetErrorCode(parser.get()))) +
                                 "); correct it here or on the lines before");
        }
        return std::move(open.front().children.front());
    }

  private:
    struct Free
    {
        void operator()(XML_Parser created) const { XML_ParserFree(created); }
    };

    static XmlReader& Of(void* userData) { return *static_cast<XmlReader*>(userData); }

    static void XMLCALL Begin(void* userData, const XML_Char* name, const XML_Char** attributes)
    {
        Of(userData).TakeBegin(name, attributes);
    }
    static void XMLCALL End(void* userData, const XML_Char* /*name*/) { Of(userData).TakeEnd(); }
    static void XMLCALL BeginDoctype(void* userData, const XML_Char* /*name*/,
                                     const XML_Char* /*systemId*/, const XML_Char* /*publicId*/,
                                     int /*hasInternalSubset*/)
    {
        Of(userData).Refuse("this document type is not read; take the <!DOCTYPE> out");
    }

    void TakeBegin(const XML_Char* name, const XML_Char** attributes)
    {
        if (refusal) {
            return;
        }
        if (open.size() > kMaxNesting) {
            Refuse("elements are nested more than " + std::to_string(kMaxNesting) +
                   " deep here; is it the right file?");
            return;
        }
        constexpr std::size_t kNameAndValue = 2;
        const auto words = static_cast<std::size_t>(XML_GetSpecifiedAttributeCount(parser.get()));
        count += 1 + words / kNameAndValue;
        if (count > kMaxParts) {
            Refuse("there are more than " + std::to_string(kMaxParts) +
                   " elements and attributes; is it the right file?");
            return;
        }
        XmlElement element;
        element.name = name;
        element.at = Position();
        for (std::size_t i = 0; attributes[i] != nullptr; i += kNameAndValue) {
            element.attributes.emplace_back(attributes[i], attributes[i + 1]);
        }
        open.push_back(std::move(element));
    }

    void TakeEnd()
    {
        if (refusal) {
            return;
        }
        XmlElement closed = std::move(open.back());
        open.pop_back();
        open.back().children.push_back(std::move(closed));
    }

    void Refuse(const std::string& sentence)
    {
        if (!refusal) {
            refusal.emplace(file, Position(), sentence);
            XML_StopParser(parser.get(), XML_FALSE);
        }
    }

    TextPosition Position() const
    {
        return {static_cast<int>(XML_GetCurrentLineNumber(parser.get())),
                static_cast<int>(XML_GetCurrentColumnNumber(parser.get())) + 1};
    }

    const std::string& file;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser;
    std::vector<XmlElement> open{XmlElement{}}; // the first stands for the document
    std::size_t count{0};
    std::optional<InputError> refusal;
};

/// The parser takes a text with zero bytes for one of two bytes a character, whatever it is told,
/// and counts its lines and columns otherwise than everyone else.
void RefuseZeroBytes(std::string_view text, const std::string& file)
{
    const std::size_t zero = text.find('\0');
    if (zero == std::string_view::npos) {
        return;
    }
    const std::string_view before = text.substr(0, zero);
    const std::size_t lineStart = before.find_last_of('\n') + 1; // 0 on the first line
    throw InputError(file,
                     {1 + static_cast<int>(std::count(before.begin(), before.end(), '\n')),
                      1 + static_cast<int>(CharacterCount(before.substr(lineStart)))},
                     "there is a zero byte here: this is not UTF-8 text; save the file as UTF-8");
}

/// Characters that would end the attribute, or that a reader of it would turn into others.
std::string Escaped(std::string_view text)
{
    constexpr std::string_view kSpecial = "&<>\"'\t\n\r";
    std::string escaped;
    for (const char c : text) {
        if (kSpecial.find(c) == std::string_view::npos) {
            escaped += c;
        } else {
            escaped += "&#" + std::to_string(static_cast<int>(c)) + ";";
        }
    }
    return escaped;
}

} // namespace

std::optional<std::string> XmlElement::Attribute(std::string_view wanted) const
{
    const auto found =
        std::find_if(attributes.begin(), attributes.end(),
                     [&](const auto& attribute) { return attribute.first == wanted; });
    return found == attributes.end() ? std::nullopt : std::optional(found->second);
}

XmlElement ParseXml(std::string_view text, const std::string& file)
{
    RefuseZeroBytes(text, file);
    return XmlReader(file).Read(text);
}

std::string XmlTextOf(const XmlElement& element)
{
    std::string text = "<" + element.name;
    for (const auto& [name, value] : element.attributes) {
        text += " " + name + "=\"" + Escaped(value) + "\"";
    }
    text += ">\n";
    for (const XmlElement& child : element.children) {
        text += XmlTextOf(child);
    }
    return text + "</" + element.name + ">\n";
}

} // namespace host
