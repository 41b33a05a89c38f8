// Runs the command line program as a user would and gives back what it printed.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

struct VrxResult {
  int status = -1;  // exit status, or minus the signal that ended it
  std::string output;
  std::string errors;
};

struct VrxCall {
  std::vector<std::string> arguments;
  long fileSizeLimit = -1;  // bytes, as RLIMIT_FSIZE; -1 for none
  std::string program;      // another copy of the program; empty for the built one
  std::string output;       // file that standard output goes to; kClosed for none; empty to read it
  int linesRead = -1;       // of standard output, which is closed after them; -1 for all
  std::string input;        // on standard input
  static constexpr char kClosed[] = "-";
  /// Gets each line of standard output as it comes, with the process, to which it may send signals.
  std::function<void(const std::string& line, pid_t process)> onLine;
};

VrxResult RunVrx(const VrxCall& call);

/// Copies the program into the folder, with the module of its commands or without it, but no engine. Gives
/// the path of the copy.
enum class VrxParts { ProgramAlone, ProgramAndCommands };
std::string CopyVrx(const std::filesystem::path& folder, VrxParts parts = VrxParts::ProgramAndCommands);
