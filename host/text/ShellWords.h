#ifndef TRUNNION_HOST_TEXT_SHELL_WORDS_H
#define TRUNNION_HOST_TEXT_SHELL_WORDS_H

#include <string>
#include <string_view>
#include <vector>

#include "text/InputError.h"

namespace host
{

/// The words of one line of `file` as a shell takes it apart: at blanks, with '...', "..." and \ as
/// there, up to a # that begins a word. Nothing is expanded: throws InputError for what would be,
/// and for a quotation without an end.
std::vector<std::string> ShellWords(std::string_view line, const std::string& file, int number);

} // namespace host

#endif
