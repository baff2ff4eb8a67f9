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

constexpr int kReadWriteForAll = 0666; // less what the user's mask takes away

fs::path TemporaryName(const fs::path& target, int number)
{
    const std::string tried = number == 0 ? "" : "-" + std::to_string(number);
    return WithSuffix(target, "." + std::to_string(::getpid()) + tried + ".tmp");
}

/// Where an open file can be met with that has no name.
std::string PlaceOf(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
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
    int descriptor = OpenNameless();
    if (descriptor < 0) {
        descriptor = OpenNamed();
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

/// Less than 0 where that is not to be had.
int OutputFile::OpenNameless()
{
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    const int descriptor =
        ::open(folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, kReadWriteForAll);
    if (descriptor >= 0 && ::access(PlaceOf(descriptor).c_str(), F_OK) != 0) {
        ::close(descriptor); // it could not be given a name
        return -1;
    }
    return descriptor;
}

int OutputFile::OpenNamed()
{
    temporary = TemporaryName(target, 0);
    const int descriptor =
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadWriteForAll);
    if (descriptor < 0) {
        const int error = errno;
        temporary.clear();
        Refuse(error);
    }
    return descriptor;
}

/// One that nothing has: what stands there is left alone.
void OutputFile::GiveName()
{
    constexpr int kTries = 100;
    const std::string from = PlaceOf(::fileno(stream.get()));
    int error = EEXIST;
    for (int i = 0; i < kTries && error == EEXIST; ++i) {
        const fs::path name = TemporaryName(target, i);
        if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            temporary = name;
            return;
        }
        error = errno;
    }
    Refuse(error);
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
    if (std::fflush(stream.get()) != 0 || ::fsync(::fileno(stream.get())) != 0) {
        Refuse(errno);
    }
    if (temporary.empty()) {
        GiveName();
    }
    if (std::fclose(stream.release()) != 0) {
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
