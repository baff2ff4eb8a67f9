#ifndef TRUNNION_PYTHON_STREAM_H
#define TRUNNION_PYTHON_STREAM_H

#include <memory>
#include <vector>

#include <IkStream.h>

#include "Chain.h"

namespace bindings
{

/// A stream that keeps its chains alive, and takes its part space off them when it goes.
class Stream : public std::enable_shared_from_this<Stream>
{
  public:
    Stream() = default;
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    IkStream& Get() { return stream; }
    void AddChain(const std::shared_ptr<Chain>& chain);
    const std::vector<std::shared_ptr<Chain>>& Chains() const { return chains; }
    void SetHasPartSpaceMatrix(bool has, bool fixed);
    void SetPartSpaceMatrix(const IkXformMat& frame, bool fixed);

  private:
    void FindPartSpace();

    IkStream stream;
    std::vector<std::shared_ptr<Chain>> chains;
    std::vector<std::shared_ptr<IkNode>> lockable; // the library keeps their addresses
    const IkNode* partSpace{nullptr};              // once it has been at the end of a chain
};

} // namespace bindings

#endif
