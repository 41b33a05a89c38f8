// The part of an overlay that stays for many frames: drawn once on a picture of its own and copied from
// there.
#pragma once

#include <functional>

#include "overlay/painter/PainterSurface.h"

namespace vrx::overlay {

class KeptLayer {
 public:
  /// What is kept has to be drawn again, since what it shows has changed.
  void Forget() { m_isDrawn = false; }

  /// Puts what `draw` draws onto the surface. Where something lies below already, and without memory, `draw`
  /// draws there itself, so that the pixels are the same in any case.
  void Show(PainterSurface& surface, const std::function<void(PainterSurface&)>& draw);

 private:
  bool Prepare(PainterSurface& surface, const std::function<void(PainterSurface&)>& draw);

  XpPixmap32 m_picture;  // of the target's size, clear outside of m_rect
  drawing::Rect m_rect;
  bool m_isDrawn = false;
};

}  // namespace vrx::overlay
