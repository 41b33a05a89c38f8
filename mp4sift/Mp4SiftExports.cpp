#include "mp4sift/Mp4SiftExports.h"

#include <mutex>

#include "content/mp4/MovieInfo.h"
#include "foundation/file/XpFile.h"
#include "foundation/registry/SystemSettings.h"
#include "mp4sift/MovieClass.h"

namespace vrx::mp4sift {
namespace {

bool OpenMovie(const XpString& path, XpFile& file) {
  // The module has drive letters of its own, apart from those of the program that loads it.
  static std::once_flag settingsApplied;
  std::call_once(settingsApplied, &registry::ApplySystemSettings);
  return file.OpenPath(path, XpOpenRead, XpShareRead | XpShareWrite) == XpOk;
}

MovieClass FindClass(const XpString& path) {
  XpFile file;
  mp4::FileType type;
  const bool hasBrands = OpenMovie(path, file) && mp4::ReadFileType(file, type) == XpOk;
  return hasBrands ? ClassOf(type) : kNoMp4;
}

mp4::RecordingDate FindDate(const XpString& path) {
  XpFile file;
  mp4::MovieInfo info;
  // Damage in one place takes no date away that is stated in another.
  if (OpenMovie(path, file)) mp4::ReadMovieInfo(file, info);
  return info.recording;
}

/// No exception may leave the module. What fails for lack of memory is answered like a file that cannot be
/// read.
template <class Action>
auto Guarded(Action action) -> decltype(action()) {
  try {
    return action();
  } catch (...) {
    return {};
  }
}

}  // namespace
}  // namespace vrx::mp4sift

namespace mp4sift = vrx::mp4sift;

std::int32_t GetFormatType(const char16_t* path) {
  if (path == nullptr) return mp4sift::kNoMp4;
  return mp4sift::Guarded([&] { return mp4sift::FindClass(path); });
}

bool GetOriginalDateTime(const char16_t* path, std::uint16_t* year, std::uint16_t* month, std::uint16_t* day,
                         std::uint16_t* hour, std::uint16_t* minute, std::uint16_t* second,
                         std::int32_t* offsetMinutes) {
  const bool isComplete = path != nullptr && year != nullptr && month != nullptr && day != nullptr &&
                          hour != nullptr && minute != nullptr && second != nullptr &&
                          offsetMinutes != nullptr;
  if (!isComplete) return false;
  const vrx::mp4::RecordingDate found = mp4sift::Guarded([&] { return mp4sift::FindDate(path); });
  if (!found.date.IsValid()) return false;
  *year = static_cast<std::uint16_t>(found.date.GetYear());
  *month = static_cast<std::uint16_t>(found.date.GetMonth());
  *day = static_cast<std::uint16_t>(found.date.GetDay());
  *hour = static_cast<std::uint16_t>(found.date.GetHour());
  *minute = static_cast<std::uint16_t>(found.date.GetMinute());
  *second = static_cast<std::uint16_t>(found.date.GetSecond());
  *offsetMinutes = found.offsetMinutes.value_or(kMp4NoTimeZone);
  return true;
}
