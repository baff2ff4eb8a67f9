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

} // namespace
