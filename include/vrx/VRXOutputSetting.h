// Everything about the movie to write, as it crosses to the conversion engine. The order and width of the
// fields are an interface; VRXEngine.h checks them for 32-bit builds.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "vrx/VRXTimeline.h"

class IVRXIntermediateRawOutputCallback;

class VRXVideoOutputSetting {
 public:
  virtual ~VRXVideoOutputSetting() = default;

  alignas(8) std::int32_t codecType = 0;  // 0 or 1
  std::int32_t specificationType = 0;     // 0, 1, 3, 4, 6, 7, 8, 9
  std::int32_t width = 0;                 // pixels
  std::int32_t height = 0;                // pixels
  VRXTimeInfo frameDuration;              // length of one frame
  std::int32_t averageBitrate = 0;        // bits per second
  bool interlace = false;
  std::int32_t avcEncoderMode = 0;  // 0, 1 or 2
  bool forceRerendering = false;
};

class VRXAudioOutputSetting {
 public:
  virtual ~VRXAudioOutputSetting() = default;

  std::int32_t codecType = 0;  // 0 to 3
  std::uint16_t channels = 0;
  std::uint16_t bitsPerSample = 0;  // of PCM; 0 or 65535 when not set
  std::uint32_t samplingRate = 0;   // Hz
};

/// Frames from `startTime` to `endTime`, both included and in output time, go through the overlay callback,
/// which gets `stage` and `format` back.
class VRXIntermediateRawOutputSetting {
 public:
  virtual ~VRXIntermediateRawOutputSetting() = default;

  VRXTimeInfo startTime;
  VRXTimeInfo endTime;
  std::int32_t stage = 2;
  std::int32_t format = 5;
};

/// One metadata item of the output file.
class VRXMetaData {
 public:
  static constexpr std::uint32_t kTimeZone = 11;                  // value of `kind`
  static constexpr std::uint16_t kUndeterminedLanguage = 0x55C4;  // "und" packed as in ISO 14496-12

  VRXMetaData() = default;
  VRXMetaData(const VRXMetaData& other)
      : kind(other.kind), flag(other.flag), language(other.language), extra(other.extra) {
    SetData(other.data, other.size);
  }
  VRXMetaData& operator=(const VRXMetaData&) = delete;
  virtual ~VRXMetaData() { delete[] data; }

  void SetData(const std::uint8_t* bytes, std::uint32_t count) {
    auto* copy = new std::uint8_t[count];
    std::copy_n(bytes, count, copy);
    delete[] data;
    data = copy;
    size = count;
  }

  std::uint32_t kind = 0;
  std::uint8_t flag = 0;
  std::uint16_t language = 0;
  std::uint16_t extra = 0;
  std::uint8_t* data = nullptr;  // owned
  std::uint32_t size = 0;        // bytes
};

class VRXMetaDataSetting {
 public:
  VRXMetaDataSetting() = default;
  VRXMetaDataSetting(const VRXMetaDataSetting& other) {
    for (std::uint32_t i = 0; i < other.count; ++i) Add(*other.items[i]);
  }
  VRXMetaDataSetting& operator=(const VRXMetaDataSetting&) = delete;
  virtual ~VRXMetaDataSetting() {
    for (std::uint32_t i = 0; i < count; ++i) delete items[i];
    delete[] items;
  }

  /// Adds a deep copy of `item`.
  void Add(const VRXMetaData& item) {
    auto copy = std::make_unique<VRXMetaData>(item);
    if (capacity < count + 1) {
      auto** grown = new VRXMetaData*[capacity + kGrowth]();
      std::copy_n(items, count, grown);
      delete[] items;
      items = grown;
      capacity += kGrowth;
    }
    items[count++] = copy.release();
  }

  std::uint32_t capacity = 0;
  std::uint32_t count = 0;
  VRXMetaData** items = nullptr;  // owned, and so are the elements

 private:
  static constexpr std::uint32_t kGrowth = 5;  // fixed by the engine's interface
};

/// Kind of movie file.
enum VRXSystemType : std::int32_t {
  VRXSystemMp4 = 1,
  VRXSystemMp4Broadcast = 2,
  VRXSystemByExtension = 3,
};

class VRXSystemOutputSetting {
 public:
  VRXSystemOutputSetting() = default;
  VRXSystemOutputSetting(const VRXSystemOutputSetting&) = delete;
  VRXSystemOutputSetting& operator=(const VRXSystemOutputSetting&) = delete;
  virtual ~VRXSystemOutputSetting() {
    delete outputFilePath;
    delete video;
    delete audio;
    for (std::uint32_t i = 0; i < rawRangeCount; ++i) delete rawRanges[i];
    delete[] rawRanges;
    delete metaData;
  }

  /// Adds a copy of `range`. The array keeps one slot free, so it grows earlier than the others.
  void AddRange(const VRXIntermediateRawOutputSetting& range) {
    auto copy = std::make_unique<VRXIntermediateRawOutputSetting>(range);
    if (rawRangeCapacity <= rawRangeCount + 1) {
      auto** grown = new VRXIntermediateRawOutputSetting*[rawRangeCapacity + kRangeGrowth]();
      std::copy_n(rawRanges, rawRangeCount, grown);
      delete[] rawRanges;
      rawRanges = grown;
      rawRangeCapacity += kRangeGrowth;
    }
    rawRanges[rawRangeCount++] = copy.release();
  }

  std::int32_t systemType = 0;
  VRXPathHolder* outputFilePath = nullptr;                 // owned
  VRXVideoOutputSetting* video = nullptr;                  // owned
  VRXAudioOutputSetting* audio = nullptr;                  // owned; null for a silent movie
  VRXMetaDataSetting* metaData = nullptr;                  // owned; may be null
  IVRXIntermediateRawOutputCallback* rawOutput = nullptr;  // not owned; null without overlays
  std::uint32_t rawRangeCount = 0;
  std::uint32_t rawRangeCapacity = 0;
  VRXIntermediateRawOutputSetting** rawRanges = nullptr;  // owned, and so are the elements

 private:
  static constexpr std::uint32_t kRangeGrowth = 3;  // fixed by the engine's interface
};
