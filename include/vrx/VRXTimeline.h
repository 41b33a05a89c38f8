// The sources of a movie as they cross to the conversion engine. The engine reads these objects in place, so
// the order and width of their fields are an interface; VRXEngine.h checks them for 32-bit builds.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class IVRXRawInputCallback;

/// A rational time or frame length: `value` counts units of 1 / `scale` seconds.
class VRXTimeInfo {
 public:
  VRXTimeInfo() = default;
  VRXTimeInfo(std::uint64_t v, std::uint64_t s) : value(v), scale(s) {}
  VRXTimeInfo(const VRXTimeInfo&) = default;
  VRXTimeInfo& operator=(const VRXTimeInfo&) = default;
  virtual ~VRXTimeInfo() = default;

  alignas(8) std::uint64_t value = 0;
  alignas(8) std::uint64_t scale = 0;
};

/// Owns one NUL-terminated UTF-16 path.
class VRXPathHolder {
 public:
  VRXPathHolder() = default;
  explicit VRXPathHolder(std::u16string_view text) { Set(text); }
  VRXPathHolder(const VRXPathHolder&) = delete;
  VRXPathHolder& operator=(const VRXPathHolder&) = delete;
  ~VRXPathHolder() { delete[] m_text; }

  void Set(std::u16string_view text) {
    auto* copy = new char16_t[text.size() + 1]();
    std::copy(text.begin(), text.end(), copy);
    delete[] m_text;
    m_text = copy;
  }
  std::u16string_view Get() const { return m_text == nullptr ? std::u16string_view() : m_text; }

 private:
  char16_t* m_text = nullptr;
};

/// Kinds of source, as a project document numbers them. 1 to 3 are files.
enum VRXSourceType : std::int32_t {
  VRXSourceFile = 0,
  VRXSourceFileWithGpuBlock = 1,
  VRXSourceBaseband = 4,
};

class VRXSourceStreamInfoBase {
 public:
  virtual ~VRXSourceStreamInfoBase() = default;
  /// A new heap copy of the concrete class, owned by the caller.
  virtual VRXSourceStreamInfoBase* Clone() const = 0;

  alignas(8) std::int32_t sourceType = VRXSourceFile;
  VRXTimeInfo startTime;
  VRXTimeInfo endTime;

 protected:
  VRXSourceStreamInfoBase() = default;
  VRXSourceStreamInfoBase(const VRXSourceStreamInfoBase&) = default;
  VRXSourceStreamInfoBase& operator=(const VRXSourceStreamInfoBase&) = delete;
};

class VRXFileSourceStreamInfo : public VRXSourceStreamInfoBase {
 public:
  explicit VRXFileSourceStreamInfo(std::u16string_view text) : path(new VRXPathHolder(text)) {}
  VRXFileSourceStreamInfo(const VRXFileSourceStreamInfo& other)
      : VRXSourceStreamInfoBase(other), path(new VRXPathHolder(other.path->Get())) {}
  VRXFileSourceStreamInfo& operator=(const VRXFileSourceStreamInfo&) = delete;
  ~VRXFileSourceStreamInfo() override { delete path; }
  VRXFileSourceStreamInfo* Clone() const override { return new VRXFileSourceStreamInfo(*this); }

  VRXPathHolder* path;  // owned
};

/// Still images as video: the engine pulls frames from `rawInput`.
class VRXBasebandSourceStreamInfo : public VRXSourceStreamInfoBase {
 public:
  VRXBasebandSourceStreamInfo() { sourceType = VRXSourceBaseband; }
  VRXBasebandSourceStreamInfo(const VRXBasebandSourceStreamInfo& other)
      : VRXSourceStreamInfoBase(other),
        rawInput(other.rawInput),
        reserved68(other.reserved68),
        reserved72(other.reserved72),
        reserved104(other.reserved104),
        reserved108(other.reserved108) {}
  VRXBasebandSourceStreamInfo& operator=(const VRXBasebandSourceStreamInfo&) = delete;
  VRXBasebandSourceStreamInfo* Clone() const override { return new VRXBasebandSourceStreamInfo(*this); }

  IVRXRawInputCallback* rawInput = nullptr;  // not owned
  std::uint32_t reserved68 = 0;
  std::uint32_t reserved72 = 0;
  VRXTimeInfo reservedTime;  // a copy always has zeros here
  std::uint32_t reserved104 = 0;
  std::uint32_t reserved108 = 0;
};

/// The clips of one track in order of play.
class VRXSourceStreamInfoArray {
 public:
  VRXSourceStreamInfoArray() = default;
  VRXSourceStreamInfoArray(const VRXSourceStreamInfoArray&) = delete;
  VRXSourceStreamInfoArray& operator=(const VRXSourceStreamInfoArray&) = delete;
  virtual ~VRXSourceStreamInfoArray() { Clear(); }

  /// Adds a clone of `source`.
  void Add(const VRXSourceStreamInfoBase& source) {
    std::unique_ptr<VRXSourceStreamInfoBase> copy(source.Clone());
    if (capacity < count + 1) Grow();
    items[count++] = copy.release();
  }
  void Clear() {
    for (std::uint32_t i = 0; i < count; ++i) delete items[i];
    delete[] items;
    items = nullptr;
    capacity = count = 0;
  }

  VRXSourceStreamInfoBase** items = nullptr;  // owned, and so are the elements
  std::uint32_t capacity = 0;
  std::uint32_t count = 0;

 private:
  static constexpr std::uint32_t kGrowth = 5;  // fixed by the engine's interface

  void Grow() {
    auto** grown = new VRXSourceStreamInfoBase*[capacity + kGrowth]();
    std::copy_n(items, count, grown);
    delete[] items;
    items = grown;
    capacity += kGrowth;
  }
};

class VRXTimeline {
 public:
  VRXTimeline() = default;
  VRXTimeline(const VRXTimeline&) = delete;
  VRXTimeline& operator=(const VRXTimeline&) = delete;
  virtual ~VRXTimeline() = default;

  VRXSourceStreamInfoArray video;
  VRXSourceStreamInfoArray audio;
};
