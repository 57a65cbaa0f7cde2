#pragma once

#include <string>
#include <string_view>
#include <vector>

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

// Removes the stream. A stream that is not there is Missing.
[[nodiscard]] StreamStatus removeStream(const std::string& path, std::string_view name);

// The names of every stream of the path (the part after "user."), each followed by a
// NUL, as the kernel lists them; other namespaces are left out.
[[nodiscard]] StreamStatus listStreams(const std::string& path, std::string& names);

// The names of such a list, or of the kernel's own list of attributes.
[[nodiscard]] std::vector<std::string_view> splitNames(std::string_view list);

// Whether the volume would take a stream of this name, asked without making or changing
// one (an existing stream is simply Allowed).
enum class StreamName {
    Allowed,
    Refused,    // the volume refuses the name (ntfs-3g with windows_names: EINVAL)
    NoStreams,  // the volume keeps no extended attributes
    Unknown,    // the question itself failed
};
[[nodiscard]] StreamName probeStreamName(const std::string& path, std::string_view name);

// Copies the user attributes of one open file, and with `withAcl` its access ACL, to
// another: for a file that replaces the first. What cannot be copied is left out.
void copyFileAttributes(int fromFd, int toFd, bool withAcl);
