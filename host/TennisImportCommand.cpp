#include <cmath>
#include <cstdio>

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "gps/receiver/UtcTime.h"
#include "host/Commands.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "host/WholeFile.h"
#include "overlay/document/PainterKeys.h"
#include "overlay/tennis/ShotTable.h"
#include "overlay/tennis/TennisDocument.h"

namespace vrx::host {
namespace {

constexpr std::int64_t kMostTableMiB = 64;
constexpr double kSecondsAfterLastShot = 10;  // the length of the time line

/// A document that is there keeps its other overlays; one that cannot be read is not replaced.
bool OpenDocument(const XpString& path, XpIniDict& document, std::string& cause) {
  if (!XpPathExists(path, nullptr)) return true;
  const XpResult result = plist::ReadFile(path, document, nullptr);
  if (result == XpOk && plist::Find(&document, overlay::kPainterInfo) != nullptr) return true;
  cause = Utf8(path) + " is there and is no painter document; it is left as it is";
  return false;
}

overlay::TennisDocumentSettings SettingsOf(const TennisImportOptions& options,
                                           const overlay::ShotTable& table) {
  overlay::TennisDocumentSettings settings{.layoutType = options.layout, .unit = options.unit};
  settings.durationSeconds = std::ceil(table.shots.back().time + kSecondsAfterLastShot);
  if (const auto start = receiver::ParseIsoTime(options.start)) {
    const receiver::CivilTime time = receiver::CivilUtc(*start);
    settings.start.SetDateTime(time.year, time.month, time.day, time.hour, time.minute, time.second);
  }
  return settings;
}

}  // namespace

int RunTennisImport(const TennisImportOptions& options) {
  const XpString path = platform::AbsolutePath(platform::PathFromNative(options.table));
  const XpString output = platform::AbsolutePath(platform::PathFromNative(options.output));
  std::string text;
  std::string cause;
  if (!ReadWholeFile(path, kMostTableMiB, "table of shots", text, cause)) return Fail(cause);
  if (platform::IsSameFile(path, output)) {
    return Fail(options.output + " is the table of shots and would be overwritten");
  }
  const overlay::ShotTable table = overlay::ReadShotTable(text);
  const char* severity = options.skipBadRows && table.hasHeader ? "warning: " : "error: ";
  for (const overlay::ShotTableProblem& problem : table.problems) {
    Say(severity + Utf8(path) + ":" + std::to_string(problem.line) + ": " + problem.message);
  }
  if (!table.hasHeader || (!table.problems.empty() && !options.skipBadRows)) return kFailed;
  if (table.shots.empty()) return Fail(Utf8(path) + " holds no shot");

  XpIniDict document;
  if (!OpenDocument(output, document, cause)) return Fail(cause);
  XpResult result = overlay::PutTennisShots(table.shots, SettingsOf(options, table), document);
  if (result == XpOk) result = plist::WriteFile(document, output);
  if (result != XpOk) return Fail(options.output + " cannot be written: " + WriteCause(result));
  std::printf("%s: %zu %s from %s to %s\n", Plain(output).c_str(), table.shots.size(),
              table.shots.size() == 1 ? "shot" : "shots", ClockText(table.shots.front().time).c_str(),
              ClockText(table.shots.back().time).c_str());
  return kDone;
}

}  // namespace vrx::host
