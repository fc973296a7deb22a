#pragma once

namespace CLI {
class App;
}

#include <functional>

/// A command's work once the command line has been read; gives the exit status.
using Command = std::function<int()>;

// Each adds one command to the program and has `chosen` set when it is the one to run.
void addShowCommand(CLI::App& program, Command& chosen);
void addSetCommand(CLI::App& program, Command& chosen);
void addRecordCommand(CLI::App& program, Command& chosen);
void addCuesCommand(CLI::App& program, Command& chosen);
void addCommentsCommand(CLI::App& program, Command& chosen);
void addArtworkCommand(CLI::App& program, Command& chosen);
void addCopyCommand(CLI::App& program, Command& chosen);
void addDumpCommand(CLI::App& program, Command& chosen);
void addScanCommand(CLI::App& program, Command& chosen);
void addCollectionCommands(CLI::App& program, Command& chosen);
void addSyncCommand(CLI::App& program, Command& chosen);
void addUndoCommand(CLI::App& program, Command& chosen);
void addReportCommand(CLI::App& program, Command& chosen);
void addVersionsCommand(CLI::App& program, Command& chosen);

/// The exit status of a wrong command line, which ends the program before anything is touched.
inline constexpr int wrongUsage = 2;
