#include "content/formats/FormatNames.h"

namespace vrx::formats {
namespace {

struct NameRow {
  FormatCode code;
  std::string_view name;
};

constexpr NameRow kNames[] = {
    {kJpeg, "JPEG picture"},
    {kJpegPlain, "JPEG picture"},
    {kJpegMarked, "JPEG picture of a special kind"},
    {kThumbnail, "thumbnail (THM)"},
    {kJpegPanorama, "panorama"},
    {kMpoOther, "multi-picture file of no known kind"},
    {kTiff, "TIFF picture"},
    {kGif, "GIF picture"},
    {kGifAnimation, "GIF animation"},
    {kPng, "PNG picture"},
    {kMpo, "multi-picture file"},
    {kMpoPanorama, "stereo panorama (MPO)"},
    {kMpoFrames, "picture of several views (MPO)"},
    {kMpoStereo, "stereo picture (MPO)"},
    {kKrf, "RAW picture (KRF)"},
    {kKr2, "RAW picture (KR2)"},
    {kJps, "stereo picture (JPS)"},
    {kSpf, "SPF picture"},
    {kSpf257, "SPF picture, kind 257"},
    {kSpf258, "SPF picture, kind 258"},
    {kKrw, "RAW picture (KRW)"},
    {kKrwVersion100, "RAW picture (KRW version 0x100)"},
    {kKrwVersion300, "RAW picture (KRW version 0x300)"},
    {kKrwVersion301, "RAW picture (KRW version 0x301 to 0x303)"},
    {kKrq, "RAW picture (KRQ)"},
    {kMpeg, "MPEG program stream"},
    {kAvi, "AVI movie"},
    {kAviDv, "AVI movie with DV video"},
    {kAviMotionJpeg, "AVI movie with Motion JPEG video"},
    {kWmv, "WMV movie"},
    {kMov, "QuickTime movie"},
    {kThreeGp, "3GP movie"},
    {kMpeg1Program, "MPEG-1 program stream"},
    {kMpeg2, "MPEG-2 stream"},
    {kMpeg2Program, "MPEG-2 program stream"},
    {kTransportTshv, "transport stream (TSHV)"},
    {kMmv, "MMV movie"},
    {kTransportHdmv, "AVCHD transport stream"},
    {kMp4, "MP4 movie"},
    {kMp4Portable, "MP4 movie for portable players"},
    {kMp4Mobile, "MP4 movie for mobile phones (3GP)"},
    {kMp4HighDefinition, "high-definition MP4 movie"},
    {kMp4Avc, "MP4 movie with AVC extensions"},
    {kMp4Version1, "MP4 movie, version 1"},
    {kMp4Version2, "MP4 movie, version 2"},
    {kDirectory, "folder"},
    {kModd, "metadata of a content"},
    {kMoff, "binary data of a content"},
    {kVmlp, "VMLP file"},
    {kXmp, "XMP metadata"},
    {kVmlt, "VMLT file"},
    {kVmlf, "VMLF file"},
};

}  // namespace

std::string_view FormatName(FormatCode code) {
  for (const NameRow& row : kNames) {
    if (row.code == code) return row.name;
  }
  return "unknown";
}

}  // namespace vrx::formats
