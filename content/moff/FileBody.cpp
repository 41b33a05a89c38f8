#include "content/moff/FileBody.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "content/moff/MoffTags.h"
#include "content/moff/SfStpFile.h"

namespace vrx::moff {
namespace {

struct Free {
  void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<void, Free>;

/// A block of no bytes is one of a byte, so that null always means failure.
Block Allocate(std::size_t size) { return Block(std::malloc(size == 0 ? 1 : size)); }

XpResult ReadAt(XpAbstractFile& file, std::int64_t position, void* buffer, std::size_t count) {
  if (count == 0) return XpOk;
  if (const XpResult result = file.Seek(position, XpSeekStart)) return result;
  std::uint64_t read = 0;
  const XpResult result = file.Read(buffer, count, &read);
  if (result == XpErrEndOfFile || (result == XpOk && read < count)) return XpErrFailed;
  return result;
}

XpSharedPtr<FileBody> BodyOf(const BodyHead& head, Block block) {
  XpSharedPtr<XpMemoryFile> data(head.kind == kStpBody ? new SfStpFile : new XpMemoryFile);
  data->Attach(block.release(), std::int64_t{head.size} - BodyHead::kSize, true);
  return XpSharedPtr<FileBody>(new FileBody{head.kind, head.size, data});
}

void* Copy(const XpMemoryFile& file, std::int64_t& size) {
  const auto bytes = static_cast<std::size_t>(file.GetSize());
  Block block = Allocate(bytes);
  if (block == nullptr) return nullptr;
  if (bytes != 0) std::memcpy(block.get(), file.GetData(), bytes);
  size = file.GetSize();
  return block.release();
}

}  // namespace

XpResult MakeBody(std::uint32_t kind, std::span<const std::byte> data, XpSharedPtr<FileBody>& body) {
  if (data.size() > kMostBodyBytes) return XpErrInvalidArgument;
  Block block = Allocate(data.size());
  if (block == nullptr) return XpErrOutOfMemory;
  if (!data.empty()) std::memcpy(block.get(), data.data(), data.size());
  body = BodyOf({kind, static_cast<std::uint32_t>(data.size()) + BodyHead::kSize}, std::move(block));
  return XpOk;
}

XpResult ReadBodyHead(XpAbstractFile& file, const BodyRange& range, std::int64_t position, BodyHead& head) {
  head = {};
  if (position < range.first) return XpErrMalformedRecord;
  if (range.end - position < BodyHead::kSize) return XpErrFailed;
  Bytes<BodyHead::kSize> bytes;
  if (const XpResult result = ReadAt(file, position, bytes.data(), bytes.size())) return result;
  head = Decode<BodyHead>(bytes);
  if (head.kind != kJpegBody && head.kind != kStpBody && head.kind != kBinaryBody) return XpErrFailed;
  if (head.size < BodyHead::kSize) return XpErrMalformedRecord;
  return head.size > range.end - position ? XpErrFailed : XpOk;
}

XpResult ReadBodyData(XpAbstractFile& file, std::int64_t position, const BodyHead& head, void*& block) {
  const std::size_t size = head.size - BodyHead::kSize;
  Block data = Allocate(size);
  if (data == nullptr) return XpErrOutOfMemory;
  if (const XpResult result = ReadAt(file, position + BodyHead::kSize, data.get(), size)) return result;
  block = data.release();
  return XpOk;
}

XpResult ReadBody(XpAbstractFile& file, std::int64_t position, const BodyHead& head,
                  XpSharedPtr<FileBody>& body) {
  void* block = nullptr;
  if (const XpResult result = ReadBodyData(file, position, head, block)) return result;
  body = BodyOf(head, Block(block));
  return XpOk;
}

void* ReadFirstBody(XpAbstractFile* file, const BodyRange& range, const GroupTag& group, std::uint32_t kind,
                    std::int64_t& size) {
  for (const auto& entry : group.child->GetChildren()) {
    if (entry->body) {
      if (entry->body->kind == kind) return Copy(*entry->body->data, size);
      continue;
    }
    const std::int64_t position = group.child->position + entry->record.position;
    BodyHead head;
    const XpResult result = file == nullptr ? XpErrNotOpen : ReadBodyHead(*file, range, position, head);
    if (head.kind != kind) continue;
    void* block = nullptr;
    if (result != XpOk || ReadBodyData(*file, position, head, block) != XpOk) return nullptr;
    size = std::int64_t{head.size} - BodyHead::kSize;
    return block;
  }
  return nullptr;
}

}  // namespace vrx::moff
