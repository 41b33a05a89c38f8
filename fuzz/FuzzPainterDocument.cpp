// Reads any bytes as a painter document, plans its overlays and checks them in a project of one clip.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

#include "overlay/document/TKLXPainterInfoXml.h"
#include "src/check/PainterDocumentCheck.h"
#include "src/overlayplan/OverlayRanges.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string scratch = "/tmp/vrx-fuzz-painter-" + std::to_string(getpid());
  if (std::FILE* file = std::fopen(scratch.c_str(), "wb")) {
    std::fwrite(data, 1, size, file);
    std::fclose(file);
  }
  const XpString path = XpNarrowString(scratch).ToWide();
  TKLXPainterInfoXml document;
  document.Load(XpPath(path));
  std::vector<vrx::check::Problem> problems;
  vrx::check::CheckPainterDocument(document.GetDocument(), path, problems);
  PainterInfo info;
  AdoptPainterInfo(document.GetPainterInfo(), info);
  vrx::overlayplan::PlanOverlays({{1001, 30000}, {300300, {}, {{0, 300300}}}}, info);
  return 0;
}
