// The handle of one group of an open .moff container.
#pragma once

#include <array>
#include <cstdint>

class SfMoffFile;

class SfMoffGroup {
 public:
  SfMoffGroup(SfMoffFile& owner, std::uint32_t index, std::uint32_t id,
              const std::array<std::uint32_t, 4>& values)
      : m_owner(&owner), m_index(index), m_id(id), m_values(values) {}

  /// Null once the container was closed or destroyed.
  SfMoffFile* GetOwner() const { return m_owner; }
  /// Among the groups of the container, from 0.
  std::uint32_t GetIndex() const { return m_index; }
  std::uint32_t GetId() const { return m_id; }
  const std::array<std::uint32_t, 4>& GetValues() const { return m_values; }

  /// As SfMoffFile::ReadGroupData for this group; null without an owner.
  void* ReadData(std::int64_t& size) const;

 private:
  friend class SfMoffFile;

  SfMoffFile* m_owner;
  std::uint32_t m_index;
  std::uint32_t m_id;
  std::array<std::uint32_t, 4> m_values;
};
