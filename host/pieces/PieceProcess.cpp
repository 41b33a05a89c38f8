#include "host/pieces/PieceProcess.h"

#include <charconv>
#include <string_view>

#include "foundation/platform/Paths.h"
#include "host/ProblemText.h"

namespace vrx::host {
namespace {

std::int64_t NumberOf(const Json& event, const char* name) {
  const auto found = event.find(name);
  return found != event.end() && found->is_number_integer() ? found->get<std::int64_t>() : 0;
}

/// "0x8111".
std::uint32_t CodeOf(const Json& event) {
  const auto found = event.find("code");
  const std::string text = found != event.end() && found->is_string() ? found->get<std::string>() : "";
  std::uint32_t code = 0;
  if (text.starts_with("0x")) std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
  return code;
}

PieceProcess::Failure FailureOf(Json event) {
  event["message"] = event.contains("cause") ? event["cause"] : Json("");
  return {CodeOf(event), ProblemOfJson(event)};
}

/// What a process said last that ended without a word for programs.
PieceProcess::Failure FailureOf(std::string_view errors, int status) {
  while (errors.ends_with('\n')) errors.remove_suffix(1);
  errors.remove_prefix(errors.rfind('\n') + 1);
  constexpr std::string_view kBegin = "vrx: ";
  if (errors.starts_with(kBegin)) errors.remove_prefix(kBegin.size());
  std::string message(errors);
  if (message.empty()) {
    message = status < 0 ? "a piece was ended by signal " + std::to_string(-status)
                         : "a piece ended with status " + std::to_string(status);
  }
  return {XpErrFailed,
          {.severity = check::Severity::Error, .message = XpString(textcodec::ToUtf16(message))}};
}

}  // namespace

PieceProcess::~PieceProcess() {
  Kill();
  if (m_thread.joinable()) m_thread.join();
}

std::error_code PieceProcess::Start(const std::vector<std::string>& command) {
  const std::vector<std::string> arguments(command.begin() + 1, command.end());
  if (const auto error = m_child.Start(platform::PathFromNative(command.front()), arguments)) return error;
  m_thread = std::thread([this] { Follow(); });
  return {};
}

PieceProcess::State PieceProcess::GetState() const {
  const std::scoped_lock lock(m_mutex);
  return m_state;
}

void PieceProcess::Follow() {
  constexpr std::size_t kMostErrors = 1 << 16;
  std::string output, errors;
  while (m_child.Read(output, errors)) {
    TakeLines(output);
    if (errors.size() > kMostErrors) errors.erase(0, errors.size() - kMostErrors);
  }
  const int status = m_child.Wait();
  {
    const std::scoped_lock lock(m_mutex);
    m_state.hasEnded = true;
    if (!m_state.isWritten && !m_state.failure) m_state.failure = FailureOf(errors, status);
  }
  m_waiter.Wake();
}

void PieceProcess::TakeLines(std::string& output) {
  std::size_t begin = 0;
  for (std::size_t end; (end = output.find('\n', begin)) != output.npos; begin = end + 1)
    TakeEvent(output.substr(begin, end - begin));
  output.erase(0, begin);
}

void PieceProcess::TakeEvent(const std::string& line) {
  const Json event = Json::parse(line, nullptr, false);
  if (!event.is_object() || !event.contains("event")) return;
  const Json& kind = event["event"];
  {
    const std::scoped_lock lock(m_mutex);
    if (kind == "progress") m_state.percent = static_cast<std::uint32_t>(NumberOf(event, "percent"));
    if (kind == "error") m_state.failure = FailureOf(event);
    if (kind == "end") {
      m_state.isWritten = true;
      m_state.copiedFrames = NumberOf(event, "copiedFrames");
      for (const Json& problem : event.value("problems", Json::array()))
        m_state.problems.push_back(ProblemOfJson(problem));
    }
  }
  m_waiter.Wake();
}

}  // namespace vrx::host
