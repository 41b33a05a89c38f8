#include "engine/SourcePath.h"

#include <algorithm>

#include "vrx/XpTextCodec.h"

namespace vrx::engine {
namespace {

constexpr char kRootDrive = 'z';

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string NativePath(std::u16string_view path) {
  std::string bytes = textcodec::ToUtf8(path);
  if (bytes.empty() || bytes.front() == '/') return bytes;
  std::replace(bytes.begin(), bytes.end(), '\\', '/');
  if (bytes.starts_with("//")) return {};  // a server is no local folder
  const char drive = LowerAscii(bytes.front());
  if (bytes.size() < 2 || bytes[1] != ':' || drive < 'a' || drive > 'z') return bytes;
  if (drive != kRootDrive) return {};
  bytes.erase(0, 2);
  if (bytes.empty() || bytes.front() != '/') bytes.insert(bytes.begin(), '/');
  return bytes;
}

std::string LowerExtension(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const std::size_t dot = name.rfind('.');
  if (dot == std::string_view::npos) return {};
  std::string extension(name.substr(dot + 1));
  std::transform(extension.begin(), extension.end(), extension.begin(), LowerAscii);
  return extension;
}

}  // namespace vrx::engine
