// The kinds of receivers whose logs can be made, by name.
#pragma once

#include <span>
#include <string>

#include "samples/logmaker/DriveRoute.h"

namespace vrx::test_support {

struct ReceiverKind {
  const char* name;
  const char* what;  // for a help text
  std::string (*write)(const DriveRoute&);
};

std::span<const ReceiverKind> ReceiverKinds();

}  // namespace vrx::test_support
