#ifndef TRUNNION_HOST_TEXT_CAPPED_TEXT_H
#define TRUNNION_HOST_TEXT_CAPPED_TEXT_H

#include <cstddef>
#include <streambuf>
#include <string>

namespace host
{

/// Where a stream's text is kept, whole lines of it up to a bound; further ones are counted.
class CappedText final : public std::streambuf
{
  public:
    explicit CappedText(std::size_t mostBytes) : most(mostBytes) {}

    const std::string& Text() const { return text; }
    std::size_t LinesLeftOut() const { return leftOut; }

  protected:
    std::streamsize xsputn(const char* from, std::streamsize count) override;
    int_type overflow(int_type c) override;

  private:
    void Add(char c);

    std::size_t most;
    std::string text;
    bool isFull{false};
    std::size_t leftOut{0};
};

} // namespace host

#endif
