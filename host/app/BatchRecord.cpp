#include "app/BatchRecord.h"

#include <fstream>
#include <string_view>
#include <system_error>

#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/LineReader.h"
#include "text/OutputFile.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kFormat = "trunnion batch 1";
constexpr TextBounds kRecordBounds{64UL * 1024 * 1024, 256};

std::optional<ExitCode> CodeFrom(std::string_view text)
{
    for (const ExitCode code : {kExitOk, kExitPointsFailed, kExitInterrupted}) {
        if (text == std::to_string(static_cast<int>(code))) {
            return code;
        }
    }
    return std::nullopt;
}

} // namespace

void BatchRecord::Load()
{
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        return;
    }
    std::ifstream in = OpenInput(file);
    LineReader reader(in, file.string(), kRecordBounds);
    const auto refuse = [&] {
        throw InputError(file.string(), "a batch notes in this file what is done, and it holds "
                                        "something else; move it away");
    };
    if (!reader.Next() || reader.Line() != kFormat) {
        refuse();
    }
    while (reader.Next()) {
        const std::string_view line = reader.Line(); // fingerprint, blank, code
        const std::size_t blank = line.find(' ');
        const std::optional<ExitCode> code = blank == 0 || blank == std::string_view::npos
                                                 ? std::nullopt
                                                 : CodeFrom(line.substr(blank + 1));
        if (!code) {
            refuse();
        }
        jobs[std::string(line.substr(0, blank))] = *code;
    }
}

std::optional<ExitCode> BatchRecord::Find(const std::string& fingerprint) const
{
    const auto found = jobs.find(fingerprint);
    return found == jobs.end() ? std::nullopt : std::optional(found->second);
}

void BatchRecord::Add(const std::string& fingerprint, ExitCode code)
{
    jobs[fingerprint] = code;
    std::string text = std::string(kFormat) + "\n";
    for (const auto& [print, ended] : jobs) {
        text += print + " " + std::to_string(static_cast<int>(ended)) + "\n";
    }
    OutputFile out(file);
    out.Write(text);
    out.Finish();
}

void BatchRecord::Remove()
{
    jobs.clear();
    std::error_code ignored;
    fs::remove(file, ignored);
}

} // namespace host
