// POSIX implementation of the platform layer. Standard input is read through the line reader's
// buffer, so that "input pending" can see both what we have already pulled from the descriptor and
// what is still waiting in it, without consuming anything.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "platform/line_reader.h"
#include "platform/platform.h"

namespace {

constexpr int STDIN_FD = 0;

// Reads what the descriptor has, waiting for at least one byte; 0 at end of input or on an error.
size_t fill_from_stdin(char* to, size_t size) {
    for (;;) {
        const ssize_t got = read(STDIN_FD, to, size);
        if (got < 0 && errno == EINTR) continue;
        return got > 0 ? static_cast<size_t>(got) : 0;
    }
}

constinit LineReader reader(fill_from_stdin);

// The terminal switched to single-key mode (no line editing, no echo) for as long as it lives.
class RawTerminal {
  public:
    explicit RawTerminal(int min_chars) {
        ok_ = tcgetattr(STDIN_FD, &saved_) == 0;
        if (!ok_) return;
        termios raw = saved_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN]  = static_cast<cc_t>(min_chars);
        raw.c_cc[VTIME] = 0;
        ok_             = tcsetattr(STDIN_FD, TCSANOW, &raw) == 0;
    }
    ~RawTerminal() {
        if (ok_) tcsetattr(STDIN_FD, TCSANOW, &saved_);
    }
    RawTerminal(const RawTerminal&)            = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;
    bool ok() const { return ok_; }

  private:
    termios saved_{};
    bool ok_ = false;
};

} // namespace

void platform_init() {
    // A reader that closed the pipe is noticed as a failed write instead of a fatal signal.
    std::signal(SIGPIPE, SIG_IGN);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

int64_t get_ms() {
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000 + static_cast<int32_t>(ts.tv_nsec) / 1000000;
}

bool input_pending() {
    if (reader.has_buffered()) return true;
    pollfd p{STDIN_FD, POLLIN, 0};
    if (poll(&p, 1, 0) <= 0) return false;
    // End of input and errors count as pending too: the reader must get to see them.
    return (p.revents & (POLLIN | POLLHUP | POLLERR | POLLNVAL)) != 0;
}

bool input_is_console() {
    return isatty(STDIN_FD) != 0;
}

bool key_waiting() {
    if (!isatty(STDIN_FD)) return false;
    RawTerminal raw(0);
    if (!raw.ok()) return false;
    int waiting = 0;
    if (ioctl(STDIN_FD, FIONREAD, &waiting) != 0) return false;
    return waiting > 0;
}

int read_key() {
    if (!isatty(STDIN_FD)) return -1;
    RawTerminal raw(1);
    if (!raw.ok()) return -1;
    unsigned char c = 0;
    for (;;) {
        ssize_t got = read(STDIN_FD, &c, 1);
        if (got < 0 && errno == EINTR) continue;
        return got == 1 ? c : -1;
    }
}

void clear_screen() {
    std::fputs("\x1b[H\x1b[2J", stdout);
}

void sleep_ms(int ms) {
    timespec want{ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
    timespec left{};
    while (nanosleep(&want, &left) != 0 && errno == EINTR)
        want = left;
}

bool read_line(char* buf, int n) {
    return reader.read_line(buf, n);
}

void exit_if_output_lost() {
    if (std::ferror(stdout)) std::_Exit(0);
}

void* large_alloc(size_t bytes) {
    // Anonymous mappings come zero-filled. Mapping 2 MB more than asked leaves room to trim the
    // block to a 2 MB boundary, where the kernel can back it with whole huge pages.
    constexpr size_t HUGE_PAGE = size_t{2} << 20;
    const size_t span          = bytes + HUGE_PAGE;
    void* raw = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) return nullptr;
    const uintptr_t start   = reinterpret_cast<uintptr_t>(raw);
    const uintptr_t aligned = (start + HUGE_PAGE - 1) & ~(uintptr_t{HUGE_PAGE} - 1);
    const size_t head = aligned - start, tail = span - head - bytes;
    if (head) munmap(raw, head);
    if (tail) munmap(reinterpret_cast<void*>(aligned + bytes), tail);
    void* block = reinterpret_cast<void*>(aligned);
#ifdef MADV_HUGEPAGE
    madvise(block, bytes, MADV_HUGEPAGE); // only advice: without it the table still works
#endif
    return block;
}

void large_free(void* block, size_t bytes) {
    if (block) munmap(block, bytes);
}

constexpr uint64_t NO_LIMIT = UINT64_MAX;

// Reads the first number after `label` in a text file; NO_LIMIT when the file or label is missing
// or the value is not a number ("max").
static uint64_t read_number(const char* path, const char* label, uint64_t scale) {
    FILE* f = std::fopen(path, "r");
    if (!f) return NO_LIMIT;
    char line[256];
    uint64_t value = NO_LIMIT;
    const size_t n = std::strlen(label);
    while (std::fgets(line, sizeof line, f)) {
        if (std::strncmp(line, label, n) != 0) continue;
        char* end        = nullptr;
        const uint64_t v = std::strtoull(line + n, &end, 10);
        if (end != line + n) value = v * scale;
        break;
    }
    std::fclose(f);
    return value;
}

// The kernel's estimate of memory available, then both generations of the cgroup memory limit.
uint64_t memory_available() {
    uint64_t avail = read_number("/proc/meminfo", "MemAvailable:", 1024);
    const struct {
        const char *limit, *usage;
    } groups[] = {
        {"/sys/fs/cgroup/memory.max", "/sys/fs/cgroup/memory.current"},
        {"/sys/fs/cgroup/memory/memory.limit_in_bytes", "/sys/fs/cgroup/memory/memory.usage_in_bytes"},
    };
    for (const auto& g : groups) {
        const uint64_t limit = read_number(g.limit, "", 1), usage = read_number(g.usage, "", 1);
        if (limit == NO_LIMIT || usage == NO_LIMIT) continue;
        const uint64_t room = limit > usage ? limit - usage : 0;
        if (room < avail) avail = room;
    }
    return avail;
}

bool map_file(const char* path, MappedFile& out) {
    out          = MappedFile{nullptr, 0, nullptr};
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    void* at = MAP_FAILED;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0)
        at = mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_SHARED, fd, 0);
    // The mapping outlives the descriptor.
    close(fd);
    if (at == MAP_FAILED) return false;
    out = MappedFile{static_cast<const uint8_t*>(at), static_cast<size_t>(st.st_size), nullptr};
    return true;
}

void unmap_file(MappedFile& file) {
    if (file.data) munmap(const_cast<uint8_t*>(file.data), file.size);
    file = MappedFile{nullptr, 0, nullptr};
}

bool list_folder(const char* path, std::vector<std::string>& names) {
    DIR* dir = opendir(path);
    if (!dir) return false;
    while (const dirent* e = readdir(dir)) {
        const std::string full = std::string(path) + "/" + e->d_name;
        struct stat st {};
        if (stat(full.c_str(), &st) == 0 && S_ISREG(st.st_mode)) names.emplace_back(e->d_name);
    }
    closedir(dir);
    return true;
}
