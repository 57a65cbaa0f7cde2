#include "platform/shell_open.h"

#include <utility>

#include "platform/process.h"

namespace {

ShellOpener& currentOpener() {
    static ShellOpener opener;
    return opener;
}

}  // namespace

ShellOpener setShellOpener(ShellOpener opener) {
    return std::exchange(currentOpener(), std::move(opener));
}

bool shellOpen(const std::string& pathOrUrl) {
    if (currentOpener())
        return currentOpener()(pathOrUrl);
    return !startDetached({"xdg-open", pathOrUrl});
}
