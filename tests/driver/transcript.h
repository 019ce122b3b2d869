#pragma once
// End-to-end harness: starts build/morvaine as a child process in a fresh temporary working
// directory (optionally holding a mo.ini and other files), writes lines to its standard input and
// reads everything it prints. The timeouts only guard against a hung engine; no test measures time.

#include <optional>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

struct EngineRun {
    std::string out;     // everything written to stdout
    std::string err;     // everything written to stderr (the engine should write nothing there)
    int status  = -1;    // exit status, -1 when it did not exit normally
    bool exited = false; // ended by itself within the time allowed
};

struct EngineSetup {
    std::optional<std::string> settings;                    // contents of mo.ini, none when absent
    std::vector<std::pair<std::string, std::string>> files; // more files for the working directory
};

class EngineProcess {
  public:
    explicit EngineProcess(const EngineSetup& setup = {});
    ~EngineProcess();
    EngineProcess(const EngineProcess&)            = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;

    // Writes one line and its newline.
    void send(const std::string& line) { send_raw(line + "\n"); }
    // Writes the bytes as they are.
    void send_raw(const std::string& data);
    // Reads until the output after the cursor contains text; on success the cursor moves past it.
    bool wait_for(const std::string& text, int timeout_ms = 60000);
    // Output after the cursor; moves the cursor to the end.
    std::string take();
    // Closes standard input, reads to the end and waits for the exit.
    EngineRun finish(int timeout_ms = 60000);
    // Stops reading the engine's output: its next writes fail as with a GUI gone away.
    void close_output();
    // Waits for the engine to exit by itself, standard input left open; the exit status or -1.
    int wait_exit(int timeout_ms = 60000);
    const std::string& output() const { return out_; }
    const std::string& directory() const { return dir_; }

  private:
    bool pump(int wait_ms); // reads what is available; false once both pipes are closed
    void close_input();

    std::string dir_;
    pid_t pid_ = -1;
    int in_ = -1, out_fd_ = -1, err_fd_ = -1;
    std::string out_, err_;
    size_t cursor_ = 0;
};

// Runs the engine on the given lines (stdin closed after them) and returns all it printed.
EngineRun run_engine(const std::vector<std::string>& lines, const EngineSetup& setup = {},
                     int timeout_ms = 60000);

// What the engine prints before its first prompt, without and with a settings file.
inline const std::string STARTUP_LINES = "Morvaine v2.0.34\nthreads=1\nhash=128MB\n";
inline const std::string NO_SETTINGS   = "mo.ini file not found\n";
inline const std::string END_OF_INPUT  = "found exit EXIT_FAILURE\n";

// How many times what stands in text (overlapping matches included).
inline int count_of(const std::string& text, const std::string& what) {
    int n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++n;
    return n;
}
