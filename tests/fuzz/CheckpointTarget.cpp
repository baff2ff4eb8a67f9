// A checkpoint: any bytes as the file, any bytes behind a head that fits them, or the file of a run
// that was interrupted, damaged behind such a head.

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "PlanRig.h"
#include "TempFolder.h"
#include "fuzz/Targets.h"
#include "mutated/Mutation.h"
#include "planner/Checkpoint.h"
#include "text/Fingerprint.h"
#include "text/InputError.h"

namespace test
{

namespace
{

constexpr const char* kRun = "0123456789abcdef";

/// A swinging head, and a path over which it swings.
PlanRig SwingingHead()
{
    PathText path;
    for (int i = 0; i < 6; ++i) {
        path.To({20, 0.1 * i, 0}, Leaning(4 * i, 0), i == 0 ? kRapid : kCut);
    }
    return {WholeMill(LinearText("X", "base", "[1, 0, 0]") + LinearText("Y", "X", "[0, 1, 0]") +
                          LinearText("Z", "Y", "[0, 0, 1]") +
                          RotaryText("B", "Z", "[0, 1, 0]", "[0, 0, 200]", "limits = [-90, 90]"),
                      MountText("tool", "B", "[0, 0, 0]") + MountText("part", "base", "[0, 0, 0]")),
            path.Path()};
}

std::string Forged(const std::string& blocks)
{
    host::Fingerprint check;
    check.Add(blocks);
    return std::string("trunnion checkpoint 1 ") + kRun + " " + check.Hex() + "\n" + blocks;
}

std::string SavedBlocks(const PlanRig& rig, const TempFolder& folder)
{
    host::PathPlan plan(rig.Request());
    plan.Append(plan.FindBlock(0));
    host::SaveCheckpoint(folder.Path() / "saved", kRun, plan);
    const std::string content = ContentOf(folder.Path() / "saved");
    return content.substr(content.find('\n') + 1);
}

std::string ContentFrom(const std::uint8_t* bytes, std::size_t size, const std::string& blocks)
{
    const unsigned kind = size == 0 ? 0U : bytes[0] & 3U;
    const std::string rest(bytes + (size == 0 ? 0 : 1), bytes + size);
    if (kind == 0) {
        return rest;
    }
    if (kind == 1) {
        return Forged(rest);
    }
    Random random(bytes, size);
    return Forged(Mutated({blocks}, random));
}

} // namespace

void FuzzCheckpoint(const std::uint8_t* bytes, std::size_t size)
{
    static const TempFolder folder;
    static const PlanRig rig = SwingingHead();
    static const std::string blocks = SavedBlocks(rig, folder);
    const std::string content = ContentFrom(bytes, size, blocks);
    const std::filesystem::path place = folder.Write("resume", content);
    host::PathPlan plan(rig.Request());
    try {
        host::LoadCheckpoint(place, kRun, plan);
    } catch (const host::InputError& error) {
        EXPECT_EQ(plan.NumAppended(), 0U);
        EXPECT_NE(std::string(error.what()).find("run without --resume"), std::string::npos);
        return;
    }
    while (plan.NumAppended() < plan.NumBlocks()) {
        plan.Append(plan.FindBlock(plan.NumAppended()));
    }
    const Motion motion = rig.Build(plan);
    EXPECT_EQ(motion.PointRows().size(), rig.path.points.size());
    for (const host::MotionRow& row : motion.rows) {
        for (const double value : row.joints) {
            EXPECT_TRUE(std::isfinite(value));
        }
    }
}

} // namespace test
