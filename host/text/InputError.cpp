#include "text/InputError.h"

namespace host
{

namespace
{

std::string Place(const std::string& file, TextPosition at)
{
    return at.line == 0 ? file
                        : file + ":" + std::to_string(at.line) + ":" + std::to_string(at.column);
}

} // namespace

InputError::InputError(const std::string& inFile, TextPosition place, const std::string& fault)
    : std::runtime_error(Place(inFile, place) + ": " + fault), file(inFile), at(place),
      sentence(fault)
{}

InputError::InputError(const std::string& inFile, const std::string& fault)
    : InputError(inFile, TextPosition(), fault)
{}

} // namespace host
