#include "host/PictureFile.h"

#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/FileCauses.h"

namespace vrx::host {

std::string PictureCause(XpResult result) {
  const auto words = [result]() -> const char* {
    switch (result) {
      case XpErrImageUnusable:
        return "the new tags do not fit, or what they belong to is missing";
      case XpErrImageNoData:
        return "the picture does not have what is asked for";
      case XpErrImageInvalid:
        return "it is damaged";
      case XpErrImageNotProvided:
        return "its format does not allow this";
      case XpErrImageArgument:
        return "the value cannot be stored";
      default:
        return nullptr;
    }
  }();
  return words == nullptr ? ReadCause(result) : std::string(words) + " (" + CodeText(result) + ")";
}

PictureFile::PictureFile(const std::string& path)
    : m_path(platform::AbsolutePath(platform::PathFromNative(path))), m_file(m_path) {
  if (const XpResult result = m_file.Open(XpOpenRead, XpShareRead)) {
    m_cause = ReadCause(result);
  } else {
    FindFormat();
  }
}

void PictureFile::FindFormat() {
  XpResult result = XpOk;
  m_format = imaging::FindPictureFormat(m_file, result);
  if (m_format != nullptr) {
    m_codec = m_format->makeCodec();
    return;
  }
  std::int64_t size = 0;
  if (result != XpOk) {
    m_cause = ReadCause(result);
  } else {
    const bool isEmpty = m_file.Stat(nullptr, nullptr, nullptr, &size) == XpOk && size == 0;
    m_cause = isEmpty ? "the file is empty" : "it is no picture of a known format";
  }
}

std::string PictureFile::CodecCause() const {
  const std::string words = Utf8(m_codec->problem);
  return words.empty() ? PictureCause(m_codec->status) : words + " (" + CodeText(m_codec->status) + ")";
}

int ForEachPicture(const std::vector<std::string>& files,
                   const std::function<std::string(const std::string& file)>& command) {
  int status = kDone;
  for (const std::string& file : files) {
    const std::string cause = command(file);
    if (!cause.empty()) status = Fail(file + ": " + cause);
  }
  return status;
}

}  // namespace vrx::host
