#include "platform/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace {

// The arguments as exec wants them: pointers into `argv`, ended by a null pointer.
std::vector<char*> execArguments(const std::vector<std::string>& argv) {
    std::vector<char*> args;
    args.reserve(argv.size() + 1);
    for (const auto& a : argv)
        args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    return args;
}

}  // namespace

// Forks twice so that the started program is adopted by init: we never wait for it
// and it never lingers as a zombie of ours.
std::error_code startDetached(const std::vector<std::string>& argv) {
    if (argv.empty())
        return std::make_error_code(std::errc::invalid_argument);
    std::vector<char*> args = execArguments(argv);

    int pipeFds[2];
    if (::pipe2(pipeFds, O_CLOEXEC) != 0)
        return {errno, std::generic_category()};
    pid_t child = ::fork();
    if (child < 0) {
        int err = errno;
        ::close(pipeFds[0]);
        ::close(pipeFds[1]);
        return {err, std::generic_category()};
    }
    if (child == 0) {
        ::setsid();
        if (::fork() != 0)
            ::_exit(0);
        int devNull = ::open("/dev/null", O_RDWR);
        ::dup2(devNull, 0);
        ::dup2(devNull, 1);
        ::dup2(devNull, 2);
        ::execvp(args[0], args.data());
        int err = errno;
        ssize_t ignored = ::write(pipeFds[1], &err, sizeof err);
        (void)ignored;
        ::_exit(127);
    }
    ::close(pipeFds[1]);
    int status = 0;
    ::waitpid(child, &status, 0);
    // The exec error, if any, arrives through the pipe; a closed pipe means it started.
    int execError = 0;
    ssize_t n = ::read(pipeFds[0], &execError, sizeof execError);
    ::close(pipeFds[0]);
    if (n == sizeof execError)
        return {execError, std::generic_category()};
    return {};
}

extern char** environ;

std::error_code runAndWait(const std::vector<std::string>& argv, int& exitStatus,
                           const std::function<void()>& whileWaiting) {
    exitStatus = -1;
    if (argv.empty())
        return std::make_error_code(std::errc::invalid_argument);
    std::vector<char*> args = execArguments(argv);
    pid_t child = 0;
    if (int err = ::posix_spawnp(&child, args[0], nullptr, nullptr, args.data(), environ))
        return {err, std::generic_category()};
    int status = 0;
    for (;;) {
        pid_t done = ::waitpid(child, &status, whileWaiting ? WNOHANG : 0);
        if (done == child)
            break;
        if (done < 0 && errno != EINTR)
            return {errno, std::generic_category()};
        if (done == 0) {
            whileWaiting();
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    if (!WIFEXITED(status))
        return std::make_error_code(std::errc::interrupted);
    exitStatus = WEXITSTATUS(status);
    return {};
}
