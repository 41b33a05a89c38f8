// One value of a media file's sidecar: shown, and set. `vrx modd get` and `set` are these.
#pragma once

#include <string>

namespace vrx::host {

struct ModdEdit {
  std::string file;   // the media file, or for `get` also a sidecar
  std::string key;    // below the metadata; "a/b" goes into dictionaries and lists
  std::string value;  // of `set`
  std::string type;   // of `set`: text, integer, real, bool or date; empty: that of the value there is
};

// The exit status; what is wrong has been said.
int GetModdValue(const ModdEdit& edit, bool asJson);
int SetModdValue(const ModdEdit& edit);

}  // namespace vrx::host
