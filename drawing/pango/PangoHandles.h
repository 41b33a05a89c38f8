// Owners for the objects of Pango and Cairo. Only the text renderer's own files include this.
#pragma once

#include <cairo.h>
#include <pango/pangocairo.h>

#include <memory>

namespace vrx::drawing {

struct PangoRelease {
  void operator()(cairo_t* p) const { cairo_destroy(p); }
  void operator()(cairo_surface_t* p) const { cairo_surface_destroy(p); }
  void operator()(cairo_font_options_t* p) const { cairo_font_options_destroy(p); }
  void operator()(PangoFontDescription* p) const { pango_font_description_free(p); }
  void operator()(PangoFontMetrics* p) const { pango_font_metrics_unref(p); }
  void operator()(PangoAttrList* p) const { pango_attr_list_unref(p); }
  void operator()(PangoLayoutIter* p) const { pango_layout_iter_free(p); }
  template <class Object>
  void operator()(Object* p) const {
    g_object_unref(p);
  }
};

template <class T>
using PangoOwned = std::unique_ptr<T, PangoRelease>;

}  // namespace vrx::drawing
