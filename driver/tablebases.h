#pragma once
// The endgame tables from the driver's side: the folders they are loaded from (XBoard's
// "egtpath syzygy", the console's and mo.ini's same words, UCI's SyzygyPath) and the lines that
// say what was found, in the dialect of the moment. Runs on the main thread, never during a search.

// Loads the tables in the folders (FOLDER_LIST_SEPARATOR between them; empty or "<empty>": none)
// and reports: one line per folder or file that could not be used, then what was found.
void set_tablebase_path(const char* folders);
// "egtpath syzygy <folders>" or "syzygypath <folders>", whatever the letters' case, on the line
// as typed (folder names keep their case and may hold slashes and blanks): handled, true.
bool tablebase_command(const char* line);
