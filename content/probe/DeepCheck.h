// What a file really is: the deep form of XpFormatChecker, which looks into the file. The content model sorts
// files by it, and `vrx probe` shows it.
#pragma once

#include "content/formats/FormatCodes.h"
#include "foundation/file/XpAbstractFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "imaging/codecs/XpImageIo.h"
#include "imaging/tags/XpTiffTagManager.h"
#include "vrx/XpString.h"

namespace vrx::formats {

/// The extension says which kinds are possible, and the content which of them it is. Never fails: what cannot
/// be read has the code that its extension has for that, mostly kUnknown. `stream`, which may be null, is the
/// open file of a .jpg, and `tags`, which may be empty, are its tags, where the caller has them already.
/// Without tags a directory is kDirectory. Reads little: the head of a picture, 400 KB of a transport stream,
/// an AVI file up to its first video stream.
FormatCode CheckFormat(const XpString& path, XpAbstractFile* stream = nullptr,
                       const XpSharedPtr<XpTiffTagManager>& tags = {});

/// Whether a picture of this size, as it is stored, is a panorama: by what the maker note says, or since it
/// is wide or tall, which `isWide` says.
bool IsPanorama(XpImageSize size, const XpTiffTagManager& tags, bool& isWide);

}  // namespace vrx::formats
