#include "host/PictureFile.h"

#include <array>

#include "foundation/platform/Paths.h"
#include "host/Console.h"
#include "host/FileCauses.h"
#include "imaging/loader/ImageFormats.h"

namespace vrx::host {

std::string PictureCause(XpResult result) {
  const auto words = [result]() -> const char* {
    switch (result) {
      case XpErrImageUnusable:
        return "the new tags do not fit";
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
  std::array<char, imaging::kSignatureBytes> head{};
  std::uint64_t read = 0;
  const XpResult result = m_file.Read(head.data(), head.size(), &read);
  if (result != XpOk && result != XpErrEndOfFile) {
    m_cause = ReadCause(result);
    return;
  }
  const auto* format = imaging::FindImageFormat({head.data(), static_cast<std::size_t>(read)});
  if (format == nullptr) {
    m_cause = read == 0 ? "the file is empty" : "it is no picture of a known format";
  } else {
    m_format = format->name;
  }
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
