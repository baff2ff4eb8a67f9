#include "planner/Checkpoint.h"

#include <array>
#include <fstream>
#include <utility>

#include "planner/CandidateBytes.h"
#include "text/Bytes.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/OutputFile.h"

namespace host
{

namespace
{

constexpr std::string_view kFormat = "trunnion checkpoint 1";

/// The line before the blocks: format, run, and a check of the blocks themselves.
std::string Head(const std::string& fingerprint, std::string_view blocks)
{
    Fingerprint check;
    check.Add(blocks);
    return std::string(kFormat) + " " + fingerprint + " " + check.Hex() + "\n";
}

std::string ReadAll(const std::filesystem::path& place, const std::string& beginning)
{
    std::ifstream in = OpenInput(place);
    std::string content(beginning.size(), '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    // What is of another run may be anything, of any size.
    if (!in || content != beginning) {
        throw InputError(
            place.string(),
            "this was left by a run with another machine, toolpath, option or version; "
            "repeat that run, or run without --resume");
    }
    std::array<char, 65536> block{};
    while (in.read(block.data(), block.size()) || in.gcount() > 0) {
        content.append(block.data(), static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw InputError(place.string(), "this file cannot be read to its end; try again");
    }
    return content;
}

} // namespace

void SaveCheckpoint(const std::filesystem::path& place, const std::string& fingerprint,
                    const PathPlan& plan)
{
    std::string blocks;
    for (std::size_t i = 0; i < plan.NumAppended(); ++i) {
        blocks += BytesOf(plan.Appended(i));
    }
    OutputFile file(place);
    file.Write(Head(fingerprint, blocks));
    file.Write(blocks);
    file.Finish();
}

void LoadCheckpoint(const std::filesystem::path& place, const std::string& fingerprint,
                    PathPlan& plan)
{
    std::string content = ReadAll(place, std::string(kFormat) + " " + fingerprint);
    const std::size_t end = content.find('\n');
    const std::string head = content.substr(0, end == std::string::npos ? end : end + 1);
    content.erase(0, head.size());
    const std::string expected = Head(fingerprint, content);
    if (head != expected) {
        throw InputError(place.string(),
                         "this file is damaged; take it away and run without --resume");
    }
    ByteReader bytes(content);
    while (!bytes.IsAtEnd() && plan.NumAppended() < plan.NumBlocks()) {
        CandidateBlock block;
        if (!TakeBlock(bytes, block) || !plan.Accepts(block)) {
            throw InputError(place.string(),
                             "this file is damaged; take it away and run without --resume");
        }
        plan.Append(std::move(block));
    }
}

} // namespace host
