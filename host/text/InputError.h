#ifndef TRUNNION_HOST_TEXT_INPUT_ERROR_H
#define TRUNNION_HOST_TEXT_INPUT_ERROR_H

#include <stdexcept>
#include <string>

namespace host
{

/// A place in a text, both counted from 1. Line 0 stands for the file as a whole.
struct TextPosition
{
    int line{0};
    int column{0};
};

/// What stops the program: something that the user wrote and can put right. `what()` is the whole
/// message, "file:line:column: sentence".
class InputError : public std::runtime_error
{
  public:
    InputError(const std::string& inFile, TextPosition place, const std::string& fault);
    /// About the file as a whole.
    InputError(const std::string& inFile, const std::string& fault);

    const std::string& File() const { return file; }
    int Line() const { return at.line; }
    int Column() const { return at.column; }
    const std::string& Sentence() const { return sentence; }

  private:
    std::string file;
    TextPosition at;
    std::string sentence;
};

} // namespace host

#endif
