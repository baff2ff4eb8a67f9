#include "app/BatchFile.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>

#include "app/Overwriting.h"
#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/LineReader.h"
#include "text/Quoted.h"
#include "text/ShellWords.h"

namespace host
{

namespace
{

namespace fs = std::filesystem;

constexpr TextBounds kBounds{16UL * 1024 * 1024, 64UL * 1024};

std::string Trimmed(std::string_view line)
{
    std::string text(line.substr(0, line.find_last_not_of(" \t") + 1));
    text.erase(0, text.find_first_not_of(" \t"));
    return WithoutControlCharacters(text);
}

/// They would get into messages by the names of files.
void RefuseControlCharacters(const LineReader& at)
{
    const std::string_view line = at.Line();
    const auto isControl = [](char c) {
        return (c >= '\0' && c < ' ' && c != '\t') || c == '\x7F';
    };
    const auto* const found = std::find_if(line.begin(), line.end(), isControl);
    if (found != line.end()) {
        throw InputError(at.File(), {at.Number(), static_cast<int>(found - line.begin()) + 1},
                         "there is a control character here; take it out");
    }
}

void CheckCommand(const LineReader& at, const std::vector<std::string>& words)
{
    const auto refuse = [&](const std::string& sentence) {
        throw InputError(at.File(), {at.Number(), 1}, sentence);
    };
    if (words[0] == "batch") {
        refuse("a batch cannot start another; write its jobs here, or give it a call of its own");
    }
    if (words[0] != "solve" && words[0] != "verify") {
        refuse(Quoted(words[0]) + " does not begin a job; write solve or verify, and behind it "
                                  "what stands behind that on the command line");
    }
}

/// Jobs go side by side, in whatever order: none may depend on another's files.
class FileUses
{
  public:
    explicit FileUses(std::string batchFile) : file(std::move(batchFile)) {}

    void AddWritten(const BatchLine& line)
    {
        const UsedFiles files = FilesOf(line.job);
        try {
            RefuseOverwriting(files);
        } catch (const InputError& error) {
            Refuse(line, error.what());
        }
        for (const auto& group : {files.results, files.interim}) {
            for (const fs::path& path : group) {
                AddWritten(line, path);
            }
        }
    }

    void CheckRead(const BatchLine& line) const
    {
        for (const fs::path& path : FilesOf(line.job).read) {
            for (const std::string& key : FileKeys(path)) {
                const auto writer = writers.find(key);
                if (writer != writers.end()) {
                    Refuse(line, path.string() + " is written by the job of line " +
                                     std::to_string(writer->second) +
                                     ", and jobs do not wait for each other; put what reads it in "
                                     "a batch of its own");
                }
            }
        }
    }

    void CheckOwn(const fs::path& own) const
    {
        for (const std::string& key : FileKeys(own)) {
            const auto writer = writers.find(key);
            if (writer != writers.end()) {
                throw InputError(file, {writer->second, 1},
                                 own.string() + " is of the batch itself; let the job write "
                                                "another file");
            }
        }
    }

  private:
    void AddWritten(const BatchLine& line, const fs::path& path)
    {
        for (const std::string& key : FileKeys(path)) {
            const auto [writer, isNew] = writers.emplace(key, line.number);
            if (!isNew && writer->second != line.number) {
                Refuse(line, path.string() + " is written by the job of line " +
                                 std::to_string(writer->second) +
                                 " too; choose another name for one of them");
            }
        }
    }

    [[noreturn]] void Refuse(const BatchLine& line, const std::string& sentence) const
    {
        throw InputError(file, {line.number, 1}, sentence);
    }

    std::string file;
    std::map<std::string, int> writers; // line by what tells a file from others
};

void CheckFiles(const std::vector<BatchLine>& lines, const fs::path& file, const fs::path& record)
{
    FileUses uses(file.string());
    for (const BatchLine& line : lines) {
        uses.AddWritten(line);
    }
    for (const BatchLine& line : lines) {
        uses.CheckRead(line);
    }
    uses.CheckOwn(file);
    uses.CheckOwn(record);
}

} // namespace

std::vector<BatchLine> ReadBatch(const fs::path& file, const fs::path& record,
                                 const JobReader& read)
{
    std::ifstream in = OpenInput(file);
    LineReader reader(in, file.string(), kBounds);
    std::vector<BatchLine> lines;
    while (reader.Next()) {
        RefuseControlCharacters(reader);
        std::vector<std::string> words = ShellWords(reader.Line(), file.string(), reader.Number());
        if (words.empty()) {
            continue;
        }
        CheckCommand(reader, words);
        try {
            JobOptions job = read(words);
            lines.push_back(
                {reader.Number(), Trimmed(reader.Line()), std::move(words), std::move(job)});
        } catch (const InputError& error) {
            throw InputError(file.string(), {reader.Number(), 1}, error.Sentence());
        }
    }
    if (lines.empty()) {
        throw InputError(file.string(), "there is no job in this file; write one a line, beginning "
                                        "with solve or verify");
    }
    CheckFiles(lines, file, record);
    return lines;
}

} // namespace host
