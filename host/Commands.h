// The commands of `vrx`. Each function gives a command its options, and what it returns runs the command.
#pragma once

#include "host/CommandRow.h"

namespace vrx::host {

/// Renders a project through the library as any other host would.
CommandRun AddRender(CLI::App& command);

/// The movie of clips, pictures and sound without a document.
CommandRun AddMake(CLI::App& command);

/// A project document of clips, or of the timeline of an editor, to go on by hand.
CommandRun AddNew(CLI::App& command);

/// The timeline of a project, its output and everything that is wrong with it, without rendering.
CommandRun AddCheck(CLI::App& command);

/// Commands that render a movie in pieces, for any program that runs jobs.
CommandRun AddPlan(CLI::App& command);

/// The movie of rendered pieces.
CommandRun AddJoin(CLI::App& command);

/// What one frame of the movie will look like, without rendering the others.
CommandRun AddFrame(CLI::App& command);

/// Shows and changes the settings that the library and its hosts read.
CommandRun AddConfig(CLI::App& config);

/// Shows the log of the current run, and new entries as they arrive.
CommandRun AddLogs(CLI::App& command);

/// Shows and checks the container of binary data beside a content, and takes data out of it.
CommandRun AddMoff(CLI::App& moff);

/// What files are, whatever they are called.
CommandRun AddProbe(CLI::App& command);

/// Which pictures a multi-picture file holds, and takes them out of it.
CommandRun AddMpo(CLI::App& mpo);

/// What the tags of pictures say.
CommandRun AddTags(CLI::App& command);

/// Format, sizes, profile and segments of pictures.
CommandRun AddInfo(CLI::App& command);

/// Small pictures of pictures.
CommandRun AddThumb(CLI::App& command);

/// Changes tags of pictures in their files.
CommandRun AddEdit(CLI::App& command);

/// The preview of a RAW file, and its position.
CommandRun AddRaw(CLI::App& raw);

/// Which files of a folder belong together.
CommandRun AddContents(CLI::App& command);

/// The metadata beside a content, shown and changed.
CommandRun AddModd(CLI::App& modd);

/// Writes the log of a receiver into a movie's sidecar, and shows what a log holds.
CommandRun AddGps(CLI::App& gps);

/// Which pictures of the overlays there are, and why the others cannot be used.
CommandRun AddResources(CLI::App& command);

/// Turns a table of shots into the tennis part of a painter document.
CommandRun AddTennis(CLI::App& tennis);

/// A script that completes commands, options and files in a shell.
CommandRun AddCompletion(CLI::App& command);

/// The help of the whole program, or of one command.
CommandRun AddHelp(CLI::App& command);

}  // namespace vrx::host
