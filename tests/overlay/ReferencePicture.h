// Whole pictures that drawings are held to, kept as PNG files beside the tests.
#pragma once

#include <string>

#include "imaging/pixmap/XpPixmap.h"

namespace vrx::test_support {

/// Every pixel of `drawn` that can be seen is that of NAME.png in the test's folder `reference`. Where not,
/// the picture that was drawn is written to the folder of temporary files, and the failure names it.
void ExpectReference(const XpPixmap32& drawn, const std::string& name);

}  // namespace vrx::test_support
