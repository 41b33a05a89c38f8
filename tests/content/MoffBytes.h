// Builds the bytes of .moff containers without the code under test.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vrx::test_support {

template <class Number>
std::string Le(Number number) {
  std::string bytes;
  for (std::size_t i = 0; i < sizeof(Number); ++i) {
    bytes += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * i) & 0xFF);
  }
  return bytes;
}
inline std::string U32(std::uint32_t number) { return Le(number); }
inline std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

struct MoffSource {
  std::string name = "clip.mts";  // ASCII
  std::int64_t size = 4;
  std::int64_t created = 0;
  std::int64_t written = 0;
};
struct MoffEntry {
  std::string kind = "BINA";
  std::string data;
};
struct MoffGroup {
  std::uint32_t id = 7;
  std::vector<MoffEntry> entries;
  std::vector<std::uint32_t> values{1, 2, 3, 4};
};

/// A record of `size` bytes whose own size field says so: cut, or with 0xEE where nothing is known.
inline std::string Resized(std::string record, std::size_t size) {
  record.resize(size, '\xEE');
  return size < 8 ? record : record.replace(4, 4, U32(static_cast<std::uint32_t>(size)));
}

inline std::string HeaderBytes(const MoffSource& source) {
  std::string name;
  for (const char c : source.name) name += {c, '\0'};
  return "MOFF" + U32(824) + U32(0x00020000) + Zeros(8) + name + Zeros(520 - name.size()) + Zeros(4) +
         Le(source.created) + Le(source.written) + Le(source.size) + Zeros(256);
}
inline std::string TableBytes(std::string_view signature, std::uint32_t count) {
  return std::string(signature) + U32(16) + U32(count) + Zeros(4);
}

/// The whole container, as it has to be written.
inline std::string MoffBytes(const MoffSource& source, const std::vector<MoffGroup>& groups) {
  std::size_t total = 824 + 16;
  for (const MoffGroup& group : groups) total += 28 + 16 + 16 * group.entries.size();
  std::string bytes = HeaderBytes(source) + TableBytes("GRUP", static_cast<std::uint32_t>(groups.size()));
  const auto toBodies = static_cast<std::uint32_t>(total - 840);
  for (const MoffGroup& group : groups) {
    bytes += U32(group.id) + Zeros(4) + U32(toBodies);
    for (const std::uint32_t value : group.values) bytes += U32(value);
  }
  std::string bodies;
  for (const MoffGroup& group : groups) {
    const std::size_t indexStart = bytes.size();
    bytes += TableBytes("INDX", static_cast<std::uint32_t>(group.entries.size()));
    for (const MoffEntry& entry : group.entries) {
      bytes += U32(static_cast<std::uint32_t>(total - indexStart + bodies.size())) + Zeros(12);
      bodies += entry.kind + U32(static_cast<std::uint32_t>(entry.data.size() + 8)) + entry.data;
    }
  }
  return bytes + bodies;
}

}  // namespace vrx::test_support
