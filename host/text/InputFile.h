#ifndef TRUNNION_HOST_TEXT_INPUT_FILE_H
#define TRUNNION_HOST_TEXT_INPUT_FILE_H

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace host
{

/// Opens a file for reading, or says why it cannot.
std::ifstream OpenInput(const std::filesystem::path& path);

/// The whole file, refused when it is larger than `maxBytes`.
std::string ReadWholeFile(const std::filesystem::path& path, std::uintmax_t maxBytes);

/// "16 MiB": a bound as its message names it.
std::string SizeText(std::uintmax_t bytes);

} // namespace host

#endif
