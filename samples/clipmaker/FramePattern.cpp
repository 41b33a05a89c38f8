#include "samples/clipmaker/FramePattern.h"

#include <algorithm>

namespace vrx::test_support {
namespace {

constexpr int kCells = 8;  // along each side
constexpr int kLast = kCells - 1;
constexpr int kBits = 16;
constexpr int kNumberRow = 2;
constexpr int kInverseRow = 4;
constexpr int kPatchColumn = 2;
constexpr int kMinContrast = 60;  // luma between a bit and its inverse
constexpr int kMinCornerStep =
    30;  // luma between neighbouring corner marks, which are written 75 or more apart

constexpr Rgb kWhite = {235, 235, 235};
constexpr Rgb kBlack = {16, 16, 16};
constexpr Rgb kBackground = {110, 110, 110};

struct Cell {
  int column;
  int row;
};

struct CornerMark {
  Cell cell;
  Rgb colour;
};

// Clockwise from the top left, each darker than the one before.
constexpr std::array<CornerMark, 4> kCorners = {{
    {{0, 0}, kWhite},
    {{kLast, 0}, {165, 165, 165}},
    {{kLast, kLast}, {90, 90, 90}},
    {{0, kLast}, kBlack},
}};

PixelRect CellRect(const PixelRect& picture, Cell cell) {
  return {picture.left + picture.Width() * cell.column / kCells,
          picture.top + picture.Height() * cell.row / kCells,
          picture.left + picture.Width() * (cell.column + 1) / kCells,
          picture.top + picture.Height() * (cell.row + 1) / kCells};
}

// The middle of a cell, away from what scaling and compression do at its edges.
PixelRect CellCore(const PixelRect& picture, Cell cell) {
  const PixelRect rect = CellRect(picture, cell);
  const int dx = rect.Width() / 4;
  const int dy = rect.Height() / 4;
  return {rect.left + dx, rect.top + dy, std::max(rect.right - dx, rect.left + dx + 1),
          std::max(rect.bottom - dy, rect.top + dy + 1)};
}

Cell BitCell(int firstRow, int bit) {
  const int place = kBits - 1 - bit;
  return {place % kCells, firstRow + place / kCells};
}

// Where an upright cell lies in a picture that was mirrored and then turned clockwise.
Cell Place(Cell cell, int rotation, bool mirrored) {
  if (mirrored) cell.column = kLast - cell.column;
  for (int turned = 0; turned < rotation; turned += 90) cell = {kLast - cell.row, cell.column};
  return cell;
}

class Reader {
 public:
  Reader(const RgbImage& image, const PixelRect& rect) : m_image(image), m_rect(rect) {}

  PatternReading Read() {
    PatternReading reading;
    if (m_rect.Width() < kCells || m_rect.Height() < kCells) {
      reading.problem = "no picture";
      return reading;
    }
    if (!FindOrientation()) {
      reading.problem = "corner marks not found";
      return reading;
    }
    reading.rotation = m_rotation;
    reading.mirrored = m_mirrored;
    for (std::size_t i = 0; i < reading.patches.size(); ++i) {
      reading.patches[i] = Colour({kPatchColumn + static_cast<int>(i), 0});
    }
    ReadNumber(reading);
    return reading;
  }

 private:
  Rgb Colour(Cell upright) const {
    return m_image.Mean(CellCore(m_rect, Place(upright, m_rotation, m_mirrored)));
  }

  bool CornersFit() const {
    int previous = Luma(Colour(kCorners[0].cell));
    for (std::size_t i = 1; i < kCorners.size(); ++i) {
      const int luma = Luma(Colour(kCorners[i].cell));
      if (previous - luma < kMinCornerStep) return false;
      previous = luma;
    }
    return true;
  }

  bool FindOrientation() {
    for (const bool mirrored : {false, true}) {
      for (const int rotation : {0, 90, 180, 270}) {
        m_mirrored = mirrored;
        m_rotation = rotation;
        if (CornersFit()) return true;
      }
    }
    return false;
  }

  void ReadNumber(PatternReading& reading) const {
    int number = 0;
    for (int bit = kBits - 1; bit >= 0; --bit) {
      const int difference = Luma(Colour(BitCell(kNumberRow, bit))) - Luma(Colour(BitCell(kInverseRow, bit)));
      if (difference < kMinContrast && difference > -kMinContrast) {
        reading.problem = "bit " + std::to_string(bit) + " is unclear";
        return;
      }
      number = 2 * number + (difference > 0 ? 1 : 0);
    }
    reading.number = number;
    reading.valid = true;
  }

  const RgbImage& m_image;
  const PixelRect m_rect;
  int m_rotation = 0;
  bool m_mirrored = false;
};

}  // namespace

void DrawPattern(std::uint32_t number, RgbImage& image) {
  const PixelRect picture = image.Bounds();
  image.Fill(picture, kBackground);
  for (const CornerMark& mark : kCorners) image.Fill(CellRect(picture, mark.cell), mark.colour);
  for (std::size_t i = 0; i < kPatchColours.size(); ++i) {
    const int column = kPatchColumn + static_cast<int>(i);
    image.Fill(CellRect(picture, {column, 0}), kPatchColours[i]);
    image.Fill(CellRect(picture, {column, kLast}), kWhite);
  }
  for (int bit = 0; bit < kBits; ++bit) {
    const bool set = ((number >> bit) & 1U) != 0;
    image.Fill(CellRect(picture, BitCell(kNumberRow, bit)), set ? kWhite : kBlack);
    image.Fill(CellRect(picture, BitCell(kInverseRow, bit)), set ? kBlack : kWhite);
  }
}

PatternReading ReadPattern(const RgbImage& image, const PixelRect& rect) {
  return Reader(image, rect).Read();
}

PatternReading ReadPattern(const RgbImage& image) { return ReadPattern(image, image.FindPicture()); }

}  // namespace vrx::test_support
