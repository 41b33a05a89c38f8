#include "content/probe/AviProbe.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "imaging/tags/StreamWindow.h"

namespace vrx::formats {
namespace {

constexpr std::int64_t kFileHead = 12;  // "RIFF", a size and "AVI "
constexpr std::int64_t kChunkHead = 8;  // an id and a size
constexpr std::int64_t kFormBytes = 4;
/// The headers come first in real files, after a few chunks at most.
constexpr int kMostChunks = 4096;

/// Positions of the file. A search begins at the first and ends at the second.
struct Stretch {
  std::int64_t position = 0;
  std::int64_t end = 0;
};

struct Chunk {
  std::array<char, 4> id{};
  std::int64_t size = 0;
  std::int64_t body = 0;  // its position

  bool Is(std::string_view name) const { return std::string_view(id.data(), id.size()) == name; }
};

/// Chunks as RIFF files have them: side by side, and inside those that are called LIST.
class ChunkSearch {
 public:
  explicit ChunkSearch(XpAbstractFile& file) : m_window(file) {}

  std::int64_t FileSize() const { return m_window.GetSize(); }
  bool Read(std::int64_t position, std::span<char> bytes) {
    return m_window.Read(position, {reinterpret_cast<std::uint8_t*>(bytes.data()), bytes.size()});
  }
  /// `list` is what lies in the next list of this form; `where` goes on after it.
  bool FindList(Stretch& where, std::string_view form, Stretch& list);
  /// The next chunk with this id that is not empty. An empty chunk ends the search.
  bool FindChunk(Stretch& where, std::string_view id, Stretch& body);

 private:
  bool ReadChunk(const Stretch& where, Chunk& chunk);

  imaging::StreamWindow m_window;
  int m_chunks = 0;
};

bool ChunkSearch::ReadChunk(const Stretch& where, Chunk& chunk) {
  std::array<char, kChunkHead> head{};
  if (where.end - where.position < kChunkHead || ++m_chunks > kMostChunks) return false;
  if (!Read(where.position, head)) return false;
  std::copy_n(head.begin(), chunk.id.size(), chunk.id.begin());
  chunk.size = 0;
  for (std::size_t i = head.size(); i > chunk.id.size(); --i) {
    chunk.size = chunk.size << 8 | static_cast<std::uint8_t>(head[i - 1]);
  }
  chunk.body = where.position + kChunkHead;
  return true;
}

/// After the chunk; one that is no list is filled up to an even size.
std::int64_t EndOf(const Chunk& chunk) {
  return chunk.body + chunk.size + (chunk.Is("LIST") ? 0 : chunk.size % 2);
}

bool ChunkSearch::FindList(Stretch& where, std::string_view form, Stretch& list) {
  for (Chunk chunk; ReadChunk(where, chunk); where.position = EndOf(chunk)) {
    if (!chunk.Is("LIST")) continue;
    std::array<char, kFormBytes> found{};
    if (!Read(chunk.body, found)) return false;
    if (std::string_view(found.data(), found.size()) != form) continue;
    where.position = EndOf(chunk);
    list = {chunk.body + kFormBytes, std::min(where.position, where.end)};
    return true;
  }
  return false;
}

bool ChunkSearch::FindChunk(Stretch& where, std::string_view id, Stretch& body) {
  for (Chunk chunk; ReadChunk(where, chunk) && chunk.size != 0; where.position = EndOf(chunk)) {
    if (!chunk.Is(id)) continue;
    where.position = EndOf(chunk);
    body = {chunk.body, std::min(chunk.body + chunk.size, where.end)};
    return true;
  }
  return false;
}

FormatCode CodeOfHandler(std::string_view handler) {
  if (handler == "dvsd") return kAviDv;
  return handler == "MJPG" || handler == "mjpg" ? kAviMotionJpeg : kUnknown;
}

}  // namespace

FormatCode CheckAvi(XpAbstractFile& file) {
  ChunkSearch search(file);
  std::array<char, kFileHead> head{};
  if (!search.Read(0, head)) return kUnknown;
  const std::string_view start(head.data(), head.size());
  if (!start.starts_with("RIFF") || !start.ends_with("AVI ")) return kUnknown;
  Stretch whole{kFileHead, search.FileSize()}, headers, ignored, stream;
  if (!search.FindList(whole, "hdrl", headers) || !search.FindChunk(headers, "avih", ignored)) {
    return kUnknown;
  }
  while (search.FindList(headers, "strl", stream)) {
    Stretch kind;
    std::array<char, 8> bytes{};  // the type of the stream and its handler
    if (!search.FindChunk(stream, "strh", kind) || !search.Read(kind.position, bytes)) continue;
    const std::string_view type(bytes.data(), 4), handler(bytes.data() + 4, 4);
    if (type == "vids" || type == "iavs") return CodeOfHandler(handler);
  }
  return kUnknown;
}

}  // namespace vrx::formats
