// The tags of a picture: the tree of its IFDs with the byte order it was read in. All picture formats give
// their tags as one of these, shared through XpSharedPtr.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/tags/TagFault.h"
#include "imaging/tags/XpTiffTagIFD.h"

/// How the maker note is read.
enum : std::int32_t {
  XpTagModeKnownNotes = 0,  // as an IFD after a known signature, else as plain bytes
  XpTagModeNoNotes = 1,     // as plain bytes
  XpTagModeAllNotes = 2,    // as an IFD, as in RAW formats
};

/// Belongs to one thread at a time.
class XpTiffTagManager {
 public:
  XpTiffTagManager();
  XpTiffTagManager(const XpTiffTagManager&) = delete;
  XpTiffTagManager& operator=(const XpTiffTagManager&) = delete;

  virtual ~XpTiffTagManager();
  /// An empty tree to be filled. Always true.
  virtual bool Create();
  /// Reads the tree whose TIFF header stands at the position of the stream; see ReadTagTree. False when there
  /// is no header; whatever else is damaged, the tags before it stay.
  virtual bool Load(XpAbstractFile& stream, std::int32_t mode);
  /// Writes the tree at the position of the stream, and leaves it sorted. The bytes written, 0 for no tree,
  /// and -1 when writing fails or the tree is too large for 32-bit offsets; see WriteTagTree.
  virtual std::int64_t Store(XpAbstractFile& stream);
  /// Drops the tree and its faults.
  virtual void Clear();
  virtual std::unique_ptr<XpTiffTagManager> Clone() const;
  virtual bool HasIfds() const;

  std::size_t GetIfdCount() const;
  // Null when there is no such IFD.
  XpTiffTagIFD* GetIfd(std::size_t index) const;
  XpTiffTagIFD* GetExifIfd() const;
  XpTiffTagIFD* GetGpsIfd() const;
  XpTiffTagIFD* GetMakerIfd() const;
  XpTiffTagIFD* GetMakerSubIfd() const;
  /// In all IFDs, in order; null when there is none.
  XpTiffTagDataBase* FindTag(std::uint16_t tag) const;
  /// The Exif version as a number, such as 230; 0 when there is none.
  std::int32_t GetExifVersionNumber() const;
  /// Something that the file holds is missing in the tree, and would be lost if the tree were written.
  bool HasLosses() const;

  std::unique_ptr<XpTiffTagDataIFD> root;  // null when there is no tree
  bool bigEndian = false;
  // The preview of a maker note, from the TIFF header. 0 when there is none.
  std::uint32_t previewOffset = 0;
  std::uint32_t previewSize = 0;
  XpMemoryFile xmp;                            // XMP bytes of the picture; Store does not write them
  std::vector<vrx::imaging::TagFault> faults;  // what Load could not take over
};
