// Windows implementation of the platform layer. Standard input is read straight from its handle
// through the line reader's buffer, so that "input pending" can see both what we have already
// pulled from the handle and what is still waiting in the pipe, without consuming anything. The
// console keyboard is only looked at when standard input really is a console.

#include <cstdio>
#include <cstdlib>

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <conio.h>
#include <mmsystem.h>

#include "platform/line_reader.h"
#include "platform/platform.h"

namespace {

// Older consoles refuse a read into a very large buffer; a typed line is short anyway.
constexpr DWORD CONSOLE_READ_SIZE = 4096;
// The polling loop naps 2 ms and the input watcher 4 ms: the default 15.6 ms timer tick would
// stretch both, so the process asks for a 1 ms tick for its whole life.
constexpr UINT TIMER_PERIOD_MS = 1;

HANDLE input_handle() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

} // namespace

bool input_is_console() {
    DWORD mode = 0;
    return GetConsoleMode(input_handle(), &mode) != 0;
}

namespace {

// Reads what the handle has, waiting for at least one byte; 0 at the end of input (a closed pipe,
// the end of a file, a missing handle) or on an error.
size_t fill_from_stdin(char* to, size_t size) {
    const HANDLE h = input_handle();
    if (h == nullptr || h == INVALID_HANDLE_VALUE) return 0;
    const DWORD want = input_is_console() ? CONSOLE_READ_SIZE : static_cast<DWORD>(size);
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(h, to, want, &got, nullptr)) return 0;
        // A zero-byte message on a pipe is not the end; at the end of a file or console it is.
        if (got == 0 && GetFileType(h) == FILE_TYPE_PIPE) continue;
        return got;
    }
}

constinit LineReader reader(fill_from_stdin);

// A console has typed input for us when a key has gone down with a character on it; mouse, focus
// and resize events, and keys such as Shift alone, are not input.
bool console_has_keys(HANDLE h) {
    INPUT_RECORD records[64];
    DWORD count = 0;
    if (!PeekConsoleInputW(h, records, 64, &count)) return false;
    for (DWORD i = 0; i < count; ++i) {
        const INPUT_RECORD& r = records[i];
        if (r.EventType == KEY_EVENT && r.Event.KeyEvent.bKeyDown && r.Event.KeyEvent.uChar.UnicodeChar != 0)
            return true;
    }
    return false;
}

} // namespace

void platform_init() {
    timeBeginPeriod(TIMER_PERIOD_MS);
    std::setvbuf(stdout, nullptr, _IONBF, 0);
}

int64_t get_ms() {
    LARGE_INTEGER frequency, counter;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&counter);
    // Whole seconds and the remainder apart, so that the product cannot overflow.
    const int64_t f = frequency.QuadPart, c = counter.QuadPart;
    return c / f * 1000 + c % f * 1000 / f;
}

bool input_pending() {
    if (reader.has_buffered()) return true;
    const HANDLE h = input_handle();
    if (input_is_console()) return console_has_keys(h);
    // A file or the null device is always ready, like any descriptor that poll calls readable:
    // the reader gets data or the end at once.
    if (GetFileType(h) != FILE_TYPE_PIPE) return true;
    DWORD available = 0;
    if (PeekNamedPipe(h, nullptr, 0, nullptr, &available, nullptr)) return available > 0;
    // A closed pipe counts as pending: the reader must get to see its end. A pipe that cannot be
    // peeked at (wine's view of a Unix pipe) tells nothing, and must not cut every search short.
    return GetLastError() == ERROR_BROKEN_PIPE;
}

bool key_waiting() {
    return input_is_console() && _kbhit() != 0;
}

int read_key() {
    if (!input_is_console()) return -1;
    return _getch();
}

void clear_screen() {
    std::system("cls");
}

void sleep_ms(int ms) {
    Sleep(static_cast<DWORD>(ms));
}

bool read_line(char* buf, int n) {
    return reader.read_line(buf, n);
}

void exit_if_output_lost() {
    if (std::ferror(stdout)) std::_Exit(0);
}

void* large_alloc(size_t bytes) {
    // Committed pages come zero-filled and page-aligned; large pages would need a privilege the
    // user rarely holds, so the plain pages serve.
    return VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

void large_free(void* block, size_t) {
    if (block) VirtualFree(block, 0, MEM_RELEASE);
}

// VirtualAlloc itself refuses what the system cannot commit.
uint64_t memory_available() {
    return UINT64_MAX;
}

bool map_file(const char* path, MappedFile& out) {
    out         = MappedFile{nullptr, 0, nullptr};
    HANDLE file = CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    LARGE_INTEGER size{};
    HANDLE mapping = nullptr;
    if (GetFileSizeEx(file, &size) && size.QuadPart > 0)
        mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    // The mapping object keeps the file open.
    CloseHandle(file);
    if (!mapping) return false;
    void* at = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    if (!at) {
        CloseHandle(mapping);
        return false;
    }
    out = MappedFile{static_cast<const uint8_t*>(at), static_cast<size_t>(size.QuadPart), mapping};
    return true;
}

void unmap_file(MappedFile& file) {
    if (file.data) UnmapViewOfFile(file.data);
    if (file.handle) CloseHandle(static_cast<HANDLE>(file.handle));
    file = MappedFile{nullptr, 0, nullptr};
}

bool list_folder(const char* path, std::vector<std::string>& names) {
    WIN32_FIND_DATAA found;
    HANDLE search = FindFirstFileA((std::string(path) + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_FILE_NOT_FOUND;
    do {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) names.emplace_back(found.cFileName);
    } while (FindNextFileA(search, &found));
    FindClose(search);
    return true;
}
