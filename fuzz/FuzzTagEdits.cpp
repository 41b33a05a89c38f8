// Makes each edit in any bytes: the size must stay, and a second edit of the same kind must find what the
// first one wrote.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/tags/TagEdits.h"

namespace {

using namespace vrx::imaging;

constexpr std::int64_t kBase = 12;

void Require(bool holds) {
  if (!holds) std::abort();
}

XpDateTime Date() {
  XpDateTime date;
  date.SetDateTime(2026, 11, 25, 12, 34, 56);
  return date;
}

using Edit = XpResult (*)(XpAbstractFile&, std::uint32_t);
constexpr std::array<Edit, 9> kEdits{
    [](XpAbstractFile& file, std::uint32_t) { return PatchDateTime(file, kBase, Date(), true); },
    [](XpAbstractFile& file, std::uint32_t) { return PatchOriginalDate(file, kBase, Date()); },
    [](XpAbstractFile& file, std::uint32_t value) {
      return PatchOffsetTime(file, kBase, static_cast<std::int32_t>(value % 6000));
    },
    [](XpAbstractFile& file, std::uint32_t value) { return PatchOrientation(file, kBase, value); },
    [](XpAbstractFile& file, std::uint32_t value) { return PatchRating(file, kBase, value, true); },
    [](XpAbstractFile& file, std::uint32_t value) { return PatchRating(file, kBase, value, false); },
    [](XpAbstractFile& file, std::uint32_t value) { return PatchPreviewRef(file, value, value); },
    [](XpAbstractFile& file, std::uint32_t) { return RemoveGpsPointer(file, kBase); },
    [](XpAbstractFile& file, std::uint32_t) { return TouchDates(file, XpOk, kBase, Date()); }};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::uint32_t value = size == 0 ? 0 : data[size - 1] * 0x01010101u;
  for (const Edit edit : kEdits) {
    std::vector<std::uint8_t> bytes(data, data + size);
    XpMemoryFile file;
    file.Attach(bytes.data(), static_cast<std::int64_t>(size), false);
    const XpResult result = edit(file, value);
    Require(file.GetSize() == static_cast<std::int64_t>(size) && file.GetData() == bytes.data());
    const bool isChanged = !std::equal(bytes.begin(), bytes.end(), data);
    Require(result == XpOk || !isChanged);
    if (isChanged) edit(file, value + 1);
    Require(file.GetData() == bytes.data());
  }
  return 0;
}
