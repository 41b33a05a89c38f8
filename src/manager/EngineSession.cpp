#include "src/manager/EngineSession.h"

#include "foundation/platform/Module.h"
#include "foundation/text/XpFormat.h"
#include "src/renderlog/RenderLog.h"

namespace vrx::render {
namespace {

using renderlog::LogLine;

void LogResult(const char16_t* caller, const char16_t* format, std::int32_t result,
               const char* sourceFile = __builtin_FILE(), std::int32_t sourceLine = __builtin_LINE()) {
  XpString line;
  XpFormat(line, format, result);
  LogLine(caller, line, sourceFile, sourceLine);
}

}  // namespace

bool EngineSession::Start(const char16_t* caller) {
  const std::scoped_lock lock(m_mutex);
  return m_library.Bind() && EnsureEngine(caller) == VRXEngineOk;
}

std::int32_t EngineSession::EnsureEngine(const char16_t* caller) {
  const std::scoped_lock lock(m_mutex);
  if (m_isCreated) return VRXEngineOk;
  const std::int32_t result = m_library.createVRX(&m_engine);
  LogResult(caller, u"FUNC_VRX_CreateVRX(%08x)", result);
  m_isCreated = result == VRXEngineOk;
  return result;
}

void EngineSession::Release(const char16_t* caller) {
  const std::scoped_lock lock(m_mutex);
  if (!m_isCreated) return;
  const std::int32_t result = m_library.releaseVRX(&m_engine);
  m_engine = nullptr;
  m_isCreated = false;
  LogResult(caller, u"FUNC_VRX_ReleaseVRX(%08x)", result);
}

bool EngineSession::IsSmartRenderingCapable(std::uint32_t first, std::uint32_t second) {
  const std::scoped_lock lock(m_mutex);
  if (EnsureEngine(u"IsSmartRenderingCapable") != VRXEngineOk) return false;
  return m_library.isSmartRenderingCapable(m_engine, first, second) == VRXEngineOk;
}

void EngineSession::SendGpuSetting(const void* data, std::uint32_t size) {
  LogResult(kRenderToFile, u"FUNC_VRX_SetSTPVSetting(%08x)", m_library.setSTPVSetting(m_engine, data, size));
}

std::int32_t EngineSession::CreateSequence(VRXTimeline& timeline, VRXSystemOutputSetting& output) {
  const std::int32_t result = m_library.createSequence(m_engine, &timeline, &output, &m_sequence);
  XpString line;
  XpFormat(line, u"FUNC_VRX_CreateSequence(%08x) - GetLastError=%08x", result, platform::LastError());
  LogLine(kRenderToFile, line);
  return result;
}

std::int32_t EngineSession::Execute(VRXProgressInfo& progress, bool& endFlag) {
  const std::int32_t result = m_sequence->Execute(&progress, &endFlag);
  if (result != VRXEngineOk) LogResult(kRenderToFile, u"IVRXSequence::Execute(%08x)", result);
  return result;
}

std::int32_t EngineSession::ReleaseSequence() {
  if (m_sequence == nullptr) return VRXEngineOk;
  const std::int32_t result = m_library.releaseSequence(m_engine, &m_sequence);
  m_sequence = nullptr;
  LogResult(kRenderToFile, u"FUNC_VRX_ReleaseSequence(%08x)", result);
  return result;
}

void EngineSession::AbandonSequence() {
  try {
    ReleaseSequence();
  } catch (...) {
    // The failure that came first is the one that is reported.
    m_sequence = nullptr;
  }
}

}  // namespace vrx::render
