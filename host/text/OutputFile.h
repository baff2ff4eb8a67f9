#ifndef TRUNNION_HOST_TEXT_OUTPUT_FILE_H
#define TRUNNION_HOST_TEXT_OUTPUT_FILE_H

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace host
{

/// A file that appears whole or not at all: written without a name, where the file system can do
/// that, and moved to its place at the end. What is not moved there is gone, however the process
/// ends. Elsewhere it is written under a name next to its place, and the destructor takes it away.
class OutputFile
{
  public:
    /// `place` is where the file will stand; a link is followed. Throws InputError when nothing
    /// can be written there.
    explicit OutputFile(const std::filesystem::path& place);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(std::string_view text);
    /// Closes the file; from here on nothing but its move can fail.
    void Seal();
    /// Closes the file and moves it to its target.
    void Finish();
    /// Closes the file and moves it to the target's name with ".partial" behind; returns that name.
    std::filesystem::path FinishAsPartial();

  private:
    struct Closer
    {
        void operator()(std::FILE* opened) const { std::fclose(opened); }
    };

    int OpenNameless();
    int OpenNamed();
    void GiveName();
    void MoveTo(const std::filesystem::path& place);
    void Remove() noexcept;
    [[noreturn]] void Refuse(int error) const;

    std::filesystem::path shown; // the target as the user wrote it
    std::filesystem::path target;
    std::filesystem::path temporary; // its name for now; empty where it has none
    std::unique_ptr<std::FILE, Closer> stream;
};

} // namespace host

#endif
