#include "app/BatchJob.h"

#include <chrono>
#include <exception>
#include <new>
#include <ostream>
#include <system_error>

#include "app/FileDigest.h"
#include "app/SolveCommand.h"
#include "text/Bytes.h"
#include "text/CappedText.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"

namespace host
{

namespace
{

ExitCode RunCommand(const SolveOptions& options, std::ostream& out, std::ostream& err)
{
    return Solve(options, out, err);
}

ExitCode RunCommand(const VerifyOptions& options, std::ostream& out, std::ostream& err)
{
    return Verify(options, out, err);
}

/// A stream's text, to be printed later: a path of a million points may fail at each.
class Collected
{
  public:
    std::ostream& Stream() { return stream; }
    std::string Take(const char* streamName)
    {
        if (text.LinesLeftOut() > 0) {
            return text.Text() + std::to_string(text.LinesLeftOut()) + " more lines on standard " +
                   streamName + "; run this job by itself to see them\n";
        }
        return text.Text();
    }

  private:
    static constexpr std::size_t kMostBytes = 4UL * 1024 * 1024;
    CappedText text{kMostBytes};
    std::ostream stream{&text};
};

} // namespace

UsedFiles FilesOf(const JobOptions& job)
{
    return std::visit([](const auto& options) { return FilesOf(options); }, job);
}

std::string JobFingerprint(const std::vector<std::string>& words, const JobOptions& job,
                           const std::string& version)
{
    Fingerprint print;
    print.Add(version);
    for (const std::string& word : words) {
        print.Add(word);
    }
    for (const std::filesystem::path& file : FilesOf(job).read) {
        std::error_code ignored;
        const bool isThere = std::filesystem::exists(file, ignored); // a dialect may be a name only
        try {
            print.Add(isThere ? FileDigest(file) : file.string());
        } catch (const InputError&) {
            return {};
        }
    }
    return print.Hex();
}

JobResult RunJob(const JobOptions& job)
{
    const auto start = std::chrono::steady_clock::now();
    JobResult result;
    Collected out;
    Collected err;
    try {
        result.code = std::visit(
            [&](const auto& options) { return RunCommand(options, out.Stream(), err.Stream()); },
            job);
    } catch (const std::bad_alloc&) {
        result.fault = kNotEnoughMemory;
    } catch (const std::exception& error) {
        result.fault = error.what();
    }
    result.out = out.Take("output");
    result.err = err.Take("error") + (result.fault.empty() ? "" : result.fault + "\n");
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
}

std::string BytesOf(const JobResult& result)
{
    ByteWriter writer;
    writer.Put(result.code);
    writer.PutText(result.fault);
    writer.PutText(result.out);
    writer.PutText(result.err);
    writer.Put(result.seconds);
    return writer.Take();
}

JobResult ResultFrom(const std::string& bytes)
{
    ByteReader reader(bytes);
    JobResult result;
    const bool isWhole = reader.Take(result.code) && reader.TakeText(result.fault) &&
                         reader.TakeText(result.out) && reader.TakeText(result.err) &&
                         reader.Take(result.seconds);
    if (!isWhole) {
        result.code = kExitBadInput;
        result.fault = "trunnion: what another rank has sent is damaged; run this job again";
    }
    return result;
}

} // namespace host
