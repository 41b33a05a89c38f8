// What it costs to write one line to the log.
#include <cstdlib>
#include <filesystem>

#include <benchmark/benchmark.h>

#include "foundation/log/SfLog.h"

namespace {

/// Keeps the benchmarks of this program from the user's log.
const bool g_ownLog = [] {
  const auto folder = std::filesystem::temp_directory_path() / "vrx-bench-log";
  std::filesystem::create_directories(folder);
  return setenv("TMPDIR", folder.c_str(), 1) == 0 && setenv("VRX_REGISTRY_DIR", folder.c_str(), 1) == 0;
}();

void BM_LogLine(benchmark::State& state) {
  for ([[maybe_unused]] auto step : state) {
    SfWriteLog(SfLogOutput, false, u"FUNC_VRX_CreateSequence(%08x)", u"src\\VRXWrapperManager.cpp",
               u"renderToFile", 50, 0);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogLine)->Unit(benchmark::kMicrosecond);

}  // namespace
