// Renders a job with the engine, from its instance to the released sequence. Runs on the render thread.
#pragma once

#include <cstdint>

#include "src/job/RenderJob.h"
#include "src/manager/EngineSession.h"
#include "src/manager/HostReporter.h"

namespace vrx::render {

/// The code that the host gets for a result of the engine.
std::uint32_t HostCode(std::int32_t engineResult);

/// Reports the start, the progress and either the end or the error; a host that throws gets an error.
/// `endFlag` is only ever set, by the host or by the engine, through std::atomic_ref. The result is the
/// thread's exit code: XpOk, or XpErrFailed when an error was reported.
std::uint32_t RenderToFile(EngineSession& engine, job::RenderJob& job, HostReporter& host, bool& endFlag);

}  // namespace vrx::render
