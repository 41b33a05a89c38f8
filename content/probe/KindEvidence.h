// What the rules of ContentKind.cpp judge a file by, and the words in which they give their reasons. A rule
// answers why a file is of its kind, and nothing when it is not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "content/probe/TextStart.h"
#include "foundation/file/XpAbstractFile.h"

namespace vrx::formats {

class KindEvidence {
 public:
  /// Borrows both. `start` are the first 4 KiB of the file, or all of it.
  KindEvidence(XpAbstractFile& file, std::string_view start, std::int64_t size)
      : m_file(file), m_start(start), m_size(size) {}

  XpAbstractFile& File() const { return m_file; }
  std::string_view Start() const { return m_start; }
  std::int64_t Size() const { return m_size; }  // bytes
  bool Begins(std::string_view bytes) const { return m_start.starts_with(bytes); }
  /// Whether these bytes stand there.
  bool Has(std::size_t at, std::string_view bytes) const {
    return at < m_start.size() && m_start.substr(at).starts_with(bytes);
  }
  std::uint8_t Byte(std::size_t at) const { return static_cast<std::uint8_t>(m_start[at]); }
  const TextStart& Text() const;

 private:
  XpAbstractFile& m_file;
  std::string_view m_start;
  std::int64_t m_size;
  mutable std::optional<TextStart> m_text;
};

/// "begins with FF D8 FF"; as many bytes as there are.
std::string BeginsWithBytes(const KindEvidence& evidence, std::size_t count);
/// "begins with "GIF89a"".
std::string BeginsWithText(std::string_view text);
/// Four characters without trailing spaces, or their bytes when they cannot be printed.
std::string FourCharacters(std::string_view code);

// Pictures.
std::string WhyJpeg(const KindEvidence& evidence);
/// A JPEG picture whose index names more than one.
std::string WhyMultiPicture(const KindEvidence& evidence);
std::string WhyPng(const KindEvidence& evidence);
std::string WhyGif(const KindEvidence& evidence);
std::string WhyGifAnimation(const KindEvidence& evidence);
std::string WhyTiff(const KindEvidence& evidence);
std::string WhyBigTiff(const KindEvidence& evidence);
std::string WhyBmp(const KindEvidence& evidence);

// Movies and sound. A brand is known by what it begins with.
std::string WhyBrand(const KindEvidence& evidence, std::initializer_list<std::string_view> brands);
std::string WhyQuickTime(const KindEvidence& evidence);
std::string WhyRiff(const KindEvidence& evidence, std::string_view form);
std::string WhyAsf(const KindEvidence& evidence);
std::string WhyEbml(const KindEvidence& evidence, std::string_view documentType);
std::string WhyProgramStream(const KindEvidence& evidence, std::uint32_t format);
std::string WhyTransportStream(const KindEvidence& evidence, std::int64_t stride);

}  // namespace vrx::formats
