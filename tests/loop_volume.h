#pragma once

#include <string>

#include "tests/temp_dir.h"

// Runs a shell command to its end, its standard output into `output` (else /dev/null,
// like its standard error); its exit code, -1 when it did not exit normally.
int runShell(const std::string& command, std::string* output = nullptr);

// A FUSE volume in an image file on a loop device in a temporary folder, unmounted and
// detached when the object goes, whatever the test did. On a block device FUSE mounts
// as fuseblk, whose unmount returns once the volume is written.
class LoopVolume {
public:
    explicit LoopVolume(const TempDir& dir)
        : m_image(dir / "volume.img"), m_mountPoint(dir.mkdir("mnt")) {}
    ~LoopVolume();
    LoopVolume(const LoopVolume&) = delete;
    LoopVolume& operator=(const LoopVolume&) = delete;

    // Makes an 8 MiB image with `mkfs` and mounts it with `mount` (a command that takes
    // the device and the mount point); "" when mounted, else the reason it is not.
    [[nodiscard]] std::string mount(const std::string& mkfs, const std::string& mount);
    // True when the volume was mounted and is now unmounted.
    bool unmount();

    const std::string& image() const { return m_image; }
    const std::string& mountPoint() const { return m_mountPoint; }

private:
    std::string m_image, m_mountPoint, m_loop;
    bool m_mounted = false;
};
