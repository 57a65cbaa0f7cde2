#include "tests/child_process.h"

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

bool inChild(const std::function<bool()>& body, unsigned seconds, std::optional<uid_t> user) {
    const pid_t pid = ::fork();
    if (pid < 0)
        return false;
    if (pid == 0) {
        ::alarm(seconds);
        const bool switched =
            !user || (::setgroups(0, nullptr) == 0 && ::setgid(*user) == 0 && ::setuid(*user) == 0);
        ::_exit(switched && body() ? 0 : 1);
    }
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid)
        return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
