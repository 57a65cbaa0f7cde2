#include "platform/environment.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string withoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

std::string withTrailingSlash(std::string path) {
    if (path.empty() || path.back() != '/')
        path += '/';
    return path;
}

}  // namespace

std::string appDataFolder() {
    std::string xdg = variable("XDG_DATA_HOME");
    if (!xdg.empty() && xdg.front() == '/')
        return withoutTrailingSlash(xdg);
    std::string home = userProfile();
    return home.empty() ? "" : withoutTrailingSlash(home) + "/.local/share";
}

std::string userProfile() {
    return withoutTrailingSlash(variable("HOME"));
}

std::string programFolder() {
    char buffer[PATH_MAX];
    ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0)
        return currentFolder();
    std::string exe(buffer, static_cast<std::size_t>(n));
    return exe.substr(0, exe.rfind('/') + 1);
}

std::string currentFolder() {
    char buffer[PATH_MAX];
    if (!::getcwd(buffer, sizeof buffer))
        return "/";
    return withTrailingSlash(buffer);
}

// The host, not this build: a 32-bit build on a 64-bit kernel still answers 1.
int IsHost64Bit() {
    struct utsname host {};
    if (::uname(&host) != 0)
        return sizeof(void*) == 8 ? 1 : 0;
    std::string machine = host.machine;
    for (const char* wide :
         {"x86_64", "aarch64", "ppc64", "s390x", "riscv64", "mips64", "loongarch64"})
        if (machine.rfind(wide, 0) == 0)
            return 1;
    return 0;
}
