#include "src/manager/RenderLog.h"

#include <mutex>

namespace vrx::render {
namespace {

std::mutex g_mutex;
LogSink g_sink = nullptr;

}  // namespace

void SetLogSink(LogSink sink) {
  const std::scoped_lock lock(g_mutex);
  g_sink = sink;
}

void LogLine(const XpString& line) {
  const std::scoped_lock lock(g_mutex);
  if (g_sink != nullptr) g_sink(line);
}

}  // namespace vrx::render
