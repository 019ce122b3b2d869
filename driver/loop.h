#pragma once
// Start-up in its fixed order, the settings file, new game, the command loop and the exit paths.

void startup();
[[noreturn]] void command_loop();
void read_settings_file();
[[noreturn]] void quit_path();
[[noreturn]] void end_of_input();
