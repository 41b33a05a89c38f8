#include "foundation/registry/SfReadGPUCalibrationRegistry.h"

#include "foundation/registry/SfRegistry.h"
#include "foundation/text/XpPath.h"

namespace {

constexpr char16_t kBitrate[] = u"HardwareAssistType_TransBitrate";
constexpr std::uint32_t kHalfBits = 16;
constexpr std::uint32_t kHalfMask = 0xFFFF;

bool IsDisabled(const char16_t* name, bool& disabled) {
  const auto key = XpRegistryOpen(XpPathJoin(SfSectionVersionPath(u"SGPUCLB"), u"SharedInfo"),
                                  XpRegistryLocalMachine, XpRegistryRead);
  if (!key) return false;
  disabled = key->GetDword(name, 0) == 1;
  return true;
}

}  // namespace

bool SfReadGPUCalibrationRegistry::IsOpen() const { return m_key != nullptr; }

bool SfReadGPUCalibrationRegistry::GetDXVA2CanDShowPlayback(std::uint32_t& value) const {
  return ReadValue(u"DXVA2CAPABILITY_CanDShowPlayback", value);
}

bool SfReadGPUCalibrationRegistry::GetHardwareAssistSJVTD(std::uint32_t& value) const {
  return ReadValue(u"HardwareAssistType_SJVTD", value);
}

bool SfReadGPUCalibrationRegistry::GetHardwareAssistSTPD(std::uint32_t& value) const {
  return ReadValue(u"HardwareAssistType_STPD", value);
}

bool SfReadGPUCalibrationRegistry::GetHardwareAssistEditingEnginePreview(std::uint32_t& value) const {
  return ReadValue(u"HardwareAssistType_EditingEngine_Preview", value);
}

bool SfReadGPUCalibrationRegistry::GetHardwareAssistTransCodec(std::uint32_t& value) const {
  return ReadValue(u"HardwareAssistType_TransCodec", value);
}

bool SfReadGPUCalibrationRegistry::GetHardwareAssistTransCodecHighSpeed(std::uint32_t& value) const {
  return ReadValue(u"HardwareAssistType_TransCodec_HighSpeed", value);
}

bool SfReadGPUCalibrationRegistry::GetTransBitrateLow(std::uint32_t& value) const {
  std::uint32_t both = 0;
  const bool found = ReadValue(kBitrate, both);
  if (found) value = both & kHalfMask;
  return found;
}

bool SfReadGPUCalibrationRegistry::GetTransBitrateHigh(std::uint32_t& value) const {
  std::uint32_t both = 0;
  const bool found = ReadValue(kBitrate, both);
  if (found) value = both >> kHalfBits;
  return found;
}

bool SfReadGPUCalibrationRegistry::GetDisableNVIDIAEncode(bool& disabled) const {
  return IsDisabled(u"DisableNVIDIAEncode", disabled);
}

bool SfReadGPUCalibrationRegistry::GetDisableOPENCLEncode(bool& disabled) const {
  return IsDisabled(u"DisableOPENCLEncode", disabled);
}

bool SfReadGPUCalibrationRegistry::GetDisableIntelGPUEncode(bool& disabled) const {
  return IsDisabled(u"DisableIntelGPUEncode", disabled);
}

bool SfReadGPUCalibrationRegistry::ReadValue(const XpString& name, std::uint32_t& value) const {
  // A stored number differs from at least one of two defaults; a missing one from neither.
  if (!m_key) return false;
  const std::uint32_t first = m_key->GetDword(name, 0);
  if (first == 0 && m_key->GetDword(name, 1) != 0) return false;
  value = first;
  return true;
}
