#include "imaging/tags/XpTiffTagManager.h"

#include <algorithm>
#include <charconv>
#include <new>

#include "imaging/tags/TagNames.h"
#include "imaging/tags/TagReading.h"
#include "imaging/tags/TagWriting.h"

using namespace vrx::imaging;

XpTiffTagManager::XpTiffTagManager() = default;
XpTiffTagManager::~XpTiffTagManager() = default;

bool XpTiffTagManager::Create() {
  Clear();
  root = std::make_unique<XpTiffTagDataIFD>(std::uint16_t{0}, 0u);
  return true;
}

bool XpTiffTagManager::Load(XpAbstractFile& stream, std::int32_t mode) {
  return ReadTagTree(stream, {.mode = mode}, *this);
}

std::int64_t XpTiffTagManager::Store(XpAbstractFile& stream) {
  std::int64_t written = 0;
  return WriteTagTree(stream, *this, written) == XpOk ? written : -1;
}

void XpTiffTagManager::Clear() {
  root.reset();
  faults.clear();
}

std::unique_ptr<XpTiffTagManager> XpTiffTagManager::Clone() const {
  auto copy = std::make_unique<XpTiffTagManager>();
  copy->bigEndian = bigEndian;
  copy->previewOffset = previewOffset;
  copy->previewSize = previewSize;
  copy->faults = faults;
  if (root != nullptr) copy->root = std::make_unique<XpTiffTagDataIFD>(*root);
  if (const std::int64_t size = xmp.GetSize(); size > 0) {
    // Throws as the tree does, so that no copy lacks a part.
    if (copy->xmp.Write(xmp.GetData(), static_cast<std::uint64_t>(size), nullptr) != XpOk) {
      throw std::bad_alloc();
    }
    copy->xmp.Seek(0, XpSeekStart);
  }
  return copy;
}

bool XpTiffTagManager::HasIfds() const { return GetIfdCount() != 0; }

std::size_t XpTiffTagManager::GetIfdCount() const { return root == nullptr ? 0 : root->ifds.size(); }

XpTiffTagIFD* XpTiffTagManager::GetIfd(std::size_t index) const {
  return index < GetIfdCount() ? root->ifds[index].get() : nullptr;
}

XpTiffTagIFD* XpTiffTagManager::GetExifIfd() const {
  const XpTiffTagIFD* first = GetIfd(0);
  return first == nullptr ? nullptr : first->GetSubIfd(kTagExifIfd);
}

XpTiffTagIFD* XpTiffTagManager::GetGpsIfd() const {
  const XpTiffTagIFD* first = GetIfd(0);
  return first == nullptr ? nullptr : first->GetSubIfd(kTagGpsIfd);
}

XpTiffTagIFD* XpTiffTagManager::GetMakerIfd() const {
  const XpTiffTagIFD* exif = GetExifIfd();
  return exif == nullptr ? nullptr : exif->GetSubIfd(kTagMakerNote);
}

XpTiffTagIFD* XpTiffTagManager::GetMakerSubIfd() const {
  const XpTiffTagIFD* maker = GetMakerIfd();
  return maker == nullptr ? nullptr : maker->GetSubIfd(kTagMakerSubIfd);
}

XpTiffTagDataBase* XpTiffTagManager::FindTag(std::uint16_t tag) const {
  for (std::size_t i = 0; i < GetIfdCount(); ++i) {
    if (XpTiffTagDataBase* found = root->ifds[i]->FindTag(tag, true)) return found;
  }
  return nullptr;
}

bool XpTiffTagManager::HasLosses() const {
  return std::ranges::any_of(faults, [](const vrx::imaging::TagFault& fault) { return fault.isLoss; });
}

std::int32_t XpTiffTagManager::GetExifVersionNumber() const {
  const XpTiffTagIFD* exif = GetExifIfd();
  const XpTiffTagDataBase* version = exif == nullptr ? nullptr : exif->FindTag(kTagExifVersion, false);
  if (version == nullptr) return 0;
  const XpNarrowString text = version->ToString(0);
  std::int32_t number = 0;
  std::from_chars(text.c_str(), text.c_str() + text.Length(), number);
  return number;
}
