// The text form of tennis metadata in a painter document: one record a shot. The painter reads it, the
// importer of shots writes it, and the checks of a project judge it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "overlay/document/TextTable.h"
#include "overlay/tennis/TennisShots.h"

namespace vrx::overlay {

/// Records beyond this number are not read; the longest matches have some thousand shots.
inline constexpr std::size_t kMaxTennisShots = 16384;

inline constexpr std::size_t kTennisFields = 12;
inline constexpr std::int32_t kImpactZones = 26;

/// Reads the fields of one record, without its bar, up to the first that cannot be read. Returns how many
/// were read, and leaves in `text` what it did not read. Integers beyond 32 bits stay at the limit, and a
/// number that is not finite cannot be read.
std::size_t ReadTennisRecord(std::string_view& text, TennisShot& shot);

/// Appends the records of `text`, each of which ends with a bar. One of fewer than kTennisFields fields is
/// left out, and what follows the last bar is ignored. A swing type outside the stroke table gives no name
/// and keeps the class of the record before.
void ParseTennisMetaData(const XpString& text, const TextTable& texts, std::vector<TennisShot>& shots);

/// The same form, with times and speeds to the millisecond and the thousandth.
std::string WriteTennisMetaData(std::span<const TennisShot> shots);

}  // namespace vrx::overlay
