// The harnesses' platform (see fuzz_platform.h): deterministic input, no terminal, no exits.

#include "fuzz/fuzz_platform.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <thread>

#include "driver/engine_state.h"
#include "platform/platform.h"

static std::deque<std::string> waiting;

void fuzz_input_set(std::vector<std::string> lines) {
    waiting.assign(lines.begin(), lines.end());
}

size_t fuzz_input_left() {
    return waiting.size();
}

bool fuzz_input_take(char* buf, int n) {
    if (waiting.empty() || n < 1) return false;
    std::string& front = waiting.front();
    const size_t room  = static_cast<size_t>(n - 1);
    const size_t len   = front.size() < room ? front.size() : room;
    std::memcpy(buf, front.data(), len);
    buf[len] = '\0';
    // A long line comes back in pieces, as the real reader hands it over.
    if (len < front.size())
        front.erase(0, len);
    else
        waiting.pop_front();
    return true;
}

void platform_init() {}

int64_t get_ms() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

// During an XBoard analysis there is always a line: the queue's next one or the closing "exit".
bool input_pending() {
    return !waiting.empty() ||
           (protocol.xboard_mode.load(std::memory_order_relaxed) && protocol.analyze_mode);
}

bool input_is_console() {
    return false;
}

// During a console analysis the user has always pressed a key.
bool key_waiting() {
    return protocol.analyze_mode != 0;
}
int read_key() {
    return 'k';
}

void clear_screen() {}

// The polling loop's nap doubles as the input watcher: during an XBoard analysis a line is always
// there (the queue's next one, or the closing "exit" below). The nap is a fiftieth of what was
// asked: the searches of a run take a fraction of a millisecond, and a whole one would make each
// of them last at least that long.
void sleep_ms(int ms) {
    if (protocol.xboard_mode.load(std::memory_order_relaxed) && protocol.analyze_mode)
        protocol.input_ready.store(1, std::memory_order_relaxed);
    std::this_thread::sleep_for(std::chrono::microseconds(ms * 20));
}

// Only an analysis reads here. When the queue is empty the GUI closes the analysis, so that no
// run ends at the end of input (which would end the process under the fuzzer).
bool read_line(char* buf, int n) {
    if (fuzz_input_take(buf, n)) return true;
    std::strncpy(buf, "exit", static_cast<size_t>(n));
    buf[n - 1] = '\0';
    return true;
}

void exit_if_output_lost() {}

// Plain zeroed heap memory: ASan then watches the tables' bounds as it does any other block.
void* large_alloc(size_t bytes) {
    return std::calloc(bytes, 1);
}

void large_free(void* block, size_t) {
    std::free(block);
}

// The runs' tables are a few megabytes: nothing to hold back.
uint64_t memory_available() {
    return UINT64_MAX;
}

// A file is read whole into a heap block of its exact size, so that ASan reports any read past
// its end as it would past a mapping's.
bool map_file(const char* path, MappedFile& out) {
    out = MappedFile{nullptr, 0, nullptr};
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) return false;
    const std::streamoff size = in.tellg();
    if (size <= 0) return false;
    auto* block = static_cast<uint8_t*>(std::malloc(static_cast<size_t>(size)));
    in.seekg(0);
    if (!block || !in.read(reinterpret_cast<char*>(block), size)) {
        std::free(block);
        return false;
    }
    out = MappedFile{block, static_cast<size_t>(size), nullptr};
    return true;
}

void unmap_file(MappedFile& file) {
    std::free(const_cast<uint8_t*>(file.data));
    file = MappedFile{nullptr, 0, nullptr};
}

bool list_folder(const char* path, std::vector<std::string>& names) {
    std::error_code ec;
    for (const auto& e : std::filesystem::directory_iterator(path, ec))
        if (e.is_regular_file(ec)) names.push_back(e.path().filename().string());
    return !ec;
}
