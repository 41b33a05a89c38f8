// Reads a baseband document, which says which picture a clip of still images shows on which frames, into
// plain records. The source of still images and `vrx check` use it.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/xml/XmlDocument.h"
#include "vrx/XpResult.h"
#include "vrx/XpString.h"

namespace vrx::baseband {

/// A turn of the picture in memory, whose rows run from the bottom; on the screen quarter turns therefore go
/// the other way round.
enum Rotation : std::int32_t {
  RotateNone = 0,
  RotateQuarterCw = 1,
  RotateHalf = 2,
  RotateQuarterCcw = 3,
};

struct DecodeRect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};

/// A picture to decode.
struct DecodeJob {
  std::int64_t imageId = 0;
  XpString imagePath;  // as the document writes it
  DecodeRect rect;     // kept for compatibility; not used
  bool mirror = false;
  std::int32_t rotation = RotateNone;  // as the document writes it
};

/// The frames that show a picture, both ends included, on the clip's own clock. They are compared as unsigned
/// numbers: a negative frame comes after all others, and a span whose end is before its start holds none.
struct FrameSpan {
  std::int64_t imageId = 0;
  std::int64_t inFrame = 0;
  std::int64_t outFrame = 0;

  bool Contains(std::uint64_t frame) const {
    return static_cast<std::uint64_t>(inFrame) <= frame && frame <= static_cast<std::uint64_t>(outFrame);
  }
};

/// One DecImage element.
struct BasebandImage {
  DecodeJob job;
  FrameSpan span;
  std::int64_t mirror = 0;  // as the document writes it
  std::uint64_t line = 0;   // on which its start tag ends
};

/// What is wrong with an element. Fatal ones make the document as a whole fail.
struct DocumentProblem {
  bool isFatal = false;
  std::uint64_t line = 0;  // from 1; 0 when unknown
  XpString element;        // either may be empty
  XpString attribute;
  XpString message;
};

struct BasebandDocument {
  std::vector<BasebandImage> images;
  std::vector<DocumentProblem> problems;  // in document order

  /// The problem that made the reading fail, for a log: line, element, attribute and cause.
  XpString Cause() const;
};

/// Reads all that can be read, also of a document that fails. XpErrUnknownElementType for an empty path; the
/// file layer's code or XpErrNotWellFormed when there is no document; XpErrWrongElementType when it is no
/// document of still images; XpErrWrongRoot when an attribute is missing or no image is there.
XpResult ReadBasebandDocument(const XpString& path, BasebandDocument& document);
/// The same for bytes at hand.
XpResult ReadBasebandBytes(std::span<const char> bytes, BasebandDocument& document);

}  // namespace vrx::baseband
