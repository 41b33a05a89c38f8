// Reads any bytes as a .modd sidecar; one that was read must survive being saved and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "content/modd/SfModdXML.h"
#include "foundation/platform/Paths.h"
#include "tests/support/TempFolder.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TempFolder folder;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const XpString content = vrx::platform::PathFromNative((folder.Path() / "clip.mp4").native());
  folder.Write("clip.mp4.modd", bytes);
  SfModdXML modd(content);
  std::int32_t minutes = 0;
  const bool isOpen = modd.Open(SfModdRead) == XpOk;
  Require(isOpen == (modd.GetMetaDict() != nullptr) && isOpen == (modd.GetMode() == SfModdRead));
  const XpResult result = modd.GetFileTimeZoneOffset(minutes);
  if (!isOpen) {
    Require(result == XpErrFailed && modd.GetCount() == 0);
    return 0;
  }
  if (modd.Save(modd.GetModdPath()) != XpOk) return 0;  // text that XML cannot hold
  SfModdXML again(content);
  std::int32_t sameMinutes = 0;
  Require(again.Open(SfModdReadWrite) == XpOk);
  Require(again.GetFileTimeZoneOffset(sameMinutes) == result && sameMinutes == minutes);
  return 0;
}
