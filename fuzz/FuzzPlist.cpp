// Reads any bytes as a property-list document; what was read must survive being written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "content/plist/PlistReader.h"
#include "content/plist/PlistWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  XpIniDict dict;
  const vrx::plist::XmlLimits limits{.bytes = 1 << 16, .depth = 16, .elements = 1000};
  const std::span bytes(reinterpret_cast<const char*>(data), size);
  if (vrx::plist::ReadBytes(bytes, nullptr, dict, nullptr, limits) != XpOk) return 0;
  std::string written;
  if (vrx::plist::WriteDocument(dict, written) != XpOk) std::abort();
  XpIniDict again;
  if (vrx::plist::ReadBytes(written, nullptr, again, nullptr) != XpOk) std::abort();
  std::string same;
  if (vrx::plist::WriteDocument(again, same) != XpOk || same != written) std::abort();
  return 0;
}
