// Where the decoder of still pictures reports pictures that it cannot show, or only in part. The command line
// listens, to name them and to know that something is missing in the movie.
#pragma once

#include <cstdint>
#include <functional>

#include "vrx/XpString.h"

namespace vrx::baseband {

struct PictureProblem {
  XpString document;       // native path of the baseband document
  std::uint64_t line = 0;  // of the document
  XpString picture;        // native path; empty when the cause says it all
  XpString cause;          // in words
  bool isPartial = false;  // a part is shown; otherwise the picture's frames are black
};

using PictureListener = std::function<void(const PictureProblem& problem)>;

/// There is one listener in a process; an empty one ends the listening. Calls come on the decoder's thread,
/// one at a time.
void SetPictureListener(PictureListener listener);

void ReportPicture(const PictureProblem& problem);

}  // namespace vrx::baseband
