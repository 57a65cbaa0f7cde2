#pragma once

#include <string>
#include <string_view>

// The Windows files that register the shell's property handler for the target's
// extension ("Veskor_reg.reg" imported by "Veskor_reg.bat") and that open the target
// ("Veskor_run.bat"). Each is generated whole, as the exact bytes to write: every
// line ends in CR LF. The inputs and outputs are Windows paths ("\" separators, folder
// paths ending in "\"); a host without a registry never writes or runs them.
//
// `host64Bit` is IsHost64Bit(): 1 picks the 64-bit handler build and registry view,
// any other value the 32-bit ones.

namespace registrationScripts {

inline constexpr std::string_view kRegistryScriptName = "Veskor_reg.reg";
inline constexpr std::string_view kRegistrationBatchName = "Veskor_reg.bat";
inline constexpr std::string_view kRunScriptName = "Veskor_run.bat";

// The extension the handler is registered for: everything from the last "." of the
// target's name on, the "." included; a name without "." is its own extension.
[[nodiscard]] std::string targetExtension(std::string_view targetFile);

// "Veskor_reg.reg" (53 lines): the handler's class keys pointing at the library in
// `appPath`, and the property lists for the extension of `targetFile`.
[[nodiscard]] std::string registryScript(std::string_view targetFile, std::string_view appPath,
                                         int host64Bit);

// "Veskor_reg.bat" (7 lines): imports the registry script from `appDataPath` only when
// the extension has no property handler yet, then deletes both files.
[[nodiscard]] std::string registrationBatch(std::string_view targetFile,
                                            std::string_view appDataPath, int host64Bit);

// "Veskor_run.bat" (3 lines): opens `target` (a full path) in Explorer when it is a
// folder, with its associated program when it is a file, then deletes itself.
enum class RunTarget { Folder, File };
[[nodiscard]] std::string runScript(RunTarget kind, std::string_view target,
                                    std::string_view windir, std::string_view appDataPath);

}  // namespace registrationScripts
