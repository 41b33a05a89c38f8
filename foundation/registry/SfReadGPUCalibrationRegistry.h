// Results of a calibration of the graphics hardware, from the settings. For hosts that choose codecs by them.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/registry/XpRegistry.h"

/// Each getter returns true when the value was found; otherwise the output is unchanged.
class SfReadGPUCalibrationRegistry {
 public:
  /// Reads from this key; null is a key that could not be opened.
  explicit SfReadGPUCalibrationRegistry(std::unique_ptr<XpRegistry> key) : m_key(std::move(key)) {}
  SfReadGPUCalibrationRegistry(const SfReadGPUCalibrationRegistry&) = delete;
  SfReadGPUCalibrationRegistry& operator=(const SfReadGPUCalibrationRegistry&) = delete;
  virtual ~SfReadGPUCalibrationRegistry() = default;

  virtual bool IsOpen() const;
  virtual bool GetDXVA2CanDShowPlayback(std::uint32_t& value) const;
  virtual bool GetHardwareAssistSJVTD(std::uint32_t& value) const;
  virtual bool GetHardwareAssistSTPD(std::uint32_t& value) const;
  virtual bool GetHardwareAssistEditingEnginePreview(std::uint32_t& value) const;
  virtual bool GetHardwareAssistTransCodec(std::uint32_t& value) const;
  virtual bool GetHardwareAssistTransCodecHighSpeed(std::uint32_t& value) const;
  /// The two halves of one stored value.
  virtual bool GetTransBitrateLow(std::uint32_t& value) const;
  virtual bool GetTransBitrateHigh(std::uint32_t& value) const;
  /// These come from the machine's settings and say whether the stored value is 1; false when there is no
  /// such key, and `disabled` is false when the key lacks the value.
  virtual bool GetDisableNVIDIAEncode(bool& disabled) const;
  virtual bool GetDisableOPENCLEncode(bool& disabled) const;
  virtual bool GetDisableIntelGPUEncode(bool& disabled) const;
  virtual bool ReadValue(const XpString& name, std::uint32_t& value) const;

 private:
  std::unique_ptr<XpRegistry> m_key;
};
