// Runs the command line program as a user would and gives back what it printed.
#pragma once

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
  /// Hears each line of standard output as it comes, with the process, which it may send signals to.
  std::function<void(const std::string& line, pid_t process)> onLine;
};

VrxResult RunVrx(const VrxCall& call);
