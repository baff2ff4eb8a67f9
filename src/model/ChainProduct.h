#ifndef TRUNNION_MODEL_CHAIN_PRODUCT_H
#define TRUNNION_MODEL_CHAIN_PRODUCT_H

#include <array>
#include <vector>

#include "IkChain.h"
#include "geometry/Affine.h"

namespace trunnion
{

/// A chain made ready to be evaluated for many vectors of joint values: what IkChain::GetXformMat
/// gives, to the last bit, without asking the nodes again.
///
/// The product runs from the base, so what stands before a joint that moves is kept, and so is each
/// node's own transform until its joint moves. Nothing may change in the chain's nodes meanwhile.
class ChainProduct
{
  public:
    ChainProduct() = default;
    ChainProduct(const ChainProduct&) = delete;
    ChainProduct& operator=(const ChainProduct&) = delete;
    ChainProduct(ChainProduct&&) = delete;
    ChainProduct& operator=(ChainProduct&&) = delete;
    ~ChainProduct() = default;

    /// Reads the nodes, and where `states` holds their joints. False where only the nodes
    /// themselves can tell their transforms, being of a host's own class, and where a frame's
    /// bottom row is not 0 0 0 1.
    bool Settle(const IkChain& chain, const IkJtStateVector& states);

    /// base_to_tip for the values in `states`. Good as long as every element is finite.
    const double* Evaluate(IkJtStateVector& states);

    /// Whether a joint of the chain takes its value from the state at `index`.
    bool Moves(int index) const;

    /// Whether that joint only slides, so that nothing turns when it moves.
    bool Slides(int index) const;

    /// base_to_tip where only the state at `index` has another value since the last evaluation,
    /// which stays as it is.
    void EvaluateMoved(int index, double value, Affine& baseToTip) const;
    /// The same where that joint slides: the offset, since the rotation stays.
    void EvaluateSlid(int index, double value, double* offset) const;

  private:
    enum class Motion { None, SlideX, SlideY, SlideZ, TurnX, TurnY, TurnZ };

    struct Link
    {
        const double* original; // of the node, parent to joint
        const double* local;    // parent to node: `original` or `placed`
        Motion motion;
        bool turns; // its rotation is not the identity
        bool isReversed;
        int stateIndex; // or -1
        double value;
        double initialValue;
        Affine placed;
        Affine baseToNode;
        double lever[3]; // local offset in the axes of the base
    };

    bool Add(const IkNode& node, const IkJtStateVector& states);
    void AddFixed(const double* original);
    void AddJoint(const IkJoint& joint, Motion motion, const IkJtStateVector& states);
    Link& NewLink();
    static void Place(const Link& link, double value, Affine& placed);
    static bool IsSlide(const Link& link);
    static void Append(const double* baseToParent, const Link& link, const double* local,
                       double* baseToNode, double* lever);
    int FirstLink(int index) const;
    int FindFirstLink(int index) const;
    const double* BaseTo(int link) const; // -1: the base itself

    static constexpr int kOwn = 32;
    static constexpr int kUsualStates = 16;
    int firstLinks[kUsualStates]; // by state index, of as many states as there are
                                  // NOLINT(*-member-init)
    int count{0};
    bool isEvaluated{false};
    Link* links{own};
    Link own[kOwn]; // NOLINT(*-member-init): scratch
    std::vector<Link> more;
};

} // namespace trunnion

#endif
