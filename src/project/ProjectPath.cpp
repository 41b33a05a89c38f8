#include "src/project/ProjectPath.h"

#include <algorithm>
#include <string>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"

namespace vrx::project {

XpString ResolvePath(const XpString& projectPath, const XpString& path) {
  if (path.IsEmpty()) return path;
  XpString absolute = path;
  if (!XpPathIsAbsolute(path)) {
    // Inside a native path a backslash would be part of a name; in a relative one it divides folders.
    std::u16string relative(path.AsView());
    std::replace(relative.begin(), relative.end(), u'\\', u'/');
    absolute = XpPathJoin(XpPathDirectory(platform::AbsolutePath(projectPath)), XpString(relative));
  }
  const std::string native = platform::NativePath(absolute);
  return native.empty() ? absolute : platform::PathFromNative(native);
}

}  // namespace vrx::project
