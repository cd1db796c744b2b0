#pragma once

// The vocabulary of the scripts section.

// What a row of the scripts table holds.
/// The row's label, a text; absent for a plain row.
inline constexpr const char* kQVLDebugCellLabelKey = "title";
/// The script record.
inline constexpr const char* kQVLDebugCellScriptKey = "script";
/// Whether the row is a heading.
inline constexpr const char* kQVLDebugCellIsGroupKey = "isGroup";

// What the section shows of the engine and its script manager.
inline constexpr const char* kQVLDebugScriptsActualScriptSource = "actualScriptSource";
inline constexpr const char* kQVLDebugScriptsLastRunDate = "lastRunDate";
inline constexpr const char* kQVLDebugScriptsLastRunVersion = "lastRunVersion";
inline constexpr const char* kQVLDebugScriptsOverride = "overrideScript";
inline constexpr const char* kQVLDebugScriptsRemoteScriptAvailable = "remoteScriptAvailable";
