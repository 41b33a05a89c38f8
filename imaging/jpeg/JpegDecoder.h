// One JPEG picture being read by libjpeg: its head, its application segments, its rows. The still-image
// loader and the JPEG codec decode through it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "imaging/source/ImageSource.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// The numbers of application segments: APP0 to APP15.
inline constexpr int kAppSegments = 16;
/// A comment among the segments that are kept.
inline constexpr int kCommentSegment = kAppSegments;

struct JpegSegment {
  int number = 0;                           // of the application segment, or kCommentSegment
  std::span<const std::uint8_t> body = {};  // without marker and length
};

/// When a picture that ends early is an error: when not even one row of blocks was read, or never.
enum class JpegShortage { NeedsRows, IsFilledIn };

enum class JpegColours { Bgr, Ink };

struct JpegForm {
  unsigned scale = 1;  // divisor of both sides: 1, 2, 4 or 8
  JpegColours colours = JpegColours::Bgr;
  bool isSmooth = true;  // colour is interpolated between its samples, and the edges of blocks are smoothed
};

/// Nothing throws. Each step after a failed one fails as well; Result and Words then say why. Everything that
/// the decoder gives out lives as long as the decoder.
class JpegDecoder {
 public:
  /// Borrows the source, from whose position the picture is read.
  JpegDecoder(ImageSource& source, JpegShortage shortage) noexcept;
  JpegDecoder(const JpegDecoder&) = delete;
  JpegDecoder& operator=(const JpegDecoder&) = delete;
  ~JpegDecoder();

  /// To be called before ReadHead for each kind of segment that is wanted.
  bool KeepSegments(int number) noexcept;
  /// Reads up to the first scan.
  bool ReadHead() noexcept;
  std::int64_t Width() const noexcept;  // pixels of the whole picture
  std::int64_t Height() const noexcept;
  bool IsInk() const noexcept;           // four channels of print colours
  bool HasAdobeMarker() const noexcept;  // with it ink is stored inverted: 255 is none
  /// In the file's order.
  const std::vector<JpegSegment>& Segments() const noexcept { return m_segments; }

  /// XpErrOutOfMemory beyond 200 megapixels. XpErrInvalidFile when the source holds fewer bytes than any
  /// coding of the picture takes; where missing rows are filled in, only above 24 megapixels. Start and the
  /// copy of coefficients, which allocate memory of the picture's size, check this themselves.
  bool CheckSize() noexcept;
  bool Start(const JpegForm& form) noexcept;
  std::int32_t OutputWidth() const noexcept;  // pixels, after Start
  std::int32_t OutputHeight() const noexcept;
  bool HasMoreRows() const noexcept;
  /// Three bytes a pixel for Bgr and four for Ink, OutputWidth pixels.
  bool ReadRow(unsigned char* row) noexcept;
  bool Finish() noexcept;

  /// XpErrInvalidFile, XpErrOutOfMemory, or XpOk without a failure.
  XpResult Result() const noexcept;
  const char* Words() const noexcept;
  /// What is wrong with the coded data so far, though the decoder goes on and makes up pixels; else null.
  const char* Damage() const noexcept;

  struct State;
  /// For the copy of coefficients.
  State& Library() noexcept { return *m_state; }

 private:
  std::unique_ptr<State> m_state;  // null without memory
  std::vector<JpegSegment> m_segments;
};

}  // namespace vrx::imaging
