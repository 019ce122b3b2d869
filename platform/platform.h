#pragma once
// What the engine needs of the operating system, behind one interface; one file per OS implements
// it and no other file includes an OS header.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Once, first thing at start-up: stdout unbuffered, a closed reader must not kill us by signal.
void platform_init();
int64_t get_ms();        // monotonic milliseconds
bool input_pending();    // bytes waiting on stdin (in our reader's buffer or the pipe), left unread
bool key_waiting();      // console keyboard: a key is waiting (only when stdin is a terminal)
bool input_is_console(); // stdin is a terminal (there is a keyboard to press)
int read_key();          // read one key without echo
void clear_screen();
void sleep_ms(int ms);
// Reads one line of stdin (without its line end) into buf of size n; a longer line is returned in
// pieces. Returns false at end of input.
bool read_line(char* buf, int n);
// Ends the process with status 0 at once, without running destructors, when a write to stdout has
// failed (the reader went away): there is nobody left to talk to.
void exit_if_output_lost();
// Zero-filled memory for a large table probed at random (the transposition table): aligned to
// 2 MB and, where the system offers them, backed by huge pages, so that a probe rarely misses the
// TLB as well as the cache. nullptr when the memory is not there. Free only with large_free.
void* large_alloc(size_t bytes);
void large_free(void* block, size_t bytes);
// Bytes a new allocation can still use: what the system reports as available, lowered by the room
// left under a container's memory limit. Zero-filling a table larger than this would end in the
// system killing the process instead of the engine's own message. UINT64_MAX where the system
// says nothing: the allocator's own answer then decides.
uint64_t memory_available();

// What separates the folders of a list of folders, as the system's own search paths do.
#ifdef _WIN32
constexpr char FOLDER_LIST_SEPARATOR = ';';
#else
constexpr char FOLDER_LIST_SEPARATOR = ':';
#endif

// A whole file mapped read-only into memory, for the endgame tables: the system pages it in as it
// is read and shares it between the engine's threads. `handle` is the system's own record.
struct MappedFile {
    const uint8_t* data;
    size_t size;
    void* handle;
};
// Maps the file; false (and out zeroed) when it cannot be opened, is empty or cannot be mapped.
bool map_file(const char* path, MappedFile& out);
void unmap_file(MappedFile& file);
// The names of the plain files in a folder (not its subfolders); false when the folder cannot be
// read. Names come in no particular order.
bool list_folder(const char* path, std::vector<std::string>& names);
