// What may be asked from several threads at once. Built with ThreadSanitizer (the preset `tsan`)
// these tests also fail where two threads meet without both only reading.

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "IkMachine.h"

namespace
{

constexpr int kThreads = 8;

/// Runs `ask(thread)` on all threads at once.
template <class Ask>
void FromManyThreads(const Ask& ask)
{
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&ask, &waiting, i] {
            --waiting;
            while (waiting > 0) { // until all are there
                std::this_thread::yield();
            }
            ask(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace

// Named first on purpose: nobody in the process has asked any joint before.
TEST(ConcurrentReads, IsRotaryIsAskedFirst)
{
    constexpr int kRotX = IkJoint::JtPrimRotX;
    std::vector<IkJtRot> joints(9);
    for (int primitive = 0; primitive < 9; ++primitive) {
        joints[static_cast<std::size_t>(primitive)].SetJtPrimitive(
            static_cast<IkJoint::JtPrimitives>(primitive));
    }
    std::vector<int> rotary(kThreads);
    FromManyThreads([&](int thread) {
        for (const IkJtRot& joint : joints) {
            rotary[static_cast<std::size_t>(thread)] += joint.IsRotary() ? 1 : 0;
        }
    });
    // Those from JtPrimRotX on.
    EXPECT_EQ(rotary, std::vector<int>(kThreads, 9 - kRotX));
}

TEST(ConcurrentReads, ChainsStatesAndPoses)
{
    IkJtPrism x;
    IkJtRot c;
    x.SetCurValue(3);
    x.AddChild(&c);
    IkChain chain;
    chain.FillFromBase2Node(&c);
    const IkChain& readChain = chain;
    const IkJtStateVector states = chain.GetJointStates();
    IkEndState pose;
    pose.SetCompleteState(IkXformMat::Translate(1, 2, 3));
    const IkEndState& readPose = pose;
    std::vector<double> sums(kThreads);
    FromManyThreads([&](int thread) {
        double value = 0.0;
        IkJtState state;
        sums[static_cast<std::size_t>(thread)] =
            readChain.GetXformMat()[0][3] + readChain.GetJointStates().Size() +
            (states.FindValFromPtr(&x, value) ? value : 0.0) + states.FindStateByJointPtr(&c) +
            (states.GetStateCopy(0, state) ? state.GetValue() : 0.0) +
            readPose.GetCompleteState().QuickInvert()[2][3] + readPose.GetVector()[1];
    });
    // 3 along x, 2 states, the value 3, index 1, the value 3, -3 along z, 2 along y.
    EXPECT_EQ(sums, std::vector<double>(kThreads, 3 + 2 + 3 + 1 + 3 - 3 + 2));
}
