#ifndef TRUNNION_HOST_TEXT_BYTES_H
#define TRUNNION_HOST_TEXT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace host
{

/// Values as bytes in this machine's own representation, for readers on machines of its kind.
class ByteWriter
{
  public:
    /// Makes room for so many bytes more, which are then put without moving the others.
    void Reserve(std::size_t more) { bytes.reserve(bytes.size() + more); }

    const std::string& Bytes() const { return bytes; }
    std::string Take() { return std::move(bytes); }

    template <class Value>
    void Put(const Value& value)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }
    template <class Value>
    void PutAll(const std::vector<Value>& values)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        Put(static_cast<std::uint64_t>(values.size()));
        if (!values.empty()) {
            bytes.append(reinterpret_cast<const char*>(values.data()),
                         values.size() * sizeof(Value));
        }
    }
    void PutText(std::string_view text)
    {
        Put(static_cast<std::uint64_t>(text.size()));
        bytes.append(text);
    }
    /// Without its length: what is read last.
    void PutRest(std::string_view text) { bytes.append(text); }

  private:
    std::string bytes;
};

/// Reads what a ByteWriter wrote. Each call answers false, and reads nothing, where the bytes are
/// at their end.
class ByteReader
{
  public:
    explicit ByteReader(std::string_view from) : bytes(from) {}

    bool IsAtEnd() const { return next == bytes.size(); }
    /// What has not been read yet.
    std::string_view Rest() const { return bytes.substr(next); }

    template <class Value>
    bool Take(Value& value)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        if (bytes.size() - next < sizeof(value)) {
            return false;
        }
        std::memcpy(&value, bytes.data() + next, sizeof(value));
        next += sizeof(value);
        return true;
    }
    template <class Value>
    bool TakeAll(std::vector<Value>& values)
    {
        static_assert(std::is_trivially_copyable_v<Value>);
        std::uint64_t size = 0;
        if (!Take(size) || size > (bytes.size() - next) / sizeof(Value)) {
            return false;
        }
        values.resize(size);
        if (size > 0) {
            std::memcpy(values.data(), bytes.data() + next, size * sizeof(Value));
            next += size * sizeof(Value);
        }
        return true;
    }
    /// As many items as a number before them says, each by `takeItem`.
    template <class Item, class TakeItem>
    bool TakeEach(std::vector<Item>& items, TakeItem takeItem)
    {
        std::uint64_t count = 0;
        if (!Take(count)) {
            return false;
        }
        for (std::uint64_t i = 0; i < count; ++i) {
            if (!takeItem(*this, items.emplace_back())) {
                return false;
            }
        }
        return true;
    }
    bool TakeText(std::string& text)
    {
        std::uint64_t size = 0;
        if (!Take(size) || size > bytes.size() - next) {
            return false;
        }
        text = bytes.substr(next, size);
        next += size;
        return true;
    }

  private:
    std::string_view bytes;
    std::size_t next{0};
};

} // namespace host

#endif
