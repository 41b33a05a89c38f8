#include "host/Commands.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "foundation/platform/Paths.h"
#include "foundation/registry/RegistryStore.h"
#include "foundation/registry/SfRegistry.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

enum class ConfigAction { Get, Set, List, Unset };

struct ConfigOptions {
  ConfigAction action = ConfigAction::List;
  std::string key;   // below the product's key, or from "Software" on; either separator
  std::string name;  // of a value; empty for the whole key
  std::string value;
  bool isText = false;  // store digits as a text, not as a number
  bool machine = false;
};

using namespace registry;

XpString Wide(const std::string& text) { return platform::PathFromNative(text); }

XpString ProductKey() { return SfRegistryKeyPath(u"LBR", XpString(), XpString()); }

/// Readers of settings turn the separators in names as well.
XpString Turned(std::string text) {
  std::replace(text.begin(), text.end(), '/', '\\');
  return Wide(text);
}

bool IsAtOrBelow(const XpString& key, const XpString& path) {
  const XpString below = path + u"\\";
  return XpCompareNoCase(key, path) == 0 || XpCompareNoCase(key.Left(below.Length()), below) == 0;
}

XpString KeyPath(const std::string& text) {
  const XpString path = NormalKeyPath(Turned(text));
  if (IsAtOrBelow(path, u"Software")) return path;
  return path.IsEmpty() ? ProductKey() : ProductKey() + u"\\" + path;
}

/// A number of 32 bits in decimal or, after 0x, in hexadecimal.
std::optional<std::uint32_t> ParseNumber(const std::string& text) {
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  const char* first = text.data() + (isHex ? 2 : 0);
  const char* last = text.data() + text.size();
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(first, last, number, isHex ? 16 : 10);
  return error == std::errc() && end == last ? std::optional(number) : std::nullopt;
}

std::string TextOf(const Value& value) {
  if (const auto* text = std::get_if<XpString>(&value)) return Utf8(*text);
  if (const auto* foreign = std::get_if<ForeignValue>(&value)) return foreign->json;
  return std::to_string(std::get<std::uint32_t>(value));
}

int NoSuchSetting(const ConfigOptions& options, const XpString& path) {
  Say("there is no setting " + (options.name.empty() ? "" : options.name + " in ") + Utf8(path) + " of " +
      Utf8(StorePath(options.machine ? Root::LocalMachine : Root::CurrentUser)));
  return kFailed;
}

int Get(const ConfigOptions& options, Root root, const XpString& path) {
  const Document document = ReadStore(root);
  const Value* value = document.Find(path, Turned(options.name));
  if (value == nullptr) return NoSuchSetting(options, path);
  std::puts(TextOf(*value).c_str());
  return kDone;
}

int List(const ConfigOptions& options, Root root, const XpString& path) {
  for (const auto& [key, values] : ReadStore(root).keys) {
    if (!options.key.empty() && !IsAtOrBelow(key, path)) continue;
    std::printf("[%s]\n", Utf8(key).c_str());
    for (const auto& [name, value] : values) {
      const char* quote = std::holds_alternative<XpString>(value) ? "\"" : "";
      std::printf("  %s = %s%s%s\n", Utf8(name).c_str(), quote, TextOf(value).c_str(), quote);
    }
  }
  return kDone;
}

int Change(Root root, const std::function<bool(Document&)>& change) {
  if (ChangeStore(root, change) == XpOk) return kDone;
  Say("cannot write " + Utf8(StorePath(root)));
  return kFailed;
}

int Set(const ConfigOptions& options, Root root, const XpString& path) {
  const auto number = options.isText ? std::nullopt : ParseNumber(options.value);
  return Change(root, [&](Document& document) {
    document.keys[path][Turned(options.name)] = number ? Value(*number) : Value(Wide(options.value));
    return true;
  });
}

int Unset(const ConfigOptions& options, Root root, const XpString& path) {
  bool found = false;
  const int status = Change(root, [&](Document& document) {
    if (options.name.empty()) {
      found =
          std::erase_if(document.keys, [&](const auto& key) { return IsAtOrBelow(key.first, path); }) != 0;
    } else if (const auto key = document.keys.find(path); key != document.keys.end()) {
      found = key->second.erase(Turned(options.name)) != 0;
    }
    return found;
  });
  return status == kDone && !found ? NoSuchSetting(options, path) : status;
}

int RunConfig(const ConfigOptions& options) {
  const Root root = options.machine ? Root::LocalMachine : Root::CurrentUser;
  const XpString path = KeyPath(options.key);
  switch (options.action) {
    case ConfigAction::Get:
      return Get(options, root, path);
    case ConfigAction::Set:
      return Set(options, root, path);
    case ConfigAction::Unset:
      return Unset(options, root, path);
    default:
      return List(options, root, path);
  }
}

CLI::App* AddConfigAction(CLI::App& config, ConfigOptions& options, const char* name, const char* help,
                          ConfigAction action) {
  CLI::App* command = config.add_subcommand(name, help);
  command->callback([&options, action] { options.action = action; });
  command->add_flag("--machine", options.machine, "The settings of all users");
  return command;
}

}  // namespace

CommandRun AddConfig(CLI::App& config) {
  const auto options = std::make_shared<ConfigOptions>();
  config.require_subcommand(1);
  const char* keyHelp = "The key, like Common/Settings, below the product's own or from Software on";
  CLI::App* get = AddConfigAction(config, *options, "get", "Print a setting", ConfigAction::Get);
  get->add_option("KEY", options->key, keyHelp)->required();
  get->add_option("NAME", options->name, "The setting")->required();
  CLI::App* set = AddConfigAction(config, *options, "set", "Store a setting", ConfigAction::Set);
  set->add_option("KEY", options->key, keyHelp)->required();
  set->add_option("NAME", options->name, "The setting")->required();
  set->add_option("VALUE", options->value, "A number of 32 bits (decimal, or 0x and hexadecimal) or a text")
      ->required();
  set->add_flag("--text", options->isText, "Store a number as a text");
  CLI::App* list = AddConfigAction(config, *options, "list", "Print all settings", ConfigAction::List);
  list->add_option("KEY", options->key, "Only this key and those below it");
  CLI::App* unset =
      AddConfigAction(config, *options, "unset", "Remove a setting or a key", ConfigAction::Unset);
  unset->add_option("KEY", options->key, keyHelp)->required();
  unset->add_option("NAME", options->name, "The setting; without it the key and all below it are removed");
  config.footer("Exit status: 0 done, 1 there is no such setting or it cannot be written, 2 wrong use.");
  return [options] { return RunConfig(*options); };
}

}  // namespace vrx::host
