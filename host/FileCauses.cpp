#include "host/FileCauses.h"

#include "host/Console.h"

namespace vrx::host {
namespace {

const char* ReadWords(XpResult result) {
  switch (result) {
    case XpErrFileNotFound:
      return "it does not exist";
    case XpErrPathNotFound:
      return "its folder does not exist";
    case XpErrNotAFile:
      return "it is no file";
    case XpErrAccessDenied:
      return "no permission, or it is a folder";
    case XpErrEndOfFile:
      return "it ends too early";
    case XpErrMalformedRecord:
      return "it is damaged";
    case XpErrOutOfMemory:
      return "not enough memory";
    case XpErrNoDocument:
      return "it is no XML document";
    case XpErrWrongRoot:
      return "it is no property list";
    case XpErrImageUnusable:
      return "there is nothing in it to work on";
    case XpErrImageNoData:
      return "it does not hold what was asked for";
    case XpErrImageInvalid:
      return "it is damaged, or no picture of its format";
    case XpErrImageNotProvided:
      return "its format does not offer this";
    default:
      return "reading failed";
  }
}

const char* WriteWords(XpResult result) {
  switch (result) {
    case XpErrNotAFile:
      return "it is no file";
    case XpErrFileNotFound:
    case XpErrPathNotFound:
      return "its folder does not exist";
    case XpErrNoSuchFile:
      return "it cannot be made there";
    case XpErrAccessDenied:
      return "no permission, or it is a folder";
    case XpErrDiskFull:
      return "the disk is full";
    default:
      return "writing failed";
  }
}

}  // namespace

std::string ReadCause(XpResult result) {
  return std::string(ReadWords(result)) + " (" + CodeText(result) + ")";
}

std::string WriteCause(XpResult result) {
  return std::string(WriteWords(result)) + " (" + CodeText(result) + ")";
}

}  // namespace vrx::host
