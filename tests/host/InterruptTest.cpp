#include <csignal>

#include <gtest/gtest.h>

#include "app/Interrupt.h"

namespace
{

TEST(Interrupt, NotesTheSignalsThatAskForTheEnd)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const host::Interrupt interrupt;
        EXPECT_FALSE(interrupt.IsRequested());
        std::raise(signal);
        EXPECT_TRUE(interrupt.IsRequested());
    }
}

TEST(Interrupt, LeavesASignalOffThatTheCallerHasSwitchedOff)
{
    std::signal(SIGHUP, SIG_IGN);
    {
        const host::Interrupt interrupt;
        std::raise(SIGHUP);
        EXPECT_FALSE(interrupt.IsRequested());
        std::raise(SIGTERM);
        EXPECT_TRUE(interrupt.IsRequested());
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST(Interrupt, GivesTheSignalsBack)
{
    {
        const host::Interrupt interrupt;
    }
    EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL);
}

TEST(Interrupt, IsOneWithThoseThatAreMadeWhileItLives)
{
    int numAsked = 0;
    const host::Interrupt outer([&] { ++numAsked; });
    std::raise(SIGINT);
    {
        const host::Interrupt inner; // forgets nothing
        EXPECT_TRUE(inner.IsRequested());
        EXPECT_EQ(numAsked, 1);
    }
    EXPECT_TRUE(host::Interrupt::IsOneRequested());
    EXPECT_EQ(numAsked, 2);
    EXPECT_TRUE(outer.IsRequested());
    EXPECT_EQ(numAsked, 2); // by itself it calls nobody
    std::raise(SIGTERM);    // ends the program unless the signals are still taken
    const host::Interrupt later;
    EXPECT_TRUE(later.IsRequested());
}

TEST(Interrupt, CanBeRequestedWithoutASignal)
{
    {
        const host::Interrupt interrupt;
        EXPECT_FALSE(host::Interrupt::IsOneRequested());
        host::Interrupt::Request();
        EXPECT_TRUE(interrupt.IsRequested());
        EXPECT_TRUE(host::Interrupt::IsOneRequested());
    }
    EXPECT_FALSE(host::Interrupt::IsOneRequested()); // there is none
    EXPECT_FALSE(host::Interrupt().IsRequested());
}

} // namespace
