#include "content/probe/Mp4Probe.h"

#include "foundation/file/XpSpecialFolder.h"
#include "foundation/platform/Module.h"
#include "foundation/registry/SystemSettings.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

constexpr char16_t kModule[] = u"Mp4Sift.dll";

/// In the folder of the installation, when the settings name one, and nowhere else.
platform::ModuleHandle LoadMp4Sift() {
  const XpString installed = vrx::registry::InstalledLocation();
  if (!installed.IsEmpty()) return platform::LoadModule(XpPathJoin(installed, kModule));
  // The system's own search would miss the program's folder, where this module is installed as the engine is.
  const XpString beside = XpPathJoin(XpGetSpecialFolder(XpFolderExecutable), kModule);
  const platform::ModuleHandle module = platform::LoadModule(beside);
  return module != nullptr ? module : platform::LoadModule(kModule);
}

/// Holds the module for one question. Each kind of loader has one instance, which is made at the first
/// question, also when several threads ask it at once, and destroyed at the end of the process.
class MP4SDKWrapperLoader {
 public:
  MP4SDKWrapperLoader(const MP4SDKWrapperLoader&) = delete;
  MP4SDKWrapperLoader& operator=(const MP4SDKWrapperLoader&) = delete;
  virtual ~MP4SDKWrapperLoader() { platform::UnloadModule(m_module); }

 protected:
  MP4SDKWrapperLoader() : m_module(LoadMp4Sift()) {}

  /// Null without the module or the function.
  template <class Function>
  Function Find(const char* name) const {
    return reinterpret_cast<Function>(platform::FindSymbol(m_module, name));
  }

 private:
  const platform::ModuleHandle m_module;
};

class Mp4TypeLoader : public MP4SDKWrapperLoader {
 public:
  static const Mp4TypeLoader& Get() {
    static const Mp4TypeLoader loader;
    return loader;
  }
  const Mp4GetFormatTypeFunction getFormatType = Find<Mp4GetFormatTypeFunction>(kMp4GetFormatTypeName);
};

class Mp4DateLoader : public MP4SDKWrapperLoader {
 public:
  static const Mp4DateLoader& Get() {
    static const Mp4DateLoader loader;
    return loader;
  }
  const Mp4GetOriginalDateTimeFunction getOriginalDateTime =
      Find<Mp4GetOriginalDateTimeFunction>(kMp4GetOriginalDateTimeName);
};

}  // namespace

vrx::formats::FormatCode GetMp4Type(const XpString& path) {
  const auto ask = Mp4TypeLoader::Get().getFormatType;
  switch (ask == nullptr ? 0 : ask(path.c_str())) {
    case 1:
      return vrx::formats::kMp4Portable;
    case 2:
      return vrx::formats::kMp4Mobile;
    case 3:
      return vrx::formats::kMp4Avc;
    case 4:
      return vrx::formats::kMp4HighDefinition;
    case 5:
      return vrx::formats::kMp4Version1;
    case 6:
      return vrx::formats::kMp4Version2;
    default:
      return vrx::formats::kUnknown;
  }
}

bool GetOriginalDateTimeFromMP4(const XpString& path, XpDateTime& date, std::int32_t& offsetMinutes) {
  const auto ask = Mp4DateLoader::Get().getOriginalDateTime;
  if (ask == nullptr) return false;
  std::uint16_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (!ask(path.c_str(), &year, &month, &day, &hour, &minute, &second, &offsetMinutes)) return false;
  date.SetDateTime(year, month, day, hour, minute, second);
  return true;
}
