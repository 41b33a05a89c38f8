// Folders that the system, the user and this installation provide for programs.
#pragma once

#include <cstdint>

#include "vrx/XpString.h"

enum : std::int32_t {
  XpFolderTemporary = 0,
  XpFolderPictures = 1,
  XpFolderVideos = 2,
  XpFolderMusic = 3,
  XpFolderDocuments = 4,
  XpFolderDesktop = 5,
  XpFolderCommonPictures = 6,
  XpFolderCommonVideos = 7,
  XpFolderCommonMusic = 8,
  XpFolderCommonDocuments = 9,
  XpFolderCommonDesktop = 10,
  XpFolderAppData = 11,
  XpFolderLocalAppData = 12,
  XpFolderExecutable = 13,
  XpExecutablePath = 14,
  XpFolderProfile = 15,
  XpFolderCommonAppData = 16,
  XpFolderCommonPrograms = 17,
  XpFolderProgramFiles = 18,
};

/// A native path without a trailing slash; empty when the system has no such folder, as for the common media
/// folders and the common desktop. The user's pictures, videos and music are made when missing.
XpString XpGetSpecialFolder(std::int32_t kind);

/// XpFolderAppData with up to three folders below it, made when missing; an empty first or third one is left
/// out.
XpString XpGetAppDataPath(const XpString& first, const XpString& second, const XpString& third);

enum : std::int32_t { XpLibraryInstalled = 0, XpLibrarySystem = 1, XpLibraryAsGiven = 2 };

/// Path of a library to load. With no known installation the first place gives the bare name; so does any
/// place not named above.
XpString XpLibraryPath(const XpString& name, std::int32_t place);

/// Where this program is installed; empty when it is not known.
using XpInstalledLocation = XpString (*)();
/// Set by the layer that reads the settings; null unsets it. Thread-safe.
void XpSetInstalledLocation(XpInstalledLocation location);
