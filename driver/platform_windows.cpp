// Windows implementation of the platform layer. Standard input is read straight from its handle
// through our own buffer, so that "input pending" can see both what we have already pulled from
// the handle and what is still waiting in the pipe, without consuming anything. The console
// keyboard is only looked at when standard input really is a console.

#include <atomic>
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

#include "driver/platform.h"

namespace {

constexpr size_t READ_BUFFER_SIZE = 1 << 16;
// Older consoles refuse a read into a very large buffer; a typed line is short anyway.
constexpr DWORD CONSOLE_READ_SIZE = 4096;
// The polling loop naps 2 ms and the input watcher 4 ms: the default 15.6 ms timer tick would
// stretch both, so the process asks for a 1 ms tick for its whole life.
constexpr UINT TIMER_PERIOD_MS = 1;

// The reader (main thread) alone touches the buffer and its indices; the input watcher only
// reads how many bytes are buffered.
char read_buffer[READ_BUFFER_SIZE];
size_t read_start = 0, read_end = 0;
std::atomic<size_t> buffered_bytes{0};
// The last line ended at a carriage return whose newline had not arrived yet: a newline that
// begins the next read still belongs to that line end.
bool newline_owed = false;

void publish_buffered() {
    buffered_bytes.store(read_end - read_start, std::memory_order_relaxed);
}

HANDLE input_handle() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

} // namespace

bool input_is_console() {
    DWORD mode = 0;
    return GetConsoleMode(input_handle(), &mode) != 0;
}

namespace {

// Fills the buffer when it is empty; false at end of input (a closed pipe, the end of a file, a
// missing handle) or on an error.
bool fill_buffer() {
    const HANDLE h = input_handle();
    if (h == nullptr || h == INVALID_HANDLE_VALUE) return false;
    const DWORD want = input_is_console() ? CONSOLE_READ_SIZE : static_cast<DWORD>(READ_BUFFER_SIZE);
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(h, read_buffer, want, &got, nullptr)) return false;
        // A zero-byte message on a pipe is not the end; at the end of a file or console it is.
        if (got == 0) {
            if (GetFileType(h) == FILE_TYPE_PIPE) continue;
            return false;
        }
        read_start = 0;
        read_end   = got;
        return true;
    }
}

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
    if (buffered_bytes.load(std::memory_order_relaxed) > 0) return true;
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
    if (n < 2) {
        if (n == 1) buf[0] = '\0';
        return n == 1;
    }
    int len = 0;
    for (;;) {
        if (read_start == read_end && !fill_buffer()) {
            // A last line without its newline still counts as a line.
            newline_owed = false;
            buf[len] = '\0';
            publish_buffered();
            return len > 0;
        }
        char c = read_buffer[read_start++];
        if (c == '\n' && newline_owed && len == 0) {
            newline_owed = false;
            continue;
        }
        newline_owed = false;
        if (c == '\n') break;
        if (c == '\r') {
            // A carriage return ends a line as well, so that input with carriage returns alone
            // is not run together; with a newline right after it, the two are one line end.
            if (read_start < read_end)
                read_start += read_buffer[read_start] == '\n';
            else
                newline_owed = true;
            break;
        }
        buf[len++] = c;
        if (len == n - 1) break; // the rest of a long line comes back as the next piece
    }
    buf[len] = '\0';
    publish_buffered();
    return true;
}

void exit_if_output_lost() {
    if (std::ferror(stdout)) std::_Exit(0);
}
