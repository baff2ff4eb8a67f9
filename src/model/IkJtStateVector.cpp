#include "IkJtState.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "IkChain.h"
#include "geometry/Angles.h"
#include "model/Indexing.h"

using trunnion::Count;
using trunnion::IsInRange;
using trunnion::ToIndex;

template class TNT::Array1D<double>;

namespace
{

constexpr int kColumnBuffer = 16;
using ColumnBuffer = std::array<double, kColumnBuffer>;

bool SpansFullTurn(double low, double high)
{
    return (low == 0.0 || low == -trunnion::kFullTurn) && high == trunnion::kFullTurn;
}

double IntoRange(double x, double low, double high, bool mayWrap)
{
    const bool wraps = mayWrap && SpansFullTurn(low, high);
    if (x > high) {
        return wraps ? std::fmod(x, high) : high;
    }
    if (x < low) {
        return wraps ? high - std::fmod(-x, high) : low;
    }
    return x;
}

/// How a joint's range acts on one state.
struct RangeRule
{
    bool isLimited;
    bool mayWrap;
};

template <class RuleOf>
void ChangeEach(std::vector<IkJtState>& states, int count, const double* deltas, bool add,
                const RuleOf& ruleOf)
{
    if (count != Count(states) || count < 1 || deltas == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < states.size(); ++i) {
        if (std::fabs(deltas[i]) < trunnion::kTinyValue) {
            continue; // also when the state is out of its range already
        }
        IkJtState& state = states[i];
        double x = add ? state.GetValue() + deltas[i] : state.GetValue() - deltas[i];
        if (const IkJoint* joint = state.GetJoint()) {
            const RangeRule rule = ruleOf(*joint);
            if (rule.isLimited) {
                x = IntoRange(x, joint->GetLowBound(), joint->GetHiBound(), rule.mayWrap);
            }
        }
        state.SetValue(x);
    }
}

/// Hands one row or one column on as (count, pointer). A column is staged in `buffer`, which each
/// caller keeps static, unless it is too long for it.
template <class Change>
void ChangeByArray(TNT::Array2D<double>& deltas, ColumnBuffer& buffer, const Change& change)
{
    const int rows = deltas.dim1();
    if (rows == 1) {
        change(deltas.dim2(), deltas.dim2() > 0 ? deltas[0] : nullptr);
    } else if (deltas.dim2() == 1) {
        std::vector<double> longColumn(rows > kColumnBuffer ? ToIndex(rows) : 0);
        double* column = longColumn.empty() ? buffer.data() : longColumn.data();
        for (int i = 0; i < rows; ++i) {
            column[i] = deltas[i][0];
        }
        change(rows, column);
    }
}

/// Room for as many joints as a machine usually has, at once.
template <class T>
void ReserveOneMore(std::vector<T>& list)
{
    constexpr std::size_t kUsual = 8;
    if (list.size() == list.capacity()) {
        list.reserve(std::max(kUsual, 2 * list.size()));
    }
}

double* DataOf(TNT::Array1D<double>& array)
{
    return array.dim() > 0 ? &array[0] : nullptr;
}

/// The column of a transform along which a linear joint moves, 0 to 2, or -1.
int AxisColumn(IkJoint::JtPrimitives primitive)
{
    switch (primitive) {
    case IkJoint::JtPrimTransX:
        return 0;
    case IkJoint::JtPrimTransY:
        return 1;
    case IkJoint::JtPrimTransZ:
        return 2;
    default:
        return -1;
    }
}

template <class Kind>
void IndicesOfKind(const std::vector<IkJtState>& states, std::vector<int>& out)
{
    out.clear();
    for (int i = 0; i < Count(states); ++i) {
        if (dynamic_cast<const Kind*>(states[ToIndex(i)].GetJoint()) != nullptr) {
            out.push_back(i);
        }
    }
}

} // namespace

IkJtStateVector::IkJtStateVector() = default;
IkJtStateVector::IkJtStateVector(const IkJtStateVector& other) = default;
IkJtStateVector& IkJtStateVector::operator=(const IkJtStateVector& other)
{
    // Room for both first: states and look-up change together or not at all.
    states.reserve(other.states.size());
    jointIndex.reserve(other.jointIndex.size());
    states = other.states;
    jointIndex = other.jointIndex;
    return *this;
}
IkJtStateVector::~IkJtStateVector() = default;

double IkJtStateVector::NoStateExist()
{
    return -9999999.0;
}

/// The first entry whose joint is not before `joint`.
std::vector<IkJtStateVector::JointIndex>::const_iterator
IkJtStateVector::FindIndex(const IkJoint* joint) const
{
    return std::lower_bound(jointIndex.begin(), jointIndex.end(), joint,
                            [](const JointIndex& entry, const IkJoint* wanted) {
                                return std::less<>()(entry.first, wanted);
                            });
}

void IkJtStateVector::AddState(const IkJtState& state)
{
    const IkJtState added = state; // NOLINT(performance-*): it may live in this vector
    ReserveOneMore(states);
    ReserveOneMore(jointIndex);
    states.push_back(added);
    const JointIndex last{added.GetJoint(), Count(states) - 1};
    const auto place = jointIndex.begin() + (FindIndex(last.first) - jointIndex.cbegin());
    if (place != jointIndex.end() && place->first == last.first) {
        *place = last;
    } else {
        jointIndex.insert(place, last);
    }
}

void IkJtStateVector::DelState(IkJtState& state)
{
    // Kept on purpose: only the first state is looked at, and the stored indices are not
    // renumbered.
    const IkJoint* joint = state.GetJoint(); // `state` may be the one that is removed
    const auto entry = FindIndex(joint);
    if (entry != jointIndex.end() && entry->first == joint) {
        jointIndex.erase(entry);
    }
    if (!states.empty() && states.front().GetJoint() == joint) {
        states.erase(states.begin());
    }
}

void IkJtStateVector::Reset()
{
    states.clear();
    jointIndex.clear();
}

int IkJtStateVector::Size() const
{
    return Count(states);
}

IkJtState& IkJtStateVector::GetState(int index)
{
    if (IsInRange(index, states)) {
        return states[ToIndex(index)];
    }
    thread_local IkJtState scratch;
    scratch = IkJtState();
    return scratch;
}

bool IkJtStateVector::GetStateCopy(int index, IkJtState& out) const
{
    if (!IsInRange(index, states)) {
        return false;
    }
    out = states[ToIndex(index)];
    return true;
}

int IkJtStateVector::FindStateByJointPtr(const IkJoint* joint) const
{
    const auto entry = FindIndex(joint);
    return entry == jointIndex.end() || entry->first != joint ? -1 : entry->second;
}

bool IkJtStateVector::FindValFromPtr(const IkJoint* joint, double& out) const
{
    // After DelState a stored index may lie behind the end: then there is no value.
    const int index = FindStateByJointPtr(joint);
    if (!IsInRange(index, states)) {
        return false;
    }
    out = states[ToIndex(index)].GetValue();
    return true;
}

int IkJtStateVector::FindStateByUserPtr(const void* data) const
{
    int last = -1;
    for (int i = 0; i < Count(states); ++i) {
        const IkJoint* joint = states[ToIndex(i)].GetJoint();
        if (joint != nullptr && joint->GetUserData() == data) {
            last = i;
        }
    }
    return last;
}

TNT::Array1D<double> IkJtStateVector::GetValArray1D() const
{
    TNT::Array1D<double> values(Size());
    for (int i = 0; i < Size(); ++i) {
        values[i] = states[ToIndex(i)].GetValue();
    }
    return values;
}

std::vector<double> IkJtStateVector::GetValVector() const
{
    std::vector<double> values;
    values.reserve(states.size());
    for (const IkJtState& state : states) {
        values.push_back(state.GetValue());
    }
    return values;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value in the interface
bool IkJtStateVector::SetValVector(std::vector<double> values)
{
    if (values.size() != states.size()) {
        return false;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        states[i].SetValue(values[i]);
    }
    return true;
}

std::vector<std::wstring> IkJtStateVector::GetNameVector() const
{
    std::vector<std::wstring> names;
    names.reserve(states.size());
    for (const IkJtState& state : states) {
        const IkJoint* joint = state.GetJoint();
        names.push_back(joint == nullptr ? std::wstring() : joint->GetName());
    }
    return names;
}

void IkJtStateVector::GetLinearStateIndices(std::vector<int>& out) const
{
    IndicesOfKind<IkJtPrism>(states, out);
}

void IkJtStateVector::GetRotaryStateIndices(std::vector<int>& out) const
{
    IndicesOfKind<IkJtRot>(states, out);
}

void IkJtStateVector::GetOutOfBoundIndices(std::vector<int>& out) const
{
    out.clear();
    for (int i = 0; i < Count(states); ++i) {
        const IkJtState& state = states[ToIndex(i)];
        const IkJoint* joint = state.GetJoint();
        if (joint != nullptr &&
            (state.GetValue() < joint->GetLowBound() || state.GetValue() > joint->GetHiBound())) {
            out.push_back(i);
        }
    }
}

int IkJtStateVector::GetIndexofParallelLinJointState(double* const /*direction*/)
{
    // Kept on purpose: the argument is not read and the direction stays zero, so that no joint is
    // ever parallel to it. The transforms are asked for all the same.
    constexpr std::array<double, 3> direction{};
    std::vector<int> linear;
    GetLinearStateIndices(linear);
    for (const int index : linear) {
        IkJoint* joint = states[ToIndex(index)].GetJoint();
        IkChain baseToJointChain;
        baseToJointChain.FillFromBase2Node(joint);
        const IkXformMat baseToJoint = baseToJointChain.GetXformMat();
        const int column = AxisColumn(joint->GetJtPrimitive());
        if (column < 0) {
            continue;
        }
        double dot = 0.0;
        for (int row = 0; row < 3; ++row) {
            dot += baseToJoint[row][column] * direction.at(ToIndex(row));
        }
        if (std::fabs(std::acos(dot)) < 1e-8) {
            return index;
        }
    }
    return -1;
}

int IkJtStateVector::Compare(IkJtStateVector& other, double linearTol, double rotaryTol) const
{
    if (states.size() != other.states.size()) {
        return 1;
    }
    for (std::size_t i = 0; i < states.size(); ++i) {
        const IkJoint* joint = states[i].GetJoint();
        if (joint != other.states[i].GetJoint()) {
            return 1;
        }
        const double tol = joint != nullptr && joint->IsRotary() ? rotaryTol : linearTol;
        if (std::fabs(states[i].GetValue() - other.states[i].GetValue()) > tol) {
            return 1;
        }
    }
    return 0;
}

bool IkJtStateVector::CommitValuesToJoints()
{
    for (const IkJtState& state : states) {
        if (state.GetJoint() == nullptr) {
            return false;
        }
        state.GetJoint()->SetCurValue(state.GetValue());
    }
    return true;
}

void IkJtStateVector::ChangeValues(int count, double* deltas, IkJoint::JointLimitTypes limitType,
                                   bool add)
{
    ChangeEach(states, count, deltas, add, [limitType](const IkJoint& joint) {
        const bool isRotary = joint.IsRotary();
        const int bit = isRotary ? IkJoint::JtLimitRotary : IkJoint::JtLimitLinear;
        return RangeRule{(limitType & bit) != 0, isRotary};
    });
}

void IkJtStateVector::ChangeValues(int count, double* deltas, bool applyLimits, bool add)
{
    // Kept on purpose: this form wraps linear joints as well.
    ChangeEach(states, count, deltas, add, [applyLimits](const IkJoint& /*joint*/) {
        return RangeRule{applyLimits, true};
    });
}

void IkJtStateVector::AppendValues(TNT::Array1D<double>& deltas, IkJoint::JointLimitTypes limitType)
{
    ChangeValues(deltas.dim(), DataOf(deltas), limitType, true);
}

void IkJtStateVector::AppendValues(TNT::Array1D<double>& deltas, bool applyLimits)
{
    ChangeValues(deltas.dim(), DataOf(deltas), applyLimits, true);
}

void IkJtStateVector::AppendValues(int count, double* deltas, IkJoint::JointLimitTypes limitType)
{
    ChangeValues(count, deltas, limitType, true);
}

void IkJtStateVector::AppendValues(int count, double* deltas, bool applyLimits)
{
    ChangeValues(count, deltas, applyLimits, true);
}

void IkJtStateVector::SubtractValues(TNT::Array1D<double>& deltas,
                                     IkJoint::JointLimitTypes limitType)
{
    ChangeValues(deltas.dim(), DataOf(deltas), limitType, false);
}

void IkJtStateVector::SubtractValues(TNT::Array1D<double>& deltas, bool applyLimits)
{
    ChangeValues(deltas.dim(), DataOf(deltas), applyLimits, false);
}

void IkJtStateVector::SubtractValues(int count, double* deltas, IkJoint::JointLimitTypes limitType)
{
    ChangeValues(count, deltas, limitType, false);
}

void IkJtStateVector::SubtractValues(int count, double* deltas, bool applyLimits)
{
    ChangeValues(count, deltas, applyLimits, false);
}

// Kept on purpose: columns are staged in process-wide buffers, one for each of these four.

void IkJtStateVector::AppendValues(TNT::Array2D<double>& deltas, IkJoint::JointLimitTypes limitType)
{
    static ColumnBuffer buffer;
    ChangeByArray(deltas, buffer, [this, limitType](int count, double* values) {
        ChangeValues(count, values, limitType, true);
    });
}

void IkJtStateVector::AppendValues(TNT::Array2D<double>& deltas, bool applyLimits)
{
    static ColumnBuffer buffer;
    ChangeByArray(deltas, buffer, [this, applyLimits](int count, double* values) {
        ChangeValues(count, values, applyLimits, true);
    });
}

void IkJtStateVector::SubtractValues(TNT::Array2D<double>& deltas,
                                     IkJoint::JointLimitTypes limitType)
{
    static ColumnBuffer buffer;
    ChangeByArray(deltas, buffer, [this, limitType](int count, double* values) {
        ChangeValues(count, values, limitType, false);
    });
}

void IkJtStateVector::SubtractValues(TNT::Array2D<double>& deltas, bool applyLimits)
{
    static ColumnBuffer buffer;
    ChangeByArray(deltas, buffer, [this, applyLimits](int count, double* values) {
        ChangeValues(count, values, applyLimits, false);
    });
}

// The binary forms look joints up in the left operand as it was, the assigning forms in the left
// operand as it changes: a joint that the right one holds twice is appended twice or once.

IkJtStateVector IkJtStateVector::operator+(const IkJtStateVector& other) const
{
    IkJtStateVector merged(*this);
    for (const IkJtState& state : other.states) {
        if (FindStateByJointPtr(state.GetJoint()) < 0) {
            merged.AddState(state);
        }
    }
    return merged;
}

IkJtStateVector IkJtStateVector::operator-(const IkJtStateVector& other) const
{
    IkJtStateVector remaining(*this);
    for (IkJtState state : other.states) {
        if (FindStateByJointPtr(state.GetJoint()) < 0) {
            remaining.DelState(state);
        }
    }
    return remaining;
}

IkJtStateVector& IkJtStateVector::operator+=(const IkJtStateVector& other)
{
    const std::vector<IkJtState> added = other.states; // `other` may be this vector
    // Room for all of them first: they are all appended or none is.
    states.reserve(states.size() + added.size());
    jointIndex.reserve(jointIndex.size() + added.size());
    for (const IkJtState& state : added) {
        if (FindStateByJointPtr(state.GetJoint()) < 0) {
            AddState(state);
        }
    }
    return *this;
}

IkJtStateVector& IkJtStateVector::operator-=(const IkJtStateVector& other)
{
    const std::vector<IkJtState> removed = other.states; // `other` may be this vector
    for (IkJtState state : removed) {
        if (FindStateByJointPtr(state.GetJoint()) < 0) {
            DelState(state);
        }
    }
    return *this;
}

void IkJtStateVector::TraceDump(const wchar_t* /*label*/) const
{
    for (const IkJtState& state : states) {
        state.GetJoint();
    }
}
