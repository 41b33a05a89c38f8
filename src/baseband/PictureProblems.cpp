#include "src/baseband/PictureProblems.h"

#include <mutex>
#include <utility>

namespace vrx::baseband {
namespace {

struct Listening {
  std::mutex mutex;  // guards the listener, and is held while it is called
  PictureListener listener;
};

Listening& TheListening() {
  static Listening listening;
  return listening;
}

}  // namespace

void SetPictureListener(PictureListener listener) {
  Listening& listening = TheListening();
  const std::scoped_lock lock(listening.mutex);
  listening.listener = std::move(listener);
}

void ReportPicture(const PictureProblem& problem) {
  Listening& listening = TheListening();
  const std::scoped_lock lock(listening.mutex);
  if (listening.listener) listening.listener(problem);
}

}  // namespace vrx::baseband
