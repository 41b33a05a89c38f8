// Paths as the records carry them (UTF-16) become the bytes that the system understands. Used by the plans.
#pragma once

#include <string>
#include <string_view>

namespace vrx::engine {

/// A path that begins with "/" is native. In every other form backslashes become slashes and the drive Z: is
/// the root; "" when the path is empty or names another drive or a server, which do not exist here.
std::string NativePath(std::u16string_view path);

/// The extension of `path` after its last dot, in lower-case ASCII; "" when there is none.
std::string LowerExtension(std::string_view path);

}  // namespace vrx::engine
