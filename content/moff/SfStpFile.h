// The bytes of an STP chunk of a .moff container.
#pragma once

#include "foundation/file/XpMemoryFile.h"

class SfStpFile : public XpMemoryFile {};
