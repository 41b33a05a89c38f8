// The painters that this program has. A new kind of overlay is one row of this table, its own files and the
// keys of its record.
#pragma once

#include "overlay/painter/PainterKind.h"

namespace vrx::overlay {

/// Constant; every user walks the same rows.
PainterKinds GetPainterKinds();

}  // namespace vrx::overlay
