#include "fuzz/StateVectorModel.h"

#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "plain/Comparison.h"

namespace test
{

namespace
{

/// A state vector and what it has to be.
class Modelled
{
  public:
    void Add(IkJoint* joint, double value)
    {
        states.AddState(IkJtState(joint, value));
        AddToModel(joint, value);
    }

    /// The joint's state, whether there is one or not.
    void Delete(IkJoint* joint)
    {
        IkJtState state(joint, 0.0);
        states.DelState(state);
        DeleteFromModel(joint);
    }

    void Reset()
    {
        states.Reset();
        entries.clear();
        places.clear();
    }

    /// Those of `other` whose joints are not found: those that are found stay as they are.
    void Merge(const Modelled& other, bool inPlace)
    {
        const std::map<const IkJoint*, int> before = places;
        if (inPlace) {
            states += other.states;
        } else {
            states = states + other.states;
        }
        const auto added = other.entries; // which may be this one's
        for (const auto& [joint, value] : added) {
            if ((inPlace ? places : before).count(joint) == 0) {
                AddToModel(joint, value);
            }
        }
    }

    void Subtract(const Modelled& other, bool inPlace)
    {
        const std::map<const IkJoint*, int> before = places;
        if (inPlace) {
            states -= other.states;
        } else {
            states = states - other.states;
        }
        const auto removed = other.entries;
        for (const auto& [joint, value] : removed) {
            if ((inPlace ? places : before).count(joint) == 0) {
                DeleteFromModel(joint);
            }
        }
    }

    void SetValues(const std::vector<double>& values)
    {
        EXPECT_EQ(states.SetValVector(values), values.size() == entries.size());
        for (std::size_t i = 0; values.size() == entries.size() && i < values.size(); ++i) {
            entries[i].second = values[i];
        }
    }

    void Check() const
    {
        const int size = static_cast<int>(entries.size());
        ASSERT_EQ(states.Size(), size);
        Words expected;
        for (const auto& [joint, value] : entries) {
            const auto found = places.find(joint);
            PushState(expected, joint, value, found == places.end() ? -1 : found->second);
            CheckValue(joint, found == places.end() ? -1 : found->second);
        }
        EXPECT_EQ(StatesOf(states), expected);
        IkJtState out;
        EXPECT_FALSE(states.GetStateCopy(-1, out));
        EXPECT_FALSE(states.GetStateCopy(size, out));
        IkJtStateVector copy(states);
        EXPECT_EQ(copy.GetState(size).GetJoint(), nullptr);
        EXPECT_EQ(copy.GetState(-1).GetJoint(), nullptr);
        IkJtStateVector assigned;
        assigned = copy;
        EXPECT_EQ(StatesOf(assigned), expected);
        EXPECT_EQ(states.GetNameVector().size(), entries.size());
    }

    /// Everything that reads: it has to stay within the vector.
    void Read(Modelled& other, Random& random)
    {
        std::vector<int> indices;
        states.GetLinearStateIndices(indices);
        states.GetRotaryStateIndices(indices);
        states.GetOutOfBoundIndices(indices);
        for (const int index : indices) {
            EXPECT_TRUE(index >= 0 && index < states.Size());
        }
        const int different = states.Compare(other.states, random.Between(0, 1), 1e-3);
        EXPECT_TRUE(different == 0 || different == 1);
        EXPECT_EQ(states.GetValArray1D().dim(), states.Size());
        states.TraceDump(L"states");
    }

  private:
    void AddToModel(IkJoint* joint, double value)
    {
        places[joint] = static_cast<int>(entries.size());
        entries.emplace_back(joint, value);
    }

    void DeleteFromModel(IkJoint* joint)
    {
        places.erase(joint);
        if (!entries.empty() && entries.front().first == joint) {
            entries.erase(entries.begin());
        }
    }

    void CheckValue(const IkJoint* joint, int place) const
    {
        double value = 12345.0;
        const bool isThere = place >= 0 && place < static_cast<int>(entries.size());
        EXPECT_EQ(states.FindValFromPtr(joint, value), isThere);
        if (isThere) {
            EXPECT_EQ(NumberBits(value),
                      NumberBits(entries[static_cast<std::size_t>(place)].second));
        }
    }

    IkJtStateVector states;
    std::vector<std::pair<IkJoint*, double>> entries;
    std::map<const IkJoint*, int> places;
};

} // namespace

void CheckStateVectors(const UnusualMachine& machine, Random& random)
{
    Modelled first;
    Modelled second;
    const auto joint = [&]() -> IkJoint* {
        const auto count = static_cast<int>(machine.joints.size());
        const int chosen = random.Below(count + 1);
        return chosen == count ? nullptr : machine.joints[static_cast<std::size_t>(chosen)];
    };
    for (int left = random.Below(24); left > 0; --left) {
        Modelled& changed = random.OneIn(3) ? second : first;
        Modelled& other = random.OneIn(8) ? changed : (&changed == &first ? second : first);
        switch (random.Below(8)) {
        case 0:
            changed.Delete(joint());
            break;
        case 1:
            changed.Merge(other, random.OneIn(2));
            break;
        case 2:
            changed.Subtract(other, random.OneIn(2));
            break;
        case 3:
            changed.SetValues(std::vector<double>(static_cast<std::size_t>(random.Below(6)),
                                                  UnusualNumber(random.Between(-3, 3), random)));
            break;
        case 4:
            changed.Read(other, random);
            break;
        case 5:
            if (random.OneIn(6)) {
                changed.Reset();
            }
            break;
        default:
            changed.Add(joint(), UnusualNumber(random.Between(-3, 3), random));
            break;
        }
        first.Check();
        second.Check();
    }
}

} // namespace test
