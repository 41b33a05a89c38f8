// Why a file could not be read or written, in words. The commands end their errors with it.
#pragma once

#include <string>

#include "vrx/XpResult.h"

namespace vrx::host {

/// "it does not exist (0x8105)".
std::string ReadCause(XpResult result);
/// "the disk is full (0x8109)".
std::string WriteCause(XpResult result);

}  // namespace vrx::host
