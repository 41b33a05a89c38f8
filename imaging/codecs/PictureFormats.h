// The formats of still pictures: how a file of each is known by its content and name, and its codec. Programs
// that take any picture ask here.
#pragma once

#include <memory>
#include <string_view>

#include "content/formats/FormatCodes.h"
#include "imaging/codecs/PictureSummary.h"
#include "imaging/codecs/XpImageIo.h"

namespace vrx::imaging {

/// What a format is known by.
struct PictureEvidence {
  XpAbstractFile& file;       // read where it is needed; its position is left anywhere
  std::string_view start;     // the first bytes, kSignatureBytes unless the file is shorter
  formats::FormatCode named;  // by the extension of its name alone
};

struct PictureFormat {
  const char* name;
  /// Formats are asked in the order of the table.
  bool (*isFormatOf)(const PictureEvidence& evidence);
  std::unique_ptr<XpImageIo> (*makeCodec)();
  PictureSummarizer summarize;
  bool hasTags;
};

/// Of an open file with a name. Null when it is none of these, and when it cannot be read, which `result`
/// says.
const PictureFormat* FindPictureFormat(XpFile& file, XpResult& result);

}  // namespace vrx::imaging
