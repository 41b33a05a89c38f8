// How the command line speaks: the form of its messages, for people and as JSON.
#pragma once

#include <exception>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "vrx/XpString.h"

namespace vrx::host {

using Json = nlohmann::ordered_json;

/// Exit statuses of the program.
enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUse = 2, kCancelled = 130 };

/// For JSON and for the system. What a terminal shows goes through Plain.
std::string Utf8(const XpString& text);

/// UTF-8 text with a question mark in place of each character that could control the terminal or reverse the
/// text on it: control characters, delete, and overrides of the writing direction. `keepsLines` lets line
/// feeds and tabs through.
std::string Masked(std::string_view text, bool keepsLines = false);
std::string Plain(const XpString& text);

/// The name of a file without its folder, in UTF-8.
std::string FileName(const XpString& path);

/// "0x8111", as codes are written everywhere.
std::string CodeText(std::uint32_t code);

/// Writes "vrx: " and the line, masked, to stderr.
void Say(std::string_view line);
/// Says "error: " and the cause. Gives the exit status kFailed.
int Fail(const std::string& cause);

/// Says that the machine has too little of something. Gives the exit status kFailed.
int FailForResources(const std::exception& error);

/// Writes the document and a line end to stdout. Bytes of file names that are no UTF-8 are replaced.
void PrintJson(const Json& document, int indent);

/// Writes out what stdout still holds. False when it, or something before, could not be written.
bool FlushOutput();

/// "1:02:03" or "4:05".
std::string ClockText(double seconds);

}  // namespace vrx::host
