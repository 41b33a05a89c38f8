// Turns the URLs of media in a timeline into paths. The reader of timelines uses it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vrx::otio {

/// The path of a file that `url` names: a URL of the scheme "file" (RFC 8089), or a path that is relative or
/// not. Escapes are decoded, but not in texts with blanks or backslashes, which are no URLs but paths as they
/// are. Characters after "#" and "?" belong to the path. A path with a drive begins with it, and one on
/// another machine begins with two backslashes. Nothing for other schemes, an empty text, and paths with a
/// zero byte.
std::optional<std::string> MediaPath(std::string_view url);

}  // namespace vrx::otio
