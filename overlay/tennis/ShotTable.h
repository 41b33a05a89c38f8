// Reads a table of shots, as spreadsheets save it: comma-separated values with a header line. The command
// line turns it into tennis metadata.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "overlay/tennis/TennisMetaData.h"

namespace vrx::overlay {

struct ShotTableProblem {
  std::size_t line;  // of the text, from 1
  std::string message;
};

/// What a table holds: shots by time with a search tree, and a problem for each row that has one. Rows with a
/// problem give no shot.
struct ShotTable {
  std::vector<TennisShot> shots;
  std::vector<ShotTableProblem> problems;
  bool hasHeader = false;  // false: the problem is that of the header, and no row was read
};

/// Values may stand in double quotes (RFC 4180), lines end in LF or CR LF, and blanks around values, empty
/// lines and a byte order mark are ignored. The columns stand in any order under these names:
///
///   time_s       seconds on the clip's axis; must be there
///   stroke       a key of the stroke table, such as "forehand-slice"; must be there
///   zone         0 to 25, where on the racket; 12, about the middle, without it
///   spin         -99 to 99, the first counter
///   swing_speed  0 to 999 km/h, the second counter
///   ball_speed   0 to 999 km/h, the third counter
///   swap_sides   yes or no: shows forehands as backhands, for left-handers
ShotTable ReadShotTable(std::string_view text);

}  // namespace vrx::overlay
