// Starts a program with a Windows pipe as its standard input, the way a chess GUI on Windows
// starts an engine, and copies our own standard input into that pipe as it arrives; standard
// output is shared. Under wine our own input is a Unix pipe, on which PeekNamedPipe is not
// supported, so the engine's input watcher can only be exercised through a pipe of this kind.
//
//   pipe_relay.exe program.exe
// The exit status is the program's.

#include <cstdio>
#include <cstring>

#include <windows.h>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::printf("usage: pipe_relay <program>\n");
        return 2;
    }
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE child_in = nullptr, relay_out = nullptr;
    if (!CreatePipe(&child_in, &relay_out, &inherit, 0)) return 2;
    // Only the child's end is inherited; ours must close for the child to see the end of input.
    SetHandleInformation(relay_out, HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOA si;
    std::memset(&si, 0, sizeof si);
    si.cb         = sizeof si;
    si.dwFlags    = STARTF_USESTDHANDLES;
    si.hStdInput  = child_in;
    si.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    si.hStdError  = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION pi;
    std::memset(&pi, 0, sizeof pi);
    char command[1024];
    std::snprintf(command, sizeof command, "\"%s\"", argv[1]);
    if (!CreateProcessA(nullptr, command, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) return 2;
    CloseHandle(child_in);

    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
    char buf[4096];
    DWORD got = 0, put = 0;
    while (ReadFile(in, buf, sizeof buf, &got, nullptr) && got > 0)
        if (!WriteFile(relay_out, buf, got, &put, nullptr)) break;
    CloseHandle(relay_out);

    WaitForSingleObject(pi.hProcess, INFINITE);
    DWORD status = 2;
    GetExitCodeProcess(pi.hProcess, &status);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
    return static_cast<int>(status);
}
