#include "imaging/gif/GifDecoder.h"

#include <gif_lib.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace vrx::imaging {

namespace {

constexpr int kBytesPerPixel = 3;
constexpr std::uint32_t kBlack = 0;

struct Pass {
  std::int32_t first, step;
};
constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};

int ReadBytes(GifFileType* gif, GifByteType* buffer, int count) {
  auto& source = *static_cast<ImageSource*>(gif->UserData);
  return count <= 0 ? 0 : static_cast<int>(source.Read(buffer, static_cast<std::size_t>(count)));
}

std::uint32_t Bgr(const GifColorType& colour) {
  return colour.Blue | std::uint32_t{colour.Green} << 8 | std::uint32_t{colour.Red} << 16;
}

void PutPixel(std::uint32_t colour, unsigned char* bgr) {
  bgr[0] = static_cast<unsigned char>(colour);
  bgr[1] = static_cast<unsigned char>(colour >> 8);
  bgr[2] = static_cast<unsigned char>(colour >> 16);
}

}  // namespace

GifDecoder::GifDecoder(ImageSource& source) noexcept : m_gif(DGifOpen(&source, ReadBytes, &m_openError)) {}

GifDecoder::~GifDecoder() {
  int error = 0;
  if (m_gif != nullptr) DGifCloseFile(m_gif, &error);
}

XpResult GifDecoder::Failure() const noexcept {
  const int error = m_gif == nullptr ? m_openError : m_gif->Error;
  return error == D_GIF_ERR_NOT_ENOUGH_MEM ? XpErrOutOfMemory : XpErrInvalidFile;
}

const char* GifDecoder::FailureWords() const noexcept {
  const char* words = GifErrorString(m_gif == nullptr ? m_openError : m_gif->Error);
  return words == nullptr ? "the picture is damaged" : words;
}

std::int32_t GifDecoder::ScreenWidth() const noexcept { return m_gif->SWidth; }
std::int32_t GifDecoder::ScreenHeight() const noexcept { return m_gif->SHeight; }

std::uint32_t GifDecoder::Background() const noexcept {
  const ColorMapObject* colours = m_gif->SColorMap;
  if (colours == nullptr || m_gif->SBackGroundColor >= colours->ColorCount) return kBlack;
  return Bgr(colours->Colors[m_gif->SBackGroundColor]);
}

GifRecord GifDecoder::NextRecord() noexcept {
  GifRecordType type = UNDEFINED_RECORD_TYPE;
  if (DGifGetRecordType(m_gif, &type) == GIF_ERROR) return GifRecord::Failed;
  switch (type) {
    case IMAGE_DESC_RECORD_TYPE:
      return GifRecord::Image;
    case EXTENSION_RECORD_TYPE:
      return GifRecord::Extension;
    case TERMINATE_RECORD_TYPE:
      return GifRecord::End;
    default:
      return GifRecord::Failed;
  }
}

bool GifDecoder::ReadExtension(GifControl& control) noexcept {
  int code = 0;
  GifByteType* block = nullptr;
  if (DGifGetExtension(m_gif, &code, &block) == GIF_ERROR) return false;
  while (block != nullptr) {
    GraphicsControlBlock fields;
    // The block's first byte is its length; one of another length is none that the standard knows.
    if (code == GRAPHICS_EXT_FUNC_CODE && DGifExtensionToGCB(block[0], block + 1, &fields) == GIF_OK) {
      if (fields.DelayTime != 0) control.hasDelay = true;
      if (fields.TransparentColor != NO_TRANSPARENT_COLOR) control.transparent = fields.TransparentColor;
    }
    if (DGifGetExtensionNext(m_gif, &block) == GIF_ERROR) return false;
  }
  return true;
}

bool GifDecoder::ReadImage(GifImage& image) noexcept {
  m_colourCount = 0;
  if (DGifGetImageDesc(m_gif) == GIF_ERROR) return false;
  image = {m_gif->Image.Left, m_gif->Image.Top, m_gif->Image.Width, m_gif->Image.Height};
  m_pass = 0;
  m_row = 0;
  NoteColours();
  return true;
}

void GifDecoder::NoteColours() noexcept {
  const ColorMapObject* map = m_gif->Image.ColorMap != nullptr ? m_gif->Image.ColorMap : m_gif->SColorMap;
  if (map == nullptr) return;
  m_colourCount = std::min(map->ColorCount, static_cast<int>(m_colours.size()));
  std::transform(map->Colors, map->Colors + m_colourCount, m_colours.begin(), Bgr);
}

bool GifDecoder::SkipPixels() noexcept {
  int codeSize = 0;
  GifByteType* block = nullptr;
  if (DGifGetCode(m_gif, &codeSize, &block) == GIF_ERROR) return false;
  while (block != nullptr) {
    if (DGifGetCodeNext(m_gif, &block) == GIF_ERROR) return false;
  }
  return true;
}

bool GifDecoder::ReadRow(std::uint8_t* indices, std::int32_t& row) noexcept {
  if (DGifGetLine(m_gif, indices, m_gif->Image.Width) == GIF_ERROR) return false;
  row = m_row;
  AdvanceRow();
  return true;
}

void GifDecoder::AdvanceRow() noexcept {
  if (!m_gif->Image.Interlace) {
    ++m_row;
    return;
  }
  m_row += kInterlaced[m_pass].step;
  // A low image has no rows in some of the passes.
  while (m_row >= m_gif->Image.Height && m_pass + 1 < static_cast<int>(std::size(kInterlaced))) {
    m_row = kInterlaced[++m_pass].first;
  }
}

void GifDecoder::PaintRow(const std::uint8_t* indices, int transparent, unsigned char* screenRow,
                          std::int32_t screenWidth) const noexcept {
  const std::int32_t width = std::min(m_gif->Image.Width, screenWidth - m_gif->Image.Left);
  unsigned char* bgr = screenRow + std::ptrdiff_t{m_gif->Image.Left} * kBytesPerPixel;
  std::int32_t x = 0;
  if (transparent < 0 && m_colourCount == static_cast<int>(m_colours.size())) {
    // Four bytes at once, of which the last belongs to the next pixel.
    for (; x + 1 < width; ++x, bgr += kBytesPerPixel) {
      std::memcpy(bgr, &m_colours[indices[x]], sizeof m_colours[0]);
    }
  }
  for (; x < width; ++x, bgr += kBytesPerPixel) {
    const int index = indices[x];
    if (index != transparent && index < m_colourCount) PutPixel(m_colours[indices[x]], bgr);
  }
}

}  // namespace vrx::imaging
