// The sidecar that the files of a stem share, clip.modd or shot.rodd: when it is no longer needed. Saving,
// which gives each file a sidecar of its own, asks here.
#pragma once

#include "vrx/XpString.h"

inline constexpr char16_t kXpSidecarExtension[] = u".modd";

/// The path of the shared sidecar of this media file.
XpString XpSharedSidecarPath(const XpString& contentPath);

/// Deletes the shared sidecar of this media file when every content of the stem that may read it has a
/// sidecar of its own: of a RAW file, which other contents never share theirs with, the RAW files. It stays
/// where something of the stem is not known: a media file that cannot be read may still need it. A failure to
/// delete is not reported.
void XpRemoveUnneededSharedSidecar(const XpString& contentPath);
