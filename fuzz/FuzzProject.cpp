// Reads any bytes as a project document and builds everything up to the engine's records from it.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include <unistd.h>

#include "src/check/ProjectReport.h"
#include "src/job/RenderJob.h"

namespace {

const std::string& ScratchPath() {
  static const std::string path = "/tmp/vrx-fuzz-project-" + std::to_string(getpid());
  return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (std::FILE* file = std::fopen(ScratchPath().c_str(), "wb")) {
    std::fwrite(data, 1, size, file);
    std::fclose(file);
  }
  const XpString path = XpNarrowString(ScratchPath()).ToWide();
  vrx::job::RenderJob job;
  job.Load(path);
  vrx::check::CheckProject(path, {});
  return 0;
}
