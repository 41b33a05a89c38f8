// Asks what a file is that holds any bytes. Its first byte chooses the ending. A code must be one that the
// ending allows for, the kind must come with a reason that can be printed, and the two must not contradict
// each other.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "content/formats/FormatNames.h"
#include "content/formats/XpFormatChecker.h"
#include "content/probe/ContentKind.h"
#include "content/probe/DeepCheck.h"
#include "fuzz/FuzzFile.h"

namespace {

using namespace vrx::formats;

void Require(bool holds) {
  if (!holds) std::abort();
}

/// A file for each ending.
std::vector<std::unique_ptr<FuzzFile>> MakeFiles() {
  std::vector<std::unique_ptr<FuzzFile>> files;
  for (const ExtensionFormat& row : GetExtensionTable()) {
    const std::string name = "a" + vrx::textcodec::ToUtf8(row.extension);
    files.push_back(std::make_unique<FuzzFile>(name.c_str()));
  }
  return files;
}

void CheckCode(FormatCode code, FormatCode byName, const ContentKind& kind) {
  Require(code == kUnknown || FamilyOf(code) == FamilyOf(byName));
  Require(code == kUnknown || FormatName(code) != FormatName(kUnknown));
  const bool isProgram = code == kMpeg1Program || (code == kMpeg2Program && byName == kMpeg);
  Require(!isProgram || kind.name == FormatName(code));
  const bool isAvi = code == kAviDv || code == kAviMotionJpeg;
  Require(!isAvi || kind.name == "AVI movie");
  Require(byName != kGif || kind.name != "GIF animation" || code == kGifAnimation);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<std::unique_ptr<FuzzFile>> files = MakeFiles();
  if (size == 0) return 0;
  const XpString path = files[data[0] % files.size()]->Write(data + 1, size - 1);
  ContentKind kind;
  Require(FindContentKind(path, kind) == XpOk);
  Require(!kind.name.empty() && !kind.why.empty());
  Require(std::ranges::all_of(kind.why, [](char c) { return c >= ' ' && c <= '~'; }));
  const FormatCode code = CheckFormat(path);
  CheckCode(code, XpFormatChecker::GetFormatFromName(path), kind);
  Require(CheckFormat(path) == code);
  return 0;
}
