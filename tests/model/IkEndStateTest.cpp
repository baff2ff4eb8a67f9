#include "IkEndState.h"

#include <array>
#include <limits>
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include "geometry/Matrices.h"
#include "support/Bits.h"

namespace
{

using test::BitsOf;
using test::ElementsOf;
using test::Numbered;
using Values = std::vector<double>;
using Filter = std::array<bool, 4>;

constexpr double kEpsilon = 2.220446049250313e-16;

Filter FilterOf(const IkEndState& state)
{
    Filter filter{};
    state.GetFilter(filter.data());
    return filter;
}

IkEndState StateOf(const IkXformMat& pose, Filter filter = {false, false, true, true})
{
    IkEndState state;
    state.SetCompleteState(pose);
    state.SetFilter(filter.data());
    return state;
}

Values ValuesOf(const TNT::Array1D<double>& array)
{
    return array.dim() == 0 ? Values() : Values(&array[0], &array[0] + array.dim());
}

/// The entries of a one-column array.
Values ValuesOf(const TNT::Array2D<double>& column)
{
    Values values;
    for (int i = 0; i < column.dim1(); ++i) {
        values.push_back(column[i][0]);
    }
    return values;
}

std::vector<Filter> AllFilters()
{
    std::vector<Filter> filters;
    for (unsigned bits = 0; bits < 16; ++bits) {
        filters.push_back({(bits & 1U) != 0, (bits & 2U) != 0, (bits & 4U) != 0, (bits & 8U) != 0});
    }
    return filters;
}

/// Columns 3, 0, 1, 2 of the pose in rows 0 to 2, as far as they are enabled.
Values ExpectedVector(const IkXformMat& pose, const Filter& filter)
{
    Values values;
    for (const int column : {3, 0, 1, 2}) {
        for (int row = 0; row < 3 && filter.at(static_cast<std::size_t>(column)); ++row) {
            values.push_back(pose[row][column]);
        }
    }
    return values;
}

TEST(EndState, StartsAtTheIdentityWithPositionAndToolAxis)
{
    static_assert(std::has_virtual_destructor_v<IkEndState>);
    const IkEndState state;
    EXPECT_EQ(FilterOf(state), (Filter{false, false, true, true}));
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(IkXformMat()));
    EXPECT_EQ(state.VectSize(), 6);
    EXPECT_EQ(ValuesOf(state.GetVector()), (Values{0, 0, 0, 0, 0, 1}));
}

TEST(EndState, CopiesFilterAndPose)
{
    const Filter filter{true, false, true, false};
    const IkEndState state = StateOf(Numbered(4, 4), filter);
    const IkEndState copy(state);
    IkEndState assigned;
    EXPECT_EQ(&(assigned = state), &assigned);
    for (const IkEndState* each : {&copy, &static_cast<const IkEndState&>(assigned)}) {
        EXPECT_EQ(FilterOf(*each), filter);
        EXPECT_EQ(BitsOf(each->GetCompleteState()), BitsOf(Numbered(4, 4)));
    }
    const IkEndState& same = assigned;
    assigned = same;
    EXPECT_EQ(BitsOf(assigned.GetCompleteState()), BitsOf(Numbered(4, 4)));
}

TEST(EndState, SettersOfPoseAndFilterLeaveEachOtherAlone)
{
    Filter filter{true, true, false, false};
    IkEndState state;
    state.SetFilter(filter.data());
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(IkXformMat()));
    state.SetCompleteState(Numbered(4, 4));
    EXPECT_EQ(FilterOf(state), filter);
    state.Reset();
    EXPECT_EQ(FilterOf(state), filter);
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(IkXformMat()));

    IkEndState other = StateOf(Numbered(4, 4));
    other.CopyFilter(state);
    EXPECT_EQ(FilterOf(other), filter);
    EXPECT_EQ(BitsOf(other.GetCompleteState()), BitsOf(Numbered(4, 4)));
}

TEST(EndState, IgnoresMissingFilterArrays)
{
    IkEndState state = StateOf(IkXformMat(), {true, false, true, false});
    state.SetFilter(nullptr);
    state.GetFilter(nullptr);
    EXPECT_EQ(FilterOf(state), (Filter{true, false, true, false}));
}

TEST(EndState, TakesAPoseOfAnotherShapeByItsStoredElements)
{
    IkEndState state = StateOf(IkXformMat(Numbered(3, 3)));
    EXPECT_EQ(ElementsOf(state.GetCompleteState()),
              (Values{1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 1, 0, 0, 0, 0, 1}));
}

// Column by column, the pose of 1 to 16 reads 1 5 9, 2 6 10, 3 7 11 and, the position, 4 8 12.
TEST(EndState, VectorListsPositionThenXThenYThenZ)
{
    EXPECT_EQ(ValuesOf(StateOf(Numbered(4, 4), {true, true, true, true}).GetVector()),
              (Values{4, 8, 12, 1, 5, 9, 2, 6, 10, 3, 7, 11}));
    EXPECT_EQ(ValuesOf(StateOf(Numbered(4, 4)).GetVector()), (Values{4, 8, 12, 3, 7, 11}));
}

TEST(EndState, VectorSkipsDisabledComponents)
{
    for (const Filter& filter : AllFilters()) {
        const IkEndState state = StateOf(Numbered(4, 4), filter);
        const Values expected = ExpectedVector(Numbered(4, 4), filter);
        EXPECT_EQ(state.VectSize(), static_cast<int>(expected.size()));
        EXPECT_EQ(ValuesOf(state.GetVector()), expected);
        const TNT::Array2D<double> column = state.GetVector2D();
        EXPECT_EQ(column.dim1(), state.VectSize());
        EXPECT_EQ(column.dim2(), 1);
        EXPECT_EQ(ValuesOf(column), expected);
    }
}

TEST(EndState, VectorKeepsSignedZerosAndIsACopy)
{
    const IkEndState state = StateOf(IkXformMat::Translate(-0.0, 0, 1));
    TNT::Array1D<double> vector = state.GetVector();
    EXPECT_EQ(BitsOf(vector[0]), BitsOf(-0.0));
    vector[2] = 99;
    EXPECT_EQ(state.GetCompleteState()[2][3], 1);
}

TEST(EndState, SetVectorFillsTheEnabledColumnsOfTheIdentity)
{
    const Values numbers{10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    for (const Filter& filter : AllFilters()) {
        IkEndState fromPointer = StateOf(Numbered(4, 4), filter);
        IkEndState fromArray = fromPointer;
        const int count = fromPointer.VectSize();
        Values values(numbers.begin(), numbers.begin() + count);
        TNT::Array1D<double> array(count, values.data());

        IkXformMat expected;
        std::size_t next = 0;
        for (const int column : {3, 0, 1, 2}) {
            for (int row = 0; row < 3 && filter.at(static_cast<std::size_t>(column)); ++row) {
                expected[row][column] = numbers.at(next++);
            }
        }
        EXPECT_TRUE(fromPointer.SetVector(count, values.data()));
        EXPECT_TRUE(fromArray.SetVector(array));
        EXPECT_EQ(BitsOf(fromPointer.GetCompleteState()), BitsOf(expected));
        EXPECT_EQ(BitsOf(fromArray.GetCompleteState()), BitsOf(expected));
        EXPECT_EQ(FilterOf(fromPointer), filter);
    }
}

TEST(EndState, SetVectorSnapsTinyValuesToZero)
{
    IkEndState state = StateOf(Numbered(4, 4));
    Values values{10, 20, 30, 0, 1e-17, 1};
    EXPECT_TRUE(state.SetVector(6, values.data()));
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(IkXformMat::Translate(10, 20, 30)));

    const double above = std::nextafter(kEpsilon, 1);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::pair<double, double>> cases{
        {kEpsilon, 0.0},  {-kEpsilon, 0.0}, {above, above},
        {-above, -above}, {-0.0, 0.0},      {nan, 0.0},
    };
    for (const auto& [value, stored] : cases) {
        values.assign(6, value);
        EXPECT_TRUE(state.SetVector(6, values.data()));
        for (int row = 0; row < 3; ++row) {
            EXPECT_EQ(BitsOf(state.GetCompleteState()[row][3]), BitsOf(stored)) << value;
            EXPECT_EQ(BitsOf(state.GetCompleteState()[row][2]), BitsOf(stored)) << value;
        }
    }
}

TEST(EndState, SetVectorDoesNotNormalise)
{
    IkEndState state = StateOf(IkXformMat(), {true, true, false, false});
    Values values{3, 0, 0, 3, 0, 0}; // both axes, parallel and long
    EXPECT_TRUE(state.SetVector(6, values.data()));
    EXPECT_EQ(ElementsOf(state.GetCompleteState()),
              (Values{3, 3, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
}

TEST(EndState, SetVectorRefusesAWrongCountAndKeepsThePose)
{
    for (const int count : {-1, 0, 3, 5, 7, 12, 16, 17, 100}) {
        IkEndState state = StateOf(Numbered(4, 4));
        Values values(128, 5.0);
        EXPECT_FALSE(state.SetVector(count, values.data())) << count;
        if (count >= 0) {
            TNT::Array1D<double> array(count, values.data()); // longer than 16 as well
            EXPECT_FALSE(state.SetVector(array)) << count;
        }
        EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(Numbered(4, 4))) << count;
    }
    IkEndState state = StateOf(Numbered(4, 4));
    EXPECT_FALSE(state.SetVector(6, nullptr));
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(Numbered(4, 4)));
}

TEST(EndState, WithoutFlagsHasNoVectorAndSetsTheIdentity)
{
    IkEndState state = StateOf(Numbered(4, 4), {false, false, false, false});
    EXPECT_EQ(state.VectSize(), 0);
    EXPECT_EQ(state.GetVector().dim(), 0);
    EXPECT_EQ(state.GetVector2D().dim1(), 0);
    EXPECT_EQ(state.Diff(state).dim(), 0);
    EXPECT_TRUE(state.SetVector(0, nullptr));
    EXPECT_EQ(BitsOf(state.GetCompleteState()), BitsOf(IkXformMat()));
}

TEST(EndState, DiffIsThisMinusTheOther)
{
    const IkEndState ahead = StateOf(IkXformMat::Translate(1, 0, 0));
    const IkEndState behind;
    EXPECT_EQ(ValuesOf(ahead.Diff(behind)), (Values{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ValuesOf(behind.Diff(ahead)), (Values{-1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ValuesOf(ahead.Diff2D(behind)), (Values{1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(ahead.Diff2D(behind).dim2(), 1);
}

TEST(EndState, DiffSubtractsEnabledAxesAsVectors)
{
    test::Random random(8);
    for (const Filter& filter : AllFilters()) {
        const IkXformMat a = test::RandomRigid(random);
        const IkXformMat b = test::RandomRigid(random);
        const Values ofA = ExpectedVector(a, filter);
        const Values ofB = ExpectedVector(b, filter);
        Values expected;
        for (std::size_t i = 0; i < ofA.size(); ++i) {
            expected.push_back(ofA[i] - ofB[i]);
        }
        EXPECT_EQ(ValuesOf(StateOf(a, filter).Diff(StateOf(b, filter))), expected);
        EXPECT_EQ(ValuesOf(StateOf(a, filter).Diff2D(StateOf(b, filter))), expected);
    }
}

std::wstring ThrownByDiff(const IkEndState& a, const IkEndState& b)
{
    try {
        a.Diff(b);
    } catch (const wchar_t* text) {
        return text;
    }
    return L"";
}

TEST(EndState, DiffThrowsAWideStringExactlyWhereTheFiltersDiffer)
{
    for (const Filter& a : AllFilters()) {
        for (const Filter& b : AllFilters()) {
            EXPECT_EQ(ThrownByDiff(StateOf(IkXformMat(), a), StateOf(IkXformMat(), b)),
                      a == b ? L"" : L"Filters of rhs and lhs must match.");
        }
    }
}

TEST(EndState, Diff2DDoesNotCheckTheFilters)
{
    const IkEndState state = StateOf(Numbered(4, 4));
    const IkEndState wider = StateOf(Numbered(4, 4), {true, false, true, true});
    for (const TNT::Array2D<double>& empty : {state.Diff2D(wider), wider.Diff2D(state)}) {
        EXPECT_EQ(empty.dim1(), 0);
        EXPECT_EQ(empty.dim2(), 0);
    }
    // Filters of the same size: position minus position, Z axis (3 7 11) minus X axis (1 5 9).
    const IkEndState xAxis = StateOf(Numbered(4, 4), {true, false, false, true});
    EXPECT_EQ(ValuesOf(state.Diff2D(xAxis)), (Values{0, 0, 0, 2, 2, 2}));
}

std::string Printed(const IkEndState& state)
{
    std::ostringstream os;
    EXPECT_EQ(&(state << os), &os);
    EXPECT_EQ(os.precision(), 15);
    return os.str();
}

TEST(EndState, PrintsItsVectorAtPrecisionFifteen)
{
    EXPECT_EQ(Printed(IkEndState()), "0, 0, 0, 0, 0, 1, ");
    EXPECT_EQ(Printed(StateOf(IkXformMat::Translate(1.0 / 3, -2.5e-20, 123456789012345678.0))),
              "0.333333333333333, -2.5e-20, 1.23456789012346e+17, 0, 0, 1, ");
    EXPECT_EQ(Printed(StateOf(Numbered(4, 4), {false, true, false, false})), "2, 6, 10, ");
    EXPECT_EQ(Printed(StateOf(Numbered(4, 4), {false, false, false, false})), "");
}

} // namespace
