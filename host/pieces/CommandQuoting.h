// Writes command lines for a shell and for a makefile, whatever the names in them. The plan of pieces prints
// them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vrx::host {

/// The words as one line that a POSIX shell reads as these words. None of them may hold a line end.
std::string ShellLine(const std::vector<std::string>& words);

/// How MakeTarget writes =, which would make an assignment of a rule, and the line that defines it.
inline constexpr char kMakeEquals[] = "$(equals)";
inline constexpr char kMakeEqualsDefinition[] = "equals := =\n";

/// A name of a file as target or prerequisite of a rule of GNU make. Nothing for names that make cannot have:
/// with %, ;, | or a tab, or with a backslash at the end.
std::optional<std::string> MakeTarget(const std::string& path);

/// A line of a shell as a recipe.
std::string MakeRecipe(const std::string& line);

}  // namespace vrx::host
