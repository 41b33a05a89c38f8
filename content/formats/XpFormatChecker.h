// Tells the format of a file by its name. Sidecars and importers sort files by it.
#pragma once

#include <span>

#include "content/formats/FormatCodes.h"
#include "vrx/XpString.h"

class XpFormatChecker {
 public:
  virtual ~XpFormatChecker() = default;

  /// By the extension alone, without regard to case; kUnknown for one that is not listed. No file is touched.
  static vrx::formats::FormatCode GetFormatFromName(const XpString& path);
  /// kDirectory for a directory, otherwise as GetFormatFromName.
  static vrx::formats::FormatCode GetFormat(const XpString& path);
};

namespace vrx::formats {

struct ExtensionFormat {
  const char16_t* extension;  // lower case, with its dot
  FormatCode code;
};

/// Each extension once.
std::span<const ExtensionFormat> GetExtensionTable();
/// The rows of the table that are still pictures or video.
std::span<const ExtensionFormat> GetMediaExtensions();

}  // namespace vrx::formats
