#include "planner/Checkpoint.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <utility>

#include "text/Fingerprint.h"
#include "text/InputError.h"
#include "text/InputFile.h"
#include "text/OutputFile.h"

namespace host
{

namespace
{

constexpr std::string_view kFormat = "trunnion checkpoint 1";

/// One block as bytes, in this machine's own representation: a checkpoint is read where it was
/// written.
class BlockBytes
{
  public:
    BlockBytes() = default;
    explicit BlockBytes(std::string ofFile) : bytes(std::move(ofFile)) {}

    const std::string& Bytes() const { return bytes; }
    bool IsAtEnd() const { return next == bytes.size(); }

    template <class Value>
    void Put(const Value& value)
    {
        bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }
    template <class Value>
    void PutAll(const std::vector<Value>& values)
    {
        Put(static_cast<std::uint64_t>(values.size()));
        for (const Value& value : values) {
            Put(value);
        }
    }

    /// False, and nothing read, where the bytes are at their end.
    template <class Value>
    bool Take(Value& value)
    {
        if (bytes.size() - next < sizeof(value)) {
            return false;
        }
        std::memcpy(&value, bytes.data() + next, sizeof(value));
        next += sizeof(value);
        return true;
    }
    template <class Value>
    bool TakeAll(std::vector<Value>& values)
    {
        std::uint64_t size = 0;
        if (!Take(size) || size > (bytes.size() - next) / sizeof(Value)) {
            return false;
        }
        values.resize(size);
        for (Value& value : values) {
            Take(value);
        }
        return true;
    }

  private:
    std::string bytes;
    std::size_t next{0};
};

std::string Packed(const CandidateBlock& block)
{
    BlockBytes bytes;
    bytes.Put(static_cast<std::uint64_t>(block.firstPoint));
    bytes.PutAll(block.ends);
    bytes.PutAll(block.joints);
    bytes.PutAll(block.branches);
    bytes.PutAll(block.parents);
    bytes.Put(static_cast<std::uint64_t>(block.exits.size()));
    for (const JointValues& exit : block.exits) {
        bytes.PutAll(exit);
    }
    return bytes.Bytes();
}

bool Unpack(BlockBytes& bytes, CandidateBlock& block)
{
    std::uint64_t firstPoint = 0;
    std::uint64_t exits = 0;
    if (!bytes.Take(firstPoint) || !bytes.TakeAll(block.ends) || !bytes.TakeAll(block.joints) ||
        !bytes.TakeAll(block.branches) || !bytes.TakeAll(block.parents) || !bytes.Take(exits)) {
        return false;
    }
    block.firstPoint = firstPoint;
    for (std::uint64_t i = 0; i < exits; ++i) {
        block.exits.emplace_back();
        if (!bytes.TakeAll(block.exits.back())) {
            return false;
        }
    }
    return true;
}

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
        blocks += Packed(plan.Appended(i));
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
    BlockBytes bytes(std::move(content));
    while (!bytes.IsAtEnd() && plan.NumAppended() < plan.NumBlocks()) {
        CandidateBlock block;
        if (!Unpack(bytes, block) || !plan.Accepts(block)) {
            throw InputError(place.string(),
                             "this file is damaged; take it away and run without --resume");
        }
        plan.Append(std::move(block));
    }
}

} // namespace host
