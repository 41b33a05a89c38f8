// Which object of a timeline a JSON object is, and members that many of them have. The reader of timelines
// uses it.
#pragma once

#include <string>
#include <string_view>

#include "content/otio/JsonTree.h"

namespace vrx::otio {

enum class Schema {
  Unknown,  // also of a version that is not known
  Timeline,
  Collection,
  Stack,
  Track,
  Clip,
  Gap,
  Transition,
  ExternalReference,
  MissingReference,
  GeneratorReference,
  ImageSequence,
  TimeWarp,
  FreezeFrame,
};

/// By the member "OTIO_SCHEMA", as "Clip.2".
Schema SchemaOf(const Json& object);

/// The member as it is; null when there is none or `object` is none.
const Json& MemberOf(const Json& object, const char* key);
/// Empty for what is no string.
std::string TextOf(const Json& object, const char* key);
/// True unless the object says that it is not.
bool IsEnabled(const Json& object);

/// `text` between quotation marks on one line, and cut off where it is too long for a message.
std::string Quoted(std::string_view text);
/// Up to six digits, the same in every locale.
std::string NumberText(double number);

}  // namespace vrx::otio
