// A device of a test's own, so that no fault in the code under test can harm one of the system's.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <string>

/// Makes a device on which every write finds no room. False where this user may make none or the file system
/// lets none be opened.
inline bool MakeFullDevice(const std::string& path) {
  constexpr unsigned kMemoryDevices = 1;
  constexpr unsigned kFull = 7;
  if (mknod(path.c_str(), S_IFCHR | 0666, makedev(kMemoryDevices, kFull)) != 0) return false;
  const int device = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (device < 0) {
    unlink(path.c_str());
    return false;
  }
  close(device);
  return true;
}
