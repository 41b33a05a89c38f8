// How long it takes to open a project and build its timeline, by the number of clips.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include "src/job/RenderJob.h"

namespace {

std::string WriteProject(std::int64_t clips) {
  const auto path = std::filesystem::temp_directory_path() / ("vrx-bench-" + std::to_string(clips) + ".vrx");
  std::ofstream file(path);
  file << "<?xml version=\"1.0\" encoding=\"utf-8\"?><plist version=\"1.0\"><dict><key>VRXWrapper</key><dict>"
          "<key>VideoTrack</key><array>";
  for (std::int64_t i = 0; i < clips; ++i) {
    file << "<dict><key>SourceFile</key><string>clips/recording-" << i
         << ".mp4</string><key>SourceType</key><integer>2</integer><key>StartTime</key><real>" << i
         << ".5</real><key>EndTime</key><real>" << i + 5000
         << ".5</real><key>EnableOverlay</key><true/></dict>\n";
  }
  file << "</array><key>OutputSettings</key><dict><key>OutputFilePath</key><string>out.mp4</string>"
          "<key>VideoOutputSettings</key><dict><key>Width</key><integer>1920</integer>"
          "<key>Height</key><integer>1080</integer><key>TimeValue</key><integer>1001</integer>"
          "<key>TimeScale</key><integer>30000</integer></dict></dict></dict></dict></plist>";
  return path.string();
}

void OpenProject(benchmark::State& state) {
  const std::string path = WriteProject(state.range(0));
  for (auto _ : state) {
    vrx::job::RenderJob job;
    job.Load(XpNarrowString(path).ToWide());
    if (job.GetTimeline()->video.count != state.range(0)) state.SkipWithError("clips are missing");
  }
  state.SetComplexityN(state.range(0));
  std::filesystem::remove(path);
}

}  // namespace

BENCHMARK(OpenProject)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity();
