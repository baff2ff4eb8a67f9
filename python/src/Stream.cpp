#include "Stream.h"

#include "Serial.h"

namespace bindings
{

Stream::~Stream()
{
    if (partSpace != nullptr) {
        const Serial alone; // another stream may be at work on the same chain
        for (const std::shared_ptr<Chain>& chain : chains) {
            chain->Remove(*partSpace);
        }
        ForgetNode(*partSpace);
    }
}

void Stream::AddChain(const std::shared_ptr<Chain>& chain)
{
    for (int i = 0; i < chain->Get().Size(); ++i) {
        lockable.push_back(TreeHandleOf(chain->Get().GetAt(i)));
    }
    chains.push_back(chain);
    stream.AddChain(&chain->Get());
}

void Stream::SetHasPartSpaceMatrix(bool has, bool fixed)
{
    stream.SetHasPartSpaceMatrix(has, fixed);
    FindPartSpace();
}

void Stream::SetPartSpaceMatrix(const IkXformMat& frame, bool fixed)
{
    stream.SetPartSpaceMatrix(frame, fixed);
    FindPartSpace();
}

/// The library has put it at the end of the part chain, or none is wanted.
void Stream::FindPartSpace()
{
    if (!stream.GetHasPartSpaceMatrix() || chains.size() < 2) {
        return;
    }
    const IkChain& part = chains[1]->Get();
    IkNode* const tip = part.GetAt(part.Size() - 1);
    partSpace = tip;
    RegisterPartSpace(*tip, weak_from_this());
}

} // namespace bindings
