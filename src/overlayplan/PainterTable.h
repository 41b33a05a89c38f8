// The painters that this program has. A new kind of overlay is one row of this table, its own files and the
// keys of its record.
#pragma once

#include "overlay/painter/PainterKind.h"

namespace vrx::overlayplan {

/// Constant; every user walks the same rows.
overlay::PainterKinds GetPainterKinds();

}  // namespace vrx::overlayplan
