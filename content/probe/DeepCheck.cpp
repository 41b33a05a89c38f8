#include "content/probe/DeepCheck.h"

#include "content/formats/XpFormatChecker.h"
#include "content/probe/AviProbe.h"
#include "content/probe/JpegProbe.h"
#include "content/probe/Mp4Probe.h"
#include "content/probe/MpoProbe.h"
#include "content/probe/ProgramProbe.h"
#include "content/probe/TransportProbe.h"
#include "foundation/file/XpCachedFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/text/XpPath.h"
#include "imaging/codecs/RawVersion.h"
#include "imaging/codecs/XpImageIoGIF.h"
#include "imaging/codecs/XpImageIoRAW.h"

namespace vrx::formats {
namespace {

struct Question {
  const XpString& path;
  XpAbstractFile* stream;  // may be null
  const XpSharedPtr<XpTiffTagManager>& tags;
};

using FileCheck = FormatCode (*)(XpAbstractFile& file);
/// What a check says of the file at the path; `unread` when it cannot be opened.
template <class File, FileCheck check, FormatCode unread>
FormatCode Opened(const Question& question) {
  File file(question.path);
  return file.Open(XpOpenRead, XpShareRead) == XpOk ? check(file) : unread;
}

FormatCode LookIntoJpeg(const Question& question) {
  if (question.stream != nullptr) return CheckJpeg(*question.stream, question.tags);
  XpCachedFile file(question.path);
  return file.Open(XpOpenRead, XpShareRead) == XpOk ? CheckJpeg(file, question.tags) : kJpegPlain;
}

FormatCode LookIntoGif(const Question& question) { return XpImageIoGIF().GetGifFormat(question.path); }

FormatCode LookIntoRaw(const Question& question) {
  const std::uint32_t version = XpImageIoRAW().GetRawVersion(question.path);
  if (version == imaging::kRawVersionEarly) return kKrwVersion100;
  if (version == 0x300) return kKrwVersion300;
  return version >= 0x301 && version <= 0x303 ? kKrwVersion301 : kUnknown;
}

FormatCode LookIntoMp4(const Question& question) { return GetMp4Type(question.path); }

struct DeepRow {
  const char16_t* extension;  // lower case, with its dot
  FormatCode code;            // of each file, when there is nothing to look for
  FormatCode (*look)(const Question& question);
};

/// Where the code differs from that of the extension.
constexpr DeepRow kRows[] = {
    {u".jpg", kUnknown, LookIntoJpeg},
    {u".jpeg", kJpegPlain, nullptr},
    {u".jpe", kJpegPlain, nullptr},
    {u".mpo", kUnknown, Opened<XpCachedFile, CheckMpo, kMpoOther>},
    {u".gif", kUnknown, LookIntoGif},
    {u".krw", kUnknown, LookIntoRaw},
    {u".mpg", kUnknown, Opened<XpFile, CheckProgram, kUnknown>},
    {u".mpeg", kUnknown, Opened<XpFile, CheckProgram, kUnknown>},
    {u".m2p", kMpeg2Program, nullptr},
    {u".m2t", kUnknown, Opened<XpFile, CheckTransport, kUnknown>},
    {u".mts", kUnknown, Opened<XpFile, CheckTransport, kUnknown>},
    {u".m2ts", kUnknown, Opened<XpFile, CheckTransport, kUnknown>},
    {u".avi", kUnknown, Opened<XpFile, CheckAvi, kUnknown>},
    {u".mp4", kUnknown, LookIntoMp4},
    {u".xmp", kUnknown, nullptr},
};

}  // namespace

FormatCode CheckFormat(const XpString& path, XpAbstractFile* stream,
                       const XpSharedPtr<XpTiffTagManager>& tags) {
  if (tags.Get() == nullptr && XpPathIsDirectory(path)) return kDirectory;
  const XpString extension = XpPathExtension(path);
  for (const DeepRow& row : kRows) {
    if (XpCompareNoCase(extension, row.extension) != 0) continue;
    return row.look == nullptr ? row.code : row.look({path, stream, tags});
  }
  return XpFormatChecker::GetFormatFromName(path);
}

}  // namespace vrx::formats
