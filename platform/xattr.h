#pragma once

#include <string>
#include <string_view>

// Named streams of a file or folder, kept as the extended attributes "user." + name.
// On an NTFS volume mounted by ntfs-3g with streams_interface=xattr these are the
// volume's real alternate data streams.

enum class StreamStatus {
    Ok,
    Missing,           // the stream does not exist (ENODATA)
    NotSupported,      // the volume keeps no extended attributes (ENOTSUP)
    PermissionDenied,  // EACCES or EPERM
    Failed,            // anything else: too large for the volume, I/O error, no target...
};

// Reads the whole stream. On anything but Ok, `bytes` is left empty.
[[nodiscard]] StreamStatus readStream(const std::string& path, std::string_view name,
                                      std::string& bytes);

[[nodiscard]] StreamStatus streamExists(const std::string& path, std::string_view name);

// Creates the stream or replaces its whole value in one call: a failed write leaves
// the old value exactly as it was. Empty bytes make an empty stream.
[[nodiscard]] StreamStatus replaceStream(const std::string& path, std::string_view name,
                                         std::string_view bytes);

// The names of every stream of the path (the part after "user."), each followed by a
// NUL, as the kernel lists them; other namespaces are left out.
[[nodiscard]] StreamStatus listStreams(const std::string& path, std::string& names);
