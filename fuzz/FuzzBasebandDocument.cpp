// Reads any bytes as a baseband document.
#include <cstddef>
#include <cstdint>

#include "src/baseband/BasebandDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vrx::baseband::BasebandDocument document;
  vrx::baseband::ReadBasebandBytes({reinterpret_cast<const char*>(data), size}, document);
  document.Cause();
  return 0;
}
