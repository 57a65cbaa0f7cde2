#include "tests/loop_volume.h"

#include <sys/vfs.h>
#include <sys/wait.h>

#include <cstdio>
#include <utility>

namespace {

constexpr long kFuseMagic = 0x65735546;

long fileSystemOf(const std::string& path) {
    struct statfs fs {};
    return ::statfs(path.c_str(), &fs) == 0 ? static_cast<long>(fs.f_type) : 0;
}

}  // namespace

int runShell(const std::string& command, std::string* output) {
    FILE* pipe = ::popen((command + (output ? "" : " >/dev/null") + " 2>/dev/null").c_str(), "r");
    char buffer[4096];
    for (std::size_t got; pipe && (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output->append(buffer, got);
    const int status = pipe ? ::pclose(pipe) : -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

LoopVolume::~LoopVolume() {
    unmount();
    if (!m_loop.empty())
        (void)runShell("losetup -d " + m_loop);
}

std::string LoopVolume::mount(const std::string& mkfs, const std::string& mount) {
    if (runShell("truncate -s 8M " + m_image) != 0 || runShell(mkfs + " " + m_image) != 0)
        return "cannot make the image with " + mkfs;
    if (runShell("losetup -f --show " + m_image, &m_loop) != 0 || m_loop.empty())
        return "no loop device for the image";
    m_loop.erase(m_loop.find_last_not_of('\n') + 1);
    m_mounted = runShell(mount + " " + m_loop + " " + m_mountPoint) == 0;
    if (!m_mounted || fileSystemOf(m_mountPoint) != kFuseMagic)
        return "cannot mount the volume with " + mount + " (no FUSE here?)";
    return "";
}

bool LoopVolume::unmount() {
    return std::exchange(m_mounted, false) && runShell("umount " + m_mountPoint) == 0;
}
