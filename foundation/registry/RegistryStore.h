// The files of the settings, one for each registry root. Changes are made under a lock, and readers never see
// a half-written file. Used by XpRegistry and by the command line.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/registry/RegistryDocument.h"
#include "vrx/XpResult.h"

namespace vrx::registry {

enum class Root : std::uint32_t { CurrentUser = 0, LocalMachine = 1, ClassesRoot = 2 };

/// Any number but 1 and 2 means the current user.
Root RootOf(std::uint32_t kind);

/// Where the root's settings are kept.
XpString StorePath(Root root);

/// Reads the file as it is now. A file that is missing or damaged gives an empty document.
Document ReadStore(Root root);

/// Applies `change` to the file as it is now and replaces it as XpReplaceFile does; when `change` answers
/// false, nothing is written. A damaged file is kept beside the new one as "….damaged". XpErrFailed, and
/// nothing changed, when the file cannot be written.
XpResult ChangeStore(Root root, const std::function<bool(Document&)>& change);

}  // namespace vrx::registry
