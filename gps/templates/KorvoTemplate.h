// The template of the GPS overlay: how it looks and where it lies. The painter keeps one and changes its
// halves separately.
#pragma once

#include <memory>

#include "gps/templates/KorvoTemplateScenario.h"
#include "gps/templates/KorvoTemplateStructure.h"

struct KorvoTemplate {
  std::unique_ptr<KorvoTemplateScenario> scenario;    // null until it is chosen
  std::unique_ptr<KorvoTemplateStructure> structure;  // null until it is chosen
};
