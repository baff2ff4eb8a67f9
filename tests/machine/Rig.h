#ifndef TRUNNION_TESTS_MACHINE_RIG_H
#define TRUNNION_TESTS_MACHINE_RIG_H

#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "IkStream.h"

// Small streams made for one test, and node classes such as a host may define.
namespace test
{

using Values = std::vector<double>;

/// Axes x, y, z and position.
using Filter = std::array<bool, 4>;
constexpr Filter kPositionOnly{false, false, false, true};
constexpr Filter kPositionAndZ{false, false, true, true};
constexpr Filter kEverything{true, true, true, true};
constexpr Filter kNothing{false, false, false, false};

constexpr double kWide = 1000; // bounds that no test reaches [length]
constexpr double kQuarterTurn = 1.5707963267948966;

inline IkEndState EndState(const IkXformMat& pose, Filter filter = kPositionAndZ)
{
    IkEndState state;
    state.SetCompleteState(pose);
    state.SetFilter(filter.data());
    return state;
}

inline TNT::Array2D<double> MatrixOf(const std::vector<Values>& rows)
{
    const auto width = rows.empty() ? 0 : rows.front().size();
    TNT::Array2D<double> matrix(static_cast<int>(rows.size()), static_cast<int>(width));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < width; ++j) {
            matrix[static_cast<int>(i)][j] = rows[i][j];
        }
    }
    return matrix;
}

inline TNT::Array2D<double> Diagonal(const Values& entries)
{
    const int size = static_cast<int>(entries.size());
    TNT::Array2D<double> matrix(size, size, 0.0);
    for (int i = 0; i < size; ++i) {
        matrix[i][i] = entries[static_cast<std::size_t>(i)];
    }
    return matrix;
}

inline Values ColumnOf(const TNT::Array2D<double>& matrix, int column = 0)
{
    Values entries;
    for (int i = 0; i < matrix.dim1(); ++i) {
        entries.push_back(matrix[i][column]);
    }
    return entries;
}

inline Values PositionOf(const IkXformMat& m)
{
    return {m[0][3], m[1][3], m[2][3]};
}

inline Values ElementsOf(const IkXformMat& m)
{
    Values elements;
    for (int i = 0; i < m.num_rows(); ++i) {
        elements.insert(elements.end(), m[i], m[i] + m.num_cols());
    }
    return elements;
}

inline void ExpectNear(const Values& actual, const Values& expected, double tolerance)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "entry " << i;
    }
}

inline void ExpectNear(const IkXformMat& actual, const IkXformMat& expected, double tolerance)
{
    ExpectNear(ElementsOf(actual), ElementsOf(expected), tolerance);
}

/// A body that counts how often forward kinematics asks it.
class CountingBody : public IkBody
{
  public:
    using IkBody::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        ++count;
        return IkBody::GetXformMat(states);
    }

    int count{0};
};

/// A joint that remembers the values forward kinematics asked it for.
template <class Kind>
class Recording : public Kind
{
  public:
    using Kind::GetXformMat;
    IkXformMat GetXformMat(double* value) override
    {
        asked.push_back(value != nullptr ? *value : this->GetCurValue());
        return Kind::GetXformMat(value);
    }

    Values asked; // [length] or [rad]
};

/// A joint whose transform is any function of its value. Counts as linear.
class FunctionJoint : public IkJoint
{
  public:
    explicit FunctionJoint(std::function<IkXformMat(double)> ofValue) : function(std::move(ofValue))
    {
        SetBounds(-kWide, kWide);
    }
    using IkJoint::GetXformMat;
    IkXformMat GetXformMat(double* value) override
    {
        return function(value != nullptr ? *value : GetCurValue());
    }

  private:
    std::function<IkXformMat(double)> function;
};

/// A node that says it is a joint but is none: the state made of it has no joint.
class FalseJoint : public IkBody
{
  public:
    bool IsJoint() const override { return true; }
};

/// A stream whose two chains hold nodes of the rig's own, outside any tree.
struct Rig
{
    IkChain tool;
    IkChain part;
    IkStream stream;
    std::vector<std::unique_ptr<IkNode>> nodes;

    template <class Node, class... Args>
    Node& Add(IkChain& chain, Args&&... args)
    {
        auto node = std::make_unique<Node>(std::forward<Args>(args)...);
        Node& added = *node;
        chain.AddNode(&added);
        nodes.push_back(std::move(node));
        return added;
    }

    IkBody& Body(IkChain& chain, const IkXformMat& frame)
    {
        auto& body = Add<IkBody>(chain);
        body.SetOrigFrame(frame);
        return body;
    }

    template <class Prism = IkJtPrism>
    Prism& Linear(IkChain& chain, IkJoint::JtPrimitives primitive)
    {
        auto& joint = Add<Prism>(chain);
        joint.SetJtPrimitive(primitive);
        joint.SetBounds(-kWide, kWide);
        return joint;
    }

    template <class Rot = IkJtRot>
    Rot& Rotary(IkChain& chain, IkJoint::JtPrimitives primitive)
    {
        auto& joint = Add<Rot>(chain);
        joint.SetJtPrimitive(primitive);
        return joint;
    }

    void Connect()
    {
        stream.AddChain(&tool);
        stream.AddChain(&part);
    }
};

} // namespace test

#endif
