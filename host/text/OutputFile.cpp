#include "text/OutputFile.h"

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "text/InputError.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

fs::path WithSuffix(fs::path path, const std::string& suffix)
{
    path += suffix;
    return path;
}

/// Moving a file onto a device or a folder would replace it, or fail only at the very end.
void RefuseOtherThanFile(const fs::path& target, const fs::path& shown)
{
    std::error_code ignored;
    const fs::file_status status = fs::status(target, ignored);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw InputError(shown.string(), "this is not an ordinary file; name one to write to");
    }
}

fs::path Resolved(const fs::path& path)
{
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(path, error);
    return error ? path : resolved;
}

} // namespace

OutputFile::OutputFile(const fs::path& place) : shown(place), target(Resolved(place))
{
    if (shown.empty()) {
        throw InputError("trunnion", "the name of a file to write is empty; give one");
    }
    RefuseOtherThanFile(target, shown);
    RefuseOtherThanFile(WithSuffix(target, ".partial"), WithSuffix(shown, ".partial"));
    temporary = WithSuffix(target, "." + std::to_string(::getpid()) + ".tmp");
    constexpr int kReadWriteForAll = 0666; // less what the user's mask takes away
    const int descriptor =
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadWriteForAll);
    if (descriptor < 0) {
        const int error = errno;
        temporary.clear();
        Refuse(error);
    }
    stream.reset(::fdopen(descriptor, "w"));
    if (stream == nullptr) {
        const int error = errno;
        ::close(descriptor);
        Remove();
        Refuse(error);
    }
}

OutputFile::~OutputFile()
{
    Remove();
}

void OutputFile::Write(std::string_view text)
{
    // An empty text may stand nowhere, which is no place to write from.
    if (!text.empty() && std::fwrite(text.data(), 1, text.size(), stream.get()) != text.size()) {
        Refuse(errno);
    }
}

void OutputFile::Finish()
{
    MoveTo(target);
}

fs::path OutputFile::FinishAsPartial()
{
    MoveTo(WithSuffix(target, ".partial"));
    return WithSuffix(shown, ".partial");
}

void OutputFile::Seal()
{
    // A full disk may show only now, when the last of the text leaves the buffer.
    if (stream == nullptr) {
        return;
    }
    if (std::fflush(stream.get()) != 0 || ::fsync(::fileno(stream.get())) != 0 ||
        std::fclose(stream.release()) != 0) {
        Refuse(errno);
    }
}

void OutputFile::MoveTo(const fs::path& place)
{
    Seal();
    std::error_code error;
    fs::rename(temporary, place, error);
    if (error) {
        Refuse(error.value());
    }
    temporary.clear();
}

void OutputFile::Remove() noexcept
{
    stream.reset();
    if (!temporary.empty()) {
        std::error_code ignored;
        fs::remove(temporary, ignored);
        temporary.clear();
    }
}

void OutputFile::Refuse(int error) const
{
    throw InputError(shown.string(), "this file cannot be written (" +
                                         std::generic_category().message(error) +
                                         "); check the folder, your rights and the free space");
}

} // namespace host
