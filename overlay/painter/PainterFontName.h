// The face of the texts that the GPS and tennis painters write.
#pragma once

#include "vrx/XpString.h"

/// By the user's language. The font system stands in for a face that is not installed, so none has to be
/// tried.
XpString ChoosePainterFontName();

/// The same for a locale name, whatever its case.
XpString PainterFontNameFor(const XpString& locale);
