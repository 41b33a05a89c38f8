// A conversion engine that does what a test scripted and records the calls that it gets. It is built as
// the module VRXEngine.so beside the test program and loaded by the library like the real one.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "vrx/VRXEngineExtras.h"

struct ScriptedSlice {
  std::uint64_t processed = 0;
  std::uint64_t total = 100;
  std::int32_t result = 0;
  bool ends = false;
  bool throws = false;
};

struct EngineScript {
  std::int32_t createEngine = 0;
  std::int32_t createSequence = 0;
  std::int32_t releaseSequence = 0;
  std::int32_t smartRendering = 0;
  std::vector<ScriptedSlice> slices;         // the last one repeats
  std::function<void(std::size_t)> onSlice;  // called with the slice's index before it takes effect

  std::mutex mutex;
  std::vector<std::string> calls;
  std::vector<std::vector<std::uint8_t>> gpuBlocks;
  const VRXTimeline* timeline = nullptr;
  const VRXSystemOutputSetting* output = nullptr;
  std::atomic<int> liveEngines = 0;
  std::atomic<int> liveSequences = 0;

  void Note(const std::string& call) {
    const std::scoped_lock lock(mutex);
    calls.push_back(call);
  }
};

/// Exported by the module: the script that its next calls follow. Owned by the module.
using GetEngineScriptFunction = EngineScript* (*)();
