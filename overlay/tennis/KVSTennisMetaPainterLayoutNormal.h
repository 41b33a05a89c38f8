// The full tennis layout: a panel over the whole width of the frame with the stroke's name, counters and
// time line.
#pragma once

#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

class KVSTennisMetaPainterLayoutNormal final : public KVSTennisMetaPainterLayoutBase {
 public:
  static constexpr std::int32_t kLayoutType = 1;

  KVSTennisMetaPainterLayoutNormal(std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
                                   std::int32_t height, const XpString& fontName);
};
