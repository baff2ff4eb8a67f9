/// @file
/// The machine: owner of the kinematic tree and of the streams over it.
///
/// - The tree is the description; streams and solver objects are scratch. A solve reads the joints
///   and never writes them: joint values change only when the host commits an answer.
/// - Ownership: the base node with its whole tree, and every stream handed to AddStream, belong to
///   the machine; chains stay the host's. Copies are shallow: let only one of two be destroyed.
/// - Errors: two look-ups throw narrow string pointers, see below.
/// - Threads: one at a time.

#ifndef TRUNNION_IK_MACHINE_H
#define TRUNNION_IK_MACHINE_H

#include <vector>

#include "IkExport.h"
#include "IkNode.h"
#include "IkStream.h"

/// Root object of a host's model. It does no kinematics itself.
class IK_API IkMachine
{
  public:
    IkMachine(); //!< without tree and streams
    ///@{
    /// Both then own the same tree and streams. What an assignment replaces is not destroyed.
    IkMachine(const IkMachine& other);
    IkMachine& operator=(const IkMachine& other);
    ///@}
    virtual ~IkMachine(); //!< as Reset

    /// Takes the tree below `node` over. A previous tree is not destroyed.
    void SetBaseNode(IkNode* node);
    IkNode* GetBaseNode() const; //!< null until one is set

    void AddStream(IkStream* stream); //!< takes the stream over; its id may be anyone's
    void RemoveStream(int id);        //!< destroys the first stream of that id, if any
    int GetNumStreams() const;        //!< entries: a stream that was added twice counts twice
    /// Throws "Failed to find matching stream." (a `const char*`).
    IkStream& GetStreamById(int id);
    /// Throws "Invalid index argument" (a `const char*`).
    IkStream& GetStreamByIndex(int index);
    IkStream* GetStreamPtrById(int id);       //!< null when none matches
    IkStream* GetStreamPtrByIndex(int index); //!< null when out of range

    int Physical2VirtualStreamId(int id) const; //!< id + 1000
    int Virtual2PhysicalStreamId(int id) const; //!< id - 1000

    /// All joints below the base node at their current values, each after the joints below it. The
    /// base node itself is never among them.
    void GetJointStates(IkJtStateVector& out);
    /// Puts `node`, if it is a joint, and every joint below it at its initial value. Null stands
    /// for the base node, which itself then keeps its value.
    void RecurseInitJointValues(IkNode* node);

    /// Destroys the streams, last to first; the tree stays.
    void ClearStreamInfo();
    /// Destroys the tree, then the streams.
    void Reset();

  private:
    void RecurseGetJointStates(IkJtStateVector& out, IkNode* node);

    IkNode* baseNode{nullptr};
    std::vector<IkStream*> streams;
};

#endif
