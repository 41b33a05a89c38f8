// Builds stored tags byte by byte, without the code under test.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vrx::test_support {

/// Numbers in one byte order, and the entries of IFDs.
struct TagBytes {
  bool bigEndian = false;

  std::string U16(std::uint32_t value) const { return Number(value, 2); }
  std::string U32(std::uint32_t value) const { return Number(value, 4); }
  std::string Header(std::uint32_t ifd = 8) const { return (bigEndian ? "MM" : "II") + U16(42) + U32(ifd); }
  std::string Entry(std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t field) const {
    return Entry(tag, type, count, U32(field));
  }
  std::string Entry(std::uint32_t tag, std::uint32_t type, std::uint32_t count,
                    const std::string& field) const {
    return U16(tag) + U16(type) + U32(count) + field;
  }
  std::string Ifd(const std::vector<std::string>& entries, std::uint32_t next = 0) const {
    std::string bytes = U16(static_cast<std::uint32_t>(entries.size()));
    for (const std::string& entry : entries) bytes += entry;
    return bytes + U32(next);
  }

 private:
  std::string Number(std::uint32_t value, int size) const {
    std::string bytes;
    for (int i = 0; i < size; ++i) {
      bytes += static_cast<char>(value >> (8 * (bigEndian ? size - 1 - i : i)) & 0xFF);
    }
    return bytes;
  }
};

}  // namespace vrx::test_support
