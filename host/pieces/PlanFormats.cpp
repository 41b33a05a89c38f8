#include "host/pieces/PlanFormats.h"

#include <optional>

#include "host/pieces/CommandQuoting.h"

namespace vrx::host {
namespace {

struct Commands {
  std::vector<PlannedPiece> pieces;
  std::vector<std::string> join;
};

std::string ShellText(const Commands& commands) {
  std::string text;
  for (const PlannedPiece& piece : commands.pieces) text += ShellLine(piece.command) + "\n";
  return text + ShellLine(commands.join) + "\n";
}

std::string JsonDocument(const PiecePlan& plan, const Commands& commands) {
  Json document{{"movie", plan.movie}, {"id", plan.id}, {"pieces", Json::array()}};
  for (const PlannedPiece& piece : commands.pieces) {
    Json entry{{"piece", piece.piece}, {"track", piece.piece == 0 ? "audio" : "video"}};
    if (piece.piece != 0) {
      entry["firstFrame"] = piece.range.first;
      entry["frames"] = piece.range.end - piece.range.first;
    }
    entry["output"] = piece.output;
    entry["command"] = piece.command;
    document["pieces"].push_back(entry);
  }
  document["join"] = {{"output", plan.movie}, {"command", commands.join}};
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// The movie is the first target, so that it is what make makes.
std::optional<std::string> MakeText(const PiecePlan& plan, const Commands& commands) {
  const auto project = MakeTarget(plan.project);
  const auto movie = MakeTarget(plan.movie);
  if (!project || !movie) return {};
  std::string rules, outputs;
  for (const PlannedPiece& piece : commands.pieces) {
    const std::string output = MakeTarget(piece.output).value_or(std::string());
    outputs += " " + output;
    rules += "\n" + output + ": " + *project + "\n\t" + MakeRecipe(ShellLine(piece.command)) + "\n";
  }
  const std::string text =
      *movie + ":" + outputs + "\n\t" + MakeRecipe(ShellLine(commands.join)) + "\n" + rules;
  const bool hasEquals = (*movie + *project).find(kMakeEquals) != std::string::npos;
  return (hasEquals ? kMakeEqualsDefinition : "") + std::string(".DELETE_ON_ERROR:\n\n") + text;
}

/// One script that submits itself twice: an array job that makes a piece in each task, and a job for the
/// join.
std::string SbatchText(const Commands& commands) {
  std::string text =
      "#!/bin/sh\n"
      "# sh SCRIPT submits the pieces as one array job, and after them the join.\n"
      "# sbatch --array=2 SCRIPT makes piece 2 again; sbatch SCRIPT join joins again.\n"
      "#SBATCH --job-name=vrx\n"
      "set -eu\n"
      "case ${1:-${SLURM_ARRAY_TASK_ID:-submit}} in\n";
  for (const PlannedPiece& piece : commands.pieces)
    text += std::to_string(piece.piece) + ") exec " + ShellLine(piece.command) + " ;;\n";
  text += "join) exec " + ShellLine(commands.join) +
          " ;;\n"
          "submit)\n"
          "  pieces=$(sbatch --parsable --array=" +
          std::to_string(commands.pieces.front().piece) + "-" + std::to_string(commands.pieces.back().piece) +
          " \"$0\")\n"
          "  sbatch --dependency=afterok:\"${pieces%%;*}\" \"$0\" join\n"
          "  ;;\n"
          "*)\n"
          "  echo \"$0: there is no piece ${1:-$SLURM_ARRAY_TASK_ID}\" >&2\n"
          "  exit 2\n"
          "  ;;\n"
          "esac\n";
  return text;
}

}  // namespace

std::string PlanDocument(const PiecePlan& plan, PlanFormat format, std::string& cause) {
  for (const std::string& path : {plan.project, plan.movie}) {
    if (path.find_first_of("\n\r") == path.npos) continue;
    cause = path + " has a line end in its name, which a command line cannot hold";
    return {};
  }
  Commands commands{ListPieces(plan, StemOf(plan.movie)), {}};
  commands.join = JoinCommandOf(plan, commands.pieces);
  switch (format) {
    case PlanFormat::JsonText:
      return JsonDocument(plan, commands);
    case PlanFormat::Sbatch:
      return SbatchText(commands);
    case PlanFormat::Make:
      if (const auto text = MakeText(plan, commands)) return *text;
      cause = "make cannot have names with a tab, %, ; or |, or with \\ at the end: " + plan.project + ", " +
              plan.movie;
      return {};
    case PlanFormat::Shell:
      break;
  }
  return ShellText(commands);
}

}  // namespace vrx::host
