#include "driver/transcript.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

std::string make_temp_dir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "morvaine-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    return pattern;
}

void write_file(const std::string& path, const std::string& contents) {
    std::ofstream f(path, std::ios::binary);
    f << contents;
}

int remaining_ms(Clock::time_point deadline) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) : 0;
}

} // namespace

EngineProcess::EngineProcess(const EngineSetup& setup) : dir_(make_temp_dir()) {
    if (setup.settings) write_file(dir_ + "/mo.ini", *setup.settings);
    for (const auto& [name, contents] : setup.files)
        write_file(dir_ + "/" + name, contents);

    int in_pipe[2], out_pipe[2], err_pipe[2];
    if (pipe(in_pipe) != 0 || pipe(out_pipe) != 0 || pipe(err_pipe) != 0)
        throw std::runtime_error("pipe failed");
    const char* bin       = MORVAINE_BIN;
    const std::string dir = dir_;
    pid_                  = fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        if (chdir(dir.c_str()) != 0) _exit(126);
        dup2(in_pipe[0], 0);
        dup2(out_pipe[1], 1);
        dup2(err_pipe[1], 2);
        for (int fd : {in_pipe[0], in_pipe[1], out_pipe[0], out_pipe[1], err_pipe[0], err_pipe[1]})
            close(fd);
        execl(bin, bin, static_cast<char*>(nullptr));
        _exit(127);
    }
    close(in_pipe[0]);
    close(out_pipe[1]);
    close(err_pipe[1]);
    in_     = in_pipe[1];
    out_fd_ = out_pipe[0];
    err_fd_ = err_pipe[0];
    // A child that exits before reading everything must not kill the test with SIGPIPE.
    std::signal(SIGPIPE, SIG_IGN);
}

EngineProcess::~EngineProcess() {
    close_input();
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    if (out_fd_ >= 0) close(out_fd_);
    if (err_fd_ >= 0) close(err_fd_);
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
}

void EngineProcess::send_raw(const std::string& data) {
    size_t done = 0;
    while (done < data.size() && in_ >= 0) {
        ssize_t n = write(in_, data.data() + done, data.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        done += static_cast<size_t>(n);
    }
}

void EngineProcess::close_input() {
    if (in_ >= 0) close(in_);
    in_ = -1;
}

bool EngineProcess::pump(int wait_ms) {
    pollfd fds[2];
    int n = 0;
    if (out_fd_ >= 0) fds[n++] = {out_fd_, POLLIN, 0};
    if (err_fd_ >= 0) fds[n++] = {err_fd_, POLLIN, 0};
    if (n == 0) return false;
    if (poll(fds, static_cast<nfds_t>(n), wait_ms) <= 0) return true;
    for (int i = 0; i < n; ++i) {
        if (fds[i].revents == 0) continue;
        const bool is_out = fds[i].fd == out_fd_;
        char buf[65536];
        ssize_t got = read(fds[i].fd, buf, sizeof buf);
        if (got > 0) {
            (is_out ? out_ : err_).append(buf, static_cast<size_t>(got));
        } else if (got == 0 || errno != EINTR) {
            close(fds[i].fd);
            (is_out ? out_fd_ : err_fd_) = -1;
        }
    }
    return out_fd_ >= 0 || err_fd_ >= 0;
}

bool EngineProcess::wait_for(const std::string& text, int timeout_ms) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    for (;;) {
        size_t at = out_.find(text, cursor_);
        if (at != std::string::npos) {
            cursor_ = at + text.size();
            return true;
        }
        if (remaining_ms(deadline) == 0 || !pump(remaining_ms(deadline))) {
            at = out_.find(text, cursor_);
            if (at == std::string::npos) return false;
            cursor_ = at + text.size();
            return true;
        }
    }
}

std::string EngineProcess::take() {
    pump(0);
    std::string rest = out_.substr(cursor_);
    cursor_          = out_.size();
    return rest;
}

EngineRun EngineProcess::finish(int timeout_ms) {
    close_input();
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    while (remaining_ms(deadline) > 0 && pump(remaining_ms(deadline))) {
    }
    EngineRun run;
    int status = 0;
    while (pid_ > 0) {
        pid_t r = waitpid(pid_, &status, WNOHANG);
        if (r == pid_) {
            pid_       = -1;
            run.exited = true;
            run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            break;
        }
        if (remaining_ms(deadline) == 0) break;
        usleep(1000);
    }
    run.out = out_;
    run.err = err_;
    return run;
}

void EngineProcess::close_output() {
    pump(0);
    if (out_fd_ >= 0) close(out_fd_);
    out_fd_ = -1;
}

int EngineProcess::wait_exit(int timeout_ms) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeout_ms);
    while (pid_ > 0) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        if (remaining_ms(deadline) == 0) return -1;
        if (!pump(1)) usleep(1000);
    }
    return -1;
}

EngineRun run_engine(const std::vector<std::string>& lines, const EngineSetup& setup, int timeout_ms) {
    EngineProcess engine(setup);
    for (const auto& line : lines)
        engine.send(line);
    return engine.finish(timeout_ms);
}
