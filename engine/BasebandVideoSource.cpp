#include "engine/BasebandVideoSource.h"

#include <libyuv.h>

#include <string>

#include "engine/BgrConversion.h"
#include "engine/EngineLog.h"
#include "engine/PictureColour.h"

namespace vrx::engine {
namespace {

constexpr std::uint32_t kMaxSize = 16384;  // pixels
constexpr std::size_t kPixelBytes = 3;
constexpr std::size_t kRowAlignment = 4;  // bytes

bool UsableSize(std::uint32_t size) { return size >= 1 && size <= kMaxSize; }

}  // namespace

Result BasebandVideoSource::Check(IVRXRawInputCallback& input) {
  const std::uint32_t width = input.GetWidth();
  const std::uint32_t height = input.GetHeight();
  if (UsableSize(width) && UsableSize(height)) return kOk;
  Log(VRXLogError,
      "a still-picture source has the size " + std::to_string(width) + "x" + std::to_string(height));
  return kUnusableSettings;
}

Result BasebandVideoSource::FrameOf(IVRXRawInputCallback& input, std::uint64_t number, FramePtr& frame) {
  VRX_TRY(Check(input));
  const std::size_t width = input.GetWidth();
  const std::size_t height = input.GetHeight();
  const std::size_t rowBytes = (width * kPixelBytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
  m_bytes.resize(rowBytes * height);
  if (!input.GetFrame(number, m_bytes.data(), static_cast<std::uint32_t>(m_bytes.size()))) {
    if (!m_missing)
      Log(VRXLogWarning, "no still picture from frame " + std::to_string(number) + " on, black instead");
    m_missing = true;
    frame = m_frames.Get(m_width, m_height);
    FillBlack(*frame);
    return kOk;
  }
  m_missing = false;
  m_pixels.resize(width * height);
  const int columns = static_cast<int>(width);
  const int rows = static_cast<int>(height);
  libyuv::RGB24ToARGB(m_bytes.data(), static_cast<int>(rowBytes),
                      reinterpret_cast<std::uint8_t*>(m_pixels.data()),
                      columns * static_cast<int>(sizeof(std::uint32_t)), columns, rows);
  FramePtr picture = m_frames.Get(columns, rows);
  const PictureColour colour = OutputColour(m_height);
  picture->colorspace = colour.matrix;
  picture->color_range = AVCOL_RANGE_MPEG;
  BgrToPlanar({m_pixels.data() + (height - 1) * width, -static_cast<std::ptrdiff_t>(width)},
              MatrixOfHeight(m_height), PlanarPicture::Of(*picture));
  return m_fitter.Fit(*picture, Orientation{}, frame);
}

}  // namespace vrx::engine
