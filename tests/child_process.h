#pragma once

#include <sys/types.h>

#include <functional>
#include <optional>

// Runs `body` in a forked child, so that a case may hang, run out of memory or act as
// another user without harming the test process. True when the child returned true
// within `seconds`; a child still running then is killed and counts as false.
//
// With `user` (the test process must run as root), the child first becomes that user,
// its group the same number and no supplementary groups.
bool inChild(const std::function<bool()>& body, unsigned seconds = 30,
             std::optional<uid_t> user = std::nullopt);

// Two users other than the test's own, for cases in which one user plants a file and
// another saves.
inline constexpr uid_t kOtherUser = 65534;
inline constexpr uid_t kThirdUser = 65533;
