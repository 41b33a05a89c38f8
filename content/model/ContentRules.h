// How files of one stem belong together: a table of rules, each with the main file that it fits and the files
// that go with it. The grouping walks it, and the guide describes it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "content/formats/FormatCodes.h"

namespace vrx::model {

/// Which main files a rule fits, by their true format.
struct MainSelector {
  enum class By : std::uint8_t { Exact, Container, Video };
  By by = By::Exact;
  formats::FormatCode format = formats::kUnknown;           // Exact
  formats::Container container = formats::Container::None;  // Container

  constexpr bool Fits(formats::FormatCode code) const {
    switch (by) {
      case By::Exact:
        return code == format;
      case By::Container:
        return formats::ContainerOf(code) == container;
      case By::Video:
        return (code & kVideoBit) != 0;
    }
    return false;
  }
  static constexpr formats::FormatCode kVideoBit = 0x20000000;
};

struct ContentRule {
  MainSelector main;
  std::array<formats::FormatCode, 6> companions;  // in order, up to kNoCompanion
};

/// The format of the content is that of its main file, in every rule.
std::span<const ContentRule> ContentRules();
inline constexpr formats::FormatCode kNoCompanion = 0x02000000;
inline constexpr std::size_t kNoRule = static_cast<std::size_t>(-1);
/// The first rule that fits a main file of this true format; kNoRule when none does.
std::size_t FindContentRule(formats::FormatCode format);

/// What the name of a companion ends in, in lower case with its dot; empty for formats that are no companions
/// by name.
std::u16string_view CompanionExtension(formats::FormatCode format);

}  // namespace vrx::model
