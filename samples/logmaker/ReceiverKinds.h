// The kinds of receivers whose logs can be made, by name.
#pragma once

#include <span>
#include <string>

#include "samples/route/Route.h"

namespace vrx::test_support {

struct ReceiverKind {
  const char* name;
  const char* what;  // for a help text
  std::string (*write)(const Route&);
};

std::span<const ReceiverKind> ReceiverKinds();

}  // namespace vrx::test_support
