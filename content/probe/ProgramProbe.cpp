#include "content/probe/ProgramProbe.h"

#include <array>
#include <cstdint>

namespace vrx::formats {

FormatCode ProgramOf(std::string_view start) {
  constexpr std::string_view kPackStart("\0\0\1\xBA", 4);
  if (start.size() < kPackStartBytes || !start.starts_with(kPackStart)) return kUnknown;
  const auto version = static_cast<std::uint8_t>(start[kPackStart.size()]);
  if (version >> 4 == 0b0010) return kMpeg1Program;
  return version >> 6 == 0b01 ? kMpeg2Program : kUnknown;
}

FormatCode CheckProgram(XpAbstractFile& file) {
  std::array<char, kPackStartBytes> start{};
  std::uint64_t read = 0;
  if (file.Read(start.data(), start.size(), &read) != XpOk || read < start.size()) return kUnknown;
  return ProgramOf({start.data(), start.size()});
}

}  // namespace vrx::formats
