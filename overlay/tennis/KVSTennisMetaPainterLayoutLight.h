// The short tennis layout: a panel at the left with counters between separator lines.
#pragma once

#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

class KVSTennisMetaPainterLayoutLight final : public KVSTennisMetaPainterLayoutBase {
 public:
  static constexpr std::int32_t kLayoutType = 2;

  KVSTennisMetaPainterLayoutLight(std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
                                  std::int32_t height, const XpString& fontName);
};
