// The 32-bit codes of the kinds of file that a content consists of, and what can be read off them. Sidecars
// look for their media file by them.
#pragma once

#include <cstdint>

namespace vrx::formats {

/// Family, subfamily and two bytes of kind, from the top.
using FormatCode = std::uint32_t;

inline constexpr FormatCode kUnknown = 0x01000000;

// Still pictures. The general codes, which a name alone can give, come first in their group.
inline constexpr FormatCode kJpeg = 0x10000100;
inline constexpr FormatCode kJpegPlain = 0x10000101;
inline constexpr FormatCode kJpegMarked = 0x10000102;  // its maker tag 0x1000 is set
inline constexpr FormatCode kThumbnail = 0x10000105;
inline constexpr FormatCode kJpegPanorama = 0x10000106;
inline constexpr FormatCode kMpoOther = 0x10000107;  // of no known kind
inline constexpr FormatCode kTiff = 0x10000201;
inline constexpr FormatCode kGif = 0x10000301;
inline constexpr FormatCode kGifAnimation = 0x10000302;
inline constexpr FormatCode kPng = 0x10000501;
inline constexpr FormatCode kMpo = 0x10010100;
inline constexpr FormatCode kMpoPanorama = 0x10010102;
inline constexpr FormatCode kMpoFrames = 0x10010103;  // more than two
inline constexpr FormatCode kMpoStereo = 0x10010104;
inline constexpr FormatCode kKrf = 0x10010401;
inline constexpr FormatCode kKr2 = 0x10010402;
inline constexpr FormatCode kJps = 0x10020101;
inline constexpr FormatCode kSpf = 0x10030100;  // a JPEG with an SPF segment
inline constexpr FormatCode kSpf257 = 0x10030101;
inline constexpr FormatCode kSpf258 = 0x10030102;
inline constexpr FormatCode kKrw = 0x10030400;
inline constexpr FormatCode kKrwVersion100 = 0x10030401;
inline constexpr FormatCode kKrwVersion300 = 0x10030402;
inline constexpr FormatCode kKrwVersion301 = 0x10030403;  // up to 0x303
inline constexpr FormatCode kKrq = 0x10040401;

// Video.
inline constexpr FormatCode kMpeg = 0x20001100;
inline constexpr FormatCode kAvi = 0x20001200;
inline constexpr FormatCode kAviDv = 0x20001202;
inline constexpr FormatCode kAviMotionJpeg = 0x20001203;
inline constexpr FormatCode kWmv = 0x20001301;
inline constexpr FormatCode kMov = 0x20001401;
inline constexpr FormatCode kThreeGp = 0x20001501;
inline constexpr FormatCode kMpeg1Program = 0x20011101;
inline constexpr FormatCode kMpeg2 = 0x20021100;
inline constexpr FormatCode kMpeg2Program = 0x20021101;
inline constexpr FormatCode kTransportTshv = 0x20021102;
inline constexpr FormatCode kMmv = 0x20021103;
inline constexpr FormatCode kTransportHdmv = 0x20021104;
inline constexpr FormatCode kMp4 = 0x20031100;
// By the brands of the file: mp4sift/MovieClass.cpp says which make which class.
inline constexpr FormatCode kMp4Portable = 0x20031101;
inline constexpr FormatCode kMp4Mobile = 0x20031102;
inline constexpr FormatCode kMp4HighDefinition = 0x20031103;
inline constexpr FormatCode kMp4Avc = 0x20031104;
inline constexpr FormatCode kMp4Version1 = 0x20031105;
inline constexpr FormatCode kMp4Version2 = 0x20031106;

// Other files.
inline constexpr FormatCode kDirectory = 0x80000001;
inline constexpr FormatCode kModd = 0x80000002;
inline constexpr FormatCode kMoff = 0x80000003;
inline constexpr FormatCode kVmlp = 0x80000004;
inline constexpr FormatCode kXmp = 0x80000005;
inline constexpr FormatCode kVmlt = 0x80003101;
inline constexpr FormatCode kVmlf = 0x80003102;

enum class Family : std::uint8_t { Unknown = 0x01, Still = 0x10, Video = 0x20, Other = 0x80 };
constexpr Family FamilyOf(FormatCode code) { return static_cast<Family>(code >> 24); }

/// Tells apart the generations of one kind: 3 in kMp4 and kKrw, 4 in kKrq.
constexpr std::uint8_t SubfamilyOf(FormatCode code) { return static_cast<std::uint8_t>(code >> 16); }

/// What a still picture is packed in; None for other files.
enum class Container : std::uint8_t { None = 0, Jpeg = 1, Tiff = 2, Gif = 3, Raw = 4, Png = 5 };
constexpr Container ContainerOf(FormatCode code) {
  return FamilyOf(code) == Family::Still ? static_cast<Container>((code >> 8) & 0xFF) : Container::None;
}

}  // namespace vrx::formats
