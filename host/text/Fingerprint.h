#ifndef TRUNNION_HOST_TEXT_FINGERPRINT_H
#define TRUNNION_HOST_TEXT_FINGERPRINT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace host
{

/// Tells contents apart (FNV-1a, 64 bits): not proof against anyone who wants them to look alike.
class Fingerprint
{
  public:
    /// Takes a piece of content; pieces count apart from one another.
    void Add(std::string_view piece);
    /// Sixteen digits, 0 to f.
    std::string Hex() const;
    std::uint64_t Value() const { return value; }

  private:
    void AddByte(unsigned char byte);

    std::uint64_t value{0xCBF29CE484222325ULL};
};

} // namespace host

#endif
