#include "host/make/NewProject.h"

#include <cstdio>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"

namespace vrx::host {

void AddEncoding(const EncodingArguments& encoding, MovieRequest& request) {
  ProjectChanges changes;
  encoding.AddTo(changes);
  request.size = changes.size;
  request.frameDuration = changes.frameDuration;
  request.bitrate = changes.bitrate;
}

std::string CauseAgainstOutput(const XpString& output, const MovieRequest& request) {
  const auto isOutput = [&](const XpString& path) {
    return !path.IsEmpty() && platform::IsSameFile(output, path);
  };
  bool isInput = isOutput(request.captions) || isOutput(request.music) || isOutput(request.gps.log);
  for (const ClipRequest& clip : request.clips) isInput = isInput || isOutput(clip.path);
  return isInput ? Utf8(output) + " is one of the files that the movie is made of and would be overwritten"
                 : std::string();
}

std::string CauseAgainstProject(const XpString& project, bool replaces) {
  if (XpPathIsDirectory(project)) return Utf8(project) + " is a folder";
  if (!replaces && XpPathExists(project, nullptr))
    return Utf8(project) + " is there already; --force replaces it";
  return {};
}

void PrintChoices(const std::vector<std::string>& choices) {
  for (const std::string& choice : choices) std::printf("%s\n", Masked(choice).c_str());
}

}  // namespace vrx::host
