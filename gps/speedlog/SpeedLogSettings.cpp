#include "gps/speedlog/SpeedLogSettings.h"

#include <algorithm>

#include "foundation/registry/XpRegistry.h"

namespace vrx::gps {
namespace {

constexpr char16_t kKey[] = u"SOFTWARE\\Kelo Corporation\\LBR\\KorvoClipStudio\\1.0\\Settings";
constexpr std::uint32_t kDefaultTime = 100, kLeastTime = 10, kMostTime = 100;
constexpr std::uint32_t kDefaultPosition = 50, kLeastPosition = 30, kMostPosition = 100;

std::uint32_t ReadSetting(const char16_t* name, std::uint32_t absent) {
  // Frames ask for it: only a key that has to be made takes the lock of the settings.
  auto key = XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryRead);
  if (!key) key = XpRegistryOpen(kKey, XpRegistryCurrentUser, XpRegistryRead | XpRegistryWrite);
  return key ? key->GetDword(name, absent) : absent;
}

}  // namespace

std::int32_t GetViewAreaTime() {
  const std::uint32_t seconds = ReadSetting(u"SpeedMeter_ViewAreaTime", kDefaultTime);
  return static_cast<std::int32_t>(std::clamp(seconds, kLeastTime, kMostTime));
}

std::int32_t GetViewAreaPosition() {
  const std::uint32_t percent = ReadSetting(u"SpeedMeter_ViewAreaPosition", kDefaultPosition);
  return static_cast<std::int32_t>(std::clamp(percent, kLeastPosition, kMostPosition));
}

}  // namespace vrx::gps
