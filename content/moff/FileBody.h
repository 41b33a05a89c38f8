// The body of one entry of a .moff container, in memory, and how bodies are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "content/moff/TagVisitor.h"
#include "foundation/file/XpMemoryFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "vrx/XpResult.h"

namespace vrx::moff {

struct FileBody {
  std::uint32_t kind = 0;
  std::uint32_t size = 0;  // with its head of eight bytes
  XpSharedPtr<XpMemoryFile> data;
};

/// The most that a body can hold, since its size has 32 bits.
inline constexpr std::uint64_t kMostBodyBytes = UINT32_MAX - BodyHead::kSize;

/// Copies `data`. XpErrInvalidArgument when it is too long for a body, XpErrOutOfMemory.
XpResult MakeBody(std::uint32_t kind, std::span<const std::byte> data, XpSharedPtr<FileBody>& body);

/// The part of a file in which bodies lie: from the end of all tables to its own end.
struct BodyRange {
  std::int64_t first = 0;
  std::int64_t end = 0;
};

/// Reads the head of the body at `position`, and sets it as far as it could be read. XpErrMalformedRecord for
/// a body inside the tables or a size below that of the head; XpErrFailed for an unknown kind and for a body
/// that the file does not hold completely.
XpResult ReadBodyHead(XpAbstractFile& file, const BodyRange& range, std::int64_t position, BodyHead& head);
/// The data of a body whose head was read, in a block for free(). XpErrFailed, or XpErrOutOfMemory.
XpResult ReadBodyData(XpAbstractFile& file, std::int64_t position, const BodyHead& head, void*& block);
/// The same as a body in memory.
XpResult ReadBody(XpAbstractFile& file, std::int64_t position, const BodyHead& head,
                  XpSharedPtr<FileBody>& body);

/// The data of the group's first body of this kind, in a block for free() of at least one byte. Null when
/// there is none, or when it cannot be read. Bodies that are in memory already are copied, so that `file` may
/// be null when all of them are.
void* ReadFirstBody(XpAbstractFile* file, const BodyRange& range, const GroupTag& group, std::uint32_t kind,
                    std::int64_t& size);

}  // namespace vrx::moff
