#include "foundation/platform/posix/NewNames.h"

#include <fcntl.h>
#include <sys/random.h>

#include <array>
#include <charconv>

#include "foundation/platform/posix/FileStatus.h"

namespace vrx::platform::posix {

std::string FolderOf(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

std::error_code RandomPathBeside(const std::string& target, std::string& path) {
  constexpr int kHexadecimal = 16;
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof(number), 0) != sizeof(number)) return LastCode();
  std::array<char, 2 * sizeof(number)> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), number, kHexadecimal).ptr;
  path = FolderOf(target) + ".vrx-" + std::string(digits.begin(), end);
  return {};
}

std::error_code MakeFileBeside(const std::string& target, mode_t mode, std::string& path, int& file) {
  constexpr int kMostNames = 100;
  for (int i = 0; i < kMostNames; ++i) {
    if (const auto error = RandomPathBeside(target, path)) return error;
    file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
    if (file >= 0) return {};
    if (errno != EEXIST) return LastCode();
  }
  return ErrnoCode(EEXIST);
}

}  // namespace vrx::platform::posix
