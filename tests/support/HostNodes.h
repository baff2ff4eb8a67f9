#ifndef TRUNNION_TESTS_SUPPORT_HOST_NODES_H
#define TRUNNION_TESTS_SUPPORT_HOST_NODES_H

#include <cstdint>
#include <vector>

#include "IkJtState.h"
#include "support/Bits.h"

// Node classes such as a host may define, which note what they are asked.
namespace test
{

/// Every question that nodes of a host's classes were asked, in order: whose, of which kind, and
/// with what values.
using CallLog = std::vector<std::uint64_t>;

/// What all of these classes have beside their place in the tree.
class HostNode
{
  public:
    virtual ~HostNode() = default;
    virtual void Begin() {}   //!< looks at its leader before anything is asked
    virtual void Restart() {} //!< forgets what it has been asked so far
    virtual bool ChangesStates() const { return false; }

    std::uint64_t id{0};
    CallLog* log{nullptr};
    IkJoint* leader{nullptr}; //!< another joint, for those that depend on one

  protected:
    void NoteStates(IkJtStateVector& states) const
    {
        log->push_back(2 * id);
        for (int i = 0; i < states.Size(); ++i) {
            log->push_back(NumberBits(states.GetState(i).GetValue()));
        }
    }
    void NoteValue(const double* value) const
    {
        log->push_back(2 * id + 1);
        log->push_back(value == nullptr ? 0 : NumberBits(*value));
    }
};

/// Overrides nothing.
template <class Base>
class Renamed : public Base, public HostNode
{};

/// Is asked with all states, and answers as its base does.
template <class Base>
class AskedByStates : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        return Base::GetXformMat(states);
    }
};

/// Is asked with its own value, which it spoils afterwards: it was given one to work with.
template <class Base>
class AskedByValue : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(double* value) override
    {
        NoteValue(value);
        const IkXformMat transform = Base::GetXformMat(value);
        if (value != nullptr) {
            *value = 12345;
        }
        return transform;
    }
};

/// Both.
template <class Base>
class AskedEitherWay : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        return Base::GetXformMat(states);
    }
    IkXformMat GetXformMat(double* value) override
    {
        NoteValue(value);
        return Base::GetXformMat(value);
    }
};

/// Moves along x by half of what its leader does.
template <class Base>
class Follower : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        double value = 0.0;
        if (leader != nullptr && !states.FindValFromPtr(leader, value)) {
            value = leader->GetCurValue();
        }
        IkXformMat transform = Base::GetXformMat(states);
        transform.TranslateThis(0.5 * value, 0, 0);
        return transform;
    }
};

/// Sets its leader's value among the states that it is handed.
template <class Base>
class Setter : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        const int index = states.FindStateByJointPtr(leader);
        if (index >= 0 && index < states.Size()) {
            IkJtState& state = states.GetState(index);
            state.SetValue(0.5 * state.GetValue() + 0.125);
        }
        return Base::GetXformMat(states);
    }
    bool ChangesStates() const override { return true; }
};

/// Is somewhere else each time that it is asked, and says so in its original frame.
template <class Base>
class Drifting : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        ++asked;
        this->SetOrigFrame(IkXformMat::Translate(0, 0, asked * 0x1p-10));
        return Base::GetXformMat(states);
    }
    void Restart() override { asked = 0; }

  private:
    int asked{0};
};

/// Changes what its leader is like each time that it is asked.
template <class Base>
class Meddler : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        if (leader != nullptr) {
            const double change = ++asked * 0x1p-10;
            switch (asked % 3) {
            case 0:
                leader->SetInitialValue(initialValue + change);
                break;
            case 1:
                leader->SetBounds(low, high - change);
                break;
            default:
                leader->SetOrigFrame(IkXformMat::Translate(change, 0, 0));
                break;
            }
        }
        return Base::GetXformMat(states);
    }
    void Begin() override
    {
        if (leader != nullptr) {
            initialValue = leader->GetInitialValue();
            low = leader->GetLowBound();
            high = leader->GetHiBound();
            frame = leader->GetOrigFrame();
        }
    }
    void Restart() override
    {
        if (leader != nullptr) {
            leader->SetInitialValue(initialValue);
            leader->SetBounds(low, high);
            leader->SetOrigFrame(frame);
        }
        asked = 0;
    }

  private:
    int asked{0};
    double initialValue{0.0};
    double low{0.0};
    double high{0.0};
    IkXformMat frame;
};

/// Answers with a matrix that is no 4x4 transform.
template <class Base>
class Misshapen : public Base, public HostNode
{
  public:
    using Base::GetXformMat;
    IkXformMat GetXformMat(IkJtStateVector& states) override
    {
        NoteStates(states);
        return Answer();
    }
    IkXformMat GetXformMat(double* value) override
    {
        NoteValue(value);
        return Answer();
    }

  private:
    IkXformMat Answer() const
    {
        const int rows = 2 + static_cast<int>(id % 4);
        const int columns = 2 + static_cast<int>(id / 4 % 4);
        TNT::Matrix<double> matrix(rows, columns, 0.25);
        for (int i = 0; i < rows && i < columns; ++i) {
            matrix[i][i] = 1.0;
        }
        return matrix;
    }
};

/// A joint that no stream takes for one, or a body that every stream takes for one.
template <class Base>
class Disguised : public Base, public HostNode
{
  public:
    bool IsJoint() const override { return !Base::IsJoint(); }
};

} // namespace test

#endif
