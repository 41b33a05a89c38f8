#include "host/pieces/PlanId.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include <glib.h>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/Paths.h"
#include "src/project/ProjectKeys.h"

namespace vrx::host {
namespace {

constexpr std::size_t kStateDigits = 32;
constexpr std::size_t kCutDigits = 16;

/// SHA-256 of a list of fields, each with its length, so that no two lists look alike.
class Digest {
 public:
  void AddBytes(const void* bytes, std::size_t count) {
    g_checksum_update(m_checksum.get(), static_cast<const guchar*>(bytes), static_cast<gssize>(count));
  }
  void AddNumber(std::uint64_t number) {
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(number >> (8 * i));
    AddBytes(bytes.data(), bytes.size());
  }
  void AddText(std::string_view text) {
    AddNumber(text.size());
    AddBytes(text.data(), text.size());
  }
  std::string GetDigits(std::size_t count) const {
    return std::string(g_checksum_get_string(m_checksum.get())).substr(0, count);
  }

 private:
  std::unique_ptr<GChecksum, decltype(&g_checksum_free)> m_checksum{g_checksum_new(G_CHECKSUM_SHA256),
                                                                    &g_checksum_free};
};

/// The project, its painter document, and documents of still pictures, which a clip's pictures come from.
bool IsDocument(const project::InputFile& input, std::span<const project::InputFile> inputs) {
  if (input.line != 0) return false;
  if (input.clip == 0) return input.key.IsEmpty() || input.key == project::kPainterEffect.name;
  return std::ranges::any_of(inputs, [&](const project::InputFile& other) {
    return other.line != 0 && other.clip == input.clip && other.track == input.track;
  });
}

/// A file that cannot be read gives none; the render says what is wrong with it.
void AddContent(const XpString& path, Digest& digest) {
  platform::FileHandle file = platform::kNoFile;
  if (platform::OpenFile(path, platform::FileAccess::Read, platform::FileScan::Sequential, file)) return;
  std::array<char, 1 << 16> block;
  std::uint64_t total = 0, done = 0;
  while (!platform::ReadFile(file, block.data(), block.size(), done) && done > 0) {
    digest.AddBytes(block.data(), done);
    total += done;
  }
  digest.AddNumber(total);
  platform::CloseFile(file);
}

void AddInput(const project::InputFile& input, bool isDocument, Digest& digest) {
  digest.AddText(platform::NativePath(input.path));
  if (isDocument) {
    AddContent(input.path, digest);
    return;
  }
  platform::FileStatus status;
  if (platform::StatPath(input.path, platform::Links::Follow, status)) status = {};
  digest.AddNumber(static_cast<std::uint64_t>(status.size));
  digest.AddNumber(status.written);
}

}  // namespace

std::string StateDigest(const PlanState& state) {
  Digest digest;
  digest.AddText(state.version);
  digest.AddNumber(state.pieceCount);
  digest.AddNumber(state.options.size());
  for (const std::string& option : state.options) digest.AddText(option);
  for (const project::InputFile& input : state.inputs)
    AddInput(input, IsDocument(input, state.inputs), digest);
  return digest.GetDigits(kStateDigits);
}

std::string PlanId(const PlanState& state, std::span<const FrameRange> ranges) {
  Digest cuts;
  for (const FrameRange& range : ranges) {
    cuts.AddNumber(static_cast<std::uint64_t>(range.first));
    cuts.AddNumber(static_cast<std::uint64_t>(range.end));
  }
  return StateDigest(state) + cuts.GetDigits(kCutDigits);
}

bool IsPlanOf(const std::string& plan, const PlanState& state) {
  return plan.size() == kStateDigits + kCutDigits && plan.starts_with(StateDigest(state));
}

}  // namespace vrx::host
