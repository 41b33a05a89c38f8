// Reads any bytes as an ICC profile, and their end as each type of tag.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/icc/IccProfile.h"

namespace {

using namespace vrx::imaging;

void Require(bool holds) {
  if (!holds) std::abort();
}

/// Whatever sizes the bytes claim, no more is kept than there is.
void ReadAsEachType(XpMemoryFile& file, std::int64_t position, std::uint32_t size) {
  icc_tag tag;
  for (icc_type* type :
       {static_cast<icc_type*>(&tag.curve), static_cast<icc_type*>(&tag.multiLocalizedUnicode),
        static_cast<icc_type*>(&tag.parametricCurve), static_cast<icc_type*>(&tag.s15Fixed16Array),
        static_cast<icc_type*>(&tag.plainText), static_cast<icc_type*>(&tag.textDescription),
        static_cast<icc_type*>(&tag.xyz)}) {
    Require(file.Seek(position, XpSeekStart) == XpOk);
    if (type->Read(file, size) == XpOk) Require(file.Tell() <= file.GetSize());
  }
  const auto bytes = static_cast<std::size_t>(file.GetSize());
  Require(tag.curve.values.size() * 2 <= bytes && tag.xyz.values.size() * 12 <= bytes);
  Require(tag.s15Fixed16Array.values.size() * 4 <= bytes && tag.parametricCurve.parameters.size() <= 7);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpMemoryFile file;
  file.Attach(const_cast<std::uint8_t*>(data), static_cast<std::int64_t>(size), false);
  icc_profile profile;
  if (profile.Read(file) == XpOk) {
    const icc_tag name = profile.FindTag("desc");
    Require(static_cast<std::size_t>(name.GetTextDescription().text.Length()) <= size);
  }
  if (size < 1) return 0;
  // The first byte says where the tag begins and what its size is said to be.
  const std::int64_t position = data[0] < static_cast<std::int64_t>(size) ? data[0] : 1;
  ReadAsEachType(file, position, static_cast<std::uint32_t>(size) << (data[0] & 31));
  return 0;
}
