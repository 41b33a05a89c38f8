// The engine module beside this program, as the inspection commands use it: its readable log lines, a look
// into a source, and a trial of a whole job without rendering it.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "host/EngineSpans.h"
#include "src/check/ProjectReport.h"
#include "src/manager/EngineLibrary.h"
#include "vrx/VRXEngineExtras.h"

namespace vrx::host {

struct EngineLine {
  VRXLogSeverity severity;
  VRXTrackKind track;
  std::uint32_t clip;  // counted from 1; 0 for none
  std::string text;
};

class EngineModule {
 public:
  EngineModule() = default;
  EngineModule(const EngineModule&) = delete;
  EngineModule& operator=(const EngineModule&) = delete;
  ~EngineModule();

  /// False, with the cause for people, when the module is missing or lacks a function.
  bool Load(std::string& cause);

  /// From now on the engine's lines are kept here and passed to `listener` (may be empty), which is called on
  /// the engine's threads. Without a loaded module, or with one that has no lines to give, nothing happens.
  void Listen(std::function<void(const EngineLine&)> listener);
  std::vector<EngineLine> TakeLines();

  /// From now on what the engine says of the spans of its sequences is kept here. Nothing happens with an
  /// engine that says nothing of them.
  void KeepSpans();
  EngineSpans TakeSpans();

  check::SourceFacts Probe(const XpString& path) const;

  /// What the engine's next sequences do beyond their records. False, with the cause, when the module cannot
  /// be asked or refuses.
  bool SetOverrides(const VRXRenderOverrides& overrides, std::string& cause);
  /// Nothing beyond their records any more.
  void DropOverrides();

  /// Has the engine open everything that the job needs, and close it again. Gives the engine's result; the
  /// lines say why.
  std::int32_t Try(VRXTimeline& timeline, VRXSystemOutputSetting& output) const;

  /// Frame `number` of the movie, bottom-up, into `pixels`, which holds the whole picture. The lines tell why
  /// there is none.
  bool RenderFrame(VRXTimeline& timeline, VRXSystemOutputSetting& output, std::int64_t number,
                   std::span<std::uint32_t> pixels) const;

  /// False, with the cause, for an engine that joins no pieces.
  bool CanJoin(std::string& cause) const;
  /// Writes the movie of the pieces, until another thread sets `endFlag` through std::atomic_ref. `onPercent`
  /// is called with the hundredths that are done. Gives the engine's result; the lines tell why there is no
  /// movie.
  std::int32_t Join(const VRXPieces& pieces, bool& endFlag,
                    const std::function<void(std::uint32_t)>& onPercent) const;

  /// What the last movie holds that was written. False when there is none, or the module cannot tell.
  bool GetSummary(VRXRenderSummary& summary) const;

 private:
  void SetLogCallback(VRXLogFunction log);
  void SetSpanCallback(VRXSpanFunction spans);
  static void OnLine(void* context, const VRXLogEntry& entry);
  static void OnSpan(void* context, const VRXRenderSpan& span);

  render::EngineLibrary m_library;
  mutable std::mutex m_mutex;  // guards the lines and the spans
  std::vector<EngineLine> m_lines;
  EngineSpans m_spans;
  std::function<void(const EngineLine&)> m_listener;
};

}  // namespace vrx::host
