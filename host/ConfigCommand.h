// `vrx config`: shows and changes the settings that the library and its hosts read.
#pragma once

#include <cstdint>
#include <string>

namespace vrx::host {

enum class ConfigAction { Get, Set, List, Unset };

struct ConfigOptions {
  ConfigAction action = ConfigAction::List;
  std::string key;   // below the product's key, or from "Software" on; either separator
  std::string name;  // of a value; empty for the whole key
  std::string value;
  bool isText = false;  // a value of digits is a text as well
  bool machine = false;
};

/// Returns the exit status: kFailed when there is no such setting or it cannot be written.
int RunConfig(const ConfigOptions& options);

}  // namespace vrx::host
