#include <gtest/gtest.h>

#include "post/BlockFeed.h"

namespace
{

using host::BlockTravel;
using host::Dialect;
using host::Feed;
using host::FeedMode;
using host::FeedPer;

constexpr Feed k300{300.0, FeedPer::Minute};
constexpr Feed kPerTurn{0.2, FeedPer::Revolution};

Dialect DialectWith(FeedMode mode)
{
    Dialect dialect;
    dialect.feed.mode = mode;
    dialect.feed.largest = 50000.0;
    dialect.feed.rotaryRate_deg = 3600.0;
    return dialect;
}

Dialect TcpDialect()
{
    Dialect dialect = DialectWith(FeedMode::PerMinute);
    dialect.tcp.emplace();
    return dialect;
}

/// What the words say is what the axes do.
BlockTravel Travel(double tip, double linear, double turn_deg)
{
    return {tip, linear, turn_deg, linear, turn_deg, 1e-4, 1e-4};
}

double ValueOf(const Feed& feed, const BlockTravel& travel, const Dialect& dialect)
{
    return host::FeedOf(feed, travel, dialect).value().value;
}

TEST(InverseTime, IsTheFeedOverTheWayOfTheToolsEnd)
{
    const Dialect dialect = DialectWith(FeedMode::InverseTime);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(50, 50, 0), dialect), 6.0);
    // 2 mm at 300 mm/min, however far the axes go for it; 6 degrees take a fourth of that.
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(2, 9, 6), dialect), 150.0);
}

TEST(InverseTime, IsWhatTheRotaryRateAllowsWhereTheEndHardlyMoves)
{
    const Dialect dialect = DialectWith(FeedMode::InverseTime);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(0, 0, 90), dialect), 40.0);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(2, 9, 90), dialect), 40.0); // not 150
}

TEST(InverseTime, TakesTheWayOfTheLinearAxesWhereTheyMoveUnderAnEndAtRest)
{
    const Dialect dialect = DialectWith(FeedMode::InverseTime);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(0, 60, 0), dialect), 5.0);
}

TEST(InverseTime, IsNeverMoreThanTheLargest)
{
    const Dialect dialect = DialectWith(FeedMode::InverseTime);
    EXPECT_EQ(ValueOf(k300, Travel(0.001, 0.001, 0), dialect), 50000.0); // not 300000
    BlockTravel nothing; // only rounding moves a word
    nothing.wordsLinear = 1e-4;
    EXPECT_EQ(ValueOf(k300, nothing, dialect), 50000.0);
}

TEST(FeedPerMinute, IsTheProgrammedOneWhileNoRotaryAxisTurns)
{
    const Dialect dialect = DialectWith(FeedMode::PerMinute);
    BlockTravel travel = Travel(0.1, 0.1, 0);
    travel.wordsLinear = 0.10005; // the words are rounded, F need not be
    EXPECT_EQ(ValueOf(k300, travel, dialect), 300.0);
    travel.turn_deg = 1e-9; // and the last digit of a rotary word flips
    travel.wordsTurn_deg = 1e-4;
    EXPECT_EQ(ValueOf(k300, travel, dialect), 300.0);
}

TEST(FeedPerMinute, FollowsLinearAxesThatAreNotSquare)
{
    // The axes' words go 1.25 times as far as the tool's end.
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(4, 5, 0), DialectWith(FeedMode::PerMinute)), 375.0);
}

TEST(FeedPerMinute, IsTheWayOfTheLinearWordsOverTheTimeOfTheToolsEnd)
{
    const Dialect dialect = DialectWith(FeedMode::PerMinute);
    // 2 mm at 300 mm/min are 1/150 min, for 9 mm.
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(2, 9, 6), dialect), 1350.0);
    // 90 degrees at 3600 take 1/40 min.
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(2, 9, 90), dialect), 360.0);
}

TEST(FeedPerMinute, IsInDegreesWhereOnlyRotaryWordsChange)
{
    const Dialect dialect = DialectWith(FeedMode::PerMinute);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(20, 0, 90), dialect), 1350.0); // in 1/15 min
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(0, 0, 90), dialect), 3600.0);
    // Two axes by 30 and 40 degrees: together 50, in the 1/90 min of the one that turns farther.
    EXPECT_DOUBLE_EQ(ValueOf(k300, {0, 0, 40, 0, 50, 1e-4, 1e-4}, dialect), 4500.0);
}

TEST(FeedPerMinute, IsTheProgrammedOneUnderTcpWhereverTheEndMoves)
{
    EXPECT_EQ(ValueOf(k300, Travel(2, 2, 0), TcpDialect()), 300.0);
    EXPECT_EQ(ValueOf(k300, Travel(2, 2, 90), TcpDialect()), 300.0);
    EXPECT_EQ(ValueOf(k300, {1.9, 40, 90, 2, 90, 1e-4, 1e-4}, TcpDialect()), 300.0);
    EXPECT_DOUBLE_EQ(ValueOf(k300, Travel(0, 0, 90), TcpDialect()), 3600.0);
}

TEST(FeedPerMinute, IsNeverMoreThanTheLargest)
{
    const Feed fast{60000.0, FeedPer::Minute};
    EXPECT_EQ(ValueOf(fast, Travel(2, 2, 0), TcpDialect()), 50000.0);
    EXPECT_EQ(ValueOf(fast, Travel(2, 2, 0), DialectWith(FeedMode::PerMinute)), 50000.0);
}

TEST(FeedPerRevolution, IsTheProgrammedOneWhereTheControlTakesItForThat)
{
    for (const FeedMode mode : {FeedMode::InverseTime, FeedMode::PerMinute}) {
        const auto feed = host::FeedOf(kPerTurn, Travel(50, 50, 0), DialectWith(mode));
        ASSERT_TRUE(feed.has_value());
        EXPECT_EQ(feed->per, FeedPer::Revolution);
        EXPECT_EQ(feed->value, 0.2);
    }
    const auto feed = host::FeedOf(kPerTurn, Travel(50, 50, 90), TcpDialect());
    ASSERT_TRUE(feed.has_value());
    EXPECT_EQ(feed->per, FeedPer::Revolution);
    EXPECT_EQ(feed->value, 0.2);
}

TEST(FeedPerRevolution, IsPerMinuteWhereTheToolsEndRests)
{
    const auto turn = host::FeedOf(kPerTurn, Travel(0, 0, 90), DialectWith(FeedMode::PerMinute));
    ASSERT_TRUE(turn.has_value());
    EXPECT_EQ(turn->per, FeedPer::Minute);
    EXPECT_DOUBLE_EQ(turn->value, 3600.0);
    const auto inverse =
        host::FeedOf(kPerTurn, Travel(0, 0, 90), DialectWith(FeedMode::InverseTime));
    EXPECT_EQ(inverse->per, FeedPer::Minute);
    EXPECT_DOUBLE_EQ(inverse->value, 40.0);
}

TEST(FeedPerRevolution, HasNoFeedWhileAxesOfBothKindsMove)
{
    for (const FeedMode mode : {FeedMode::InverseTime, FeedMode::PerMinute}) {
        EXPECT_FALSE(host::FeedOf(kPerTurn, Travel(50, 50, 90), DialectWith(mode)).has_value());
    }
}

} // namespace
