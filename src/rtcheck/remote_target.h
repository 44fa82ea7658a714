// The remote target link's side of run-time error reporting. A program that
// runs on a remote real-time target has no debugger of its own: the link
// installs these operations when it comes up, and while they are installed
// the program counts as running on a remote target.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tollan::rtcheck {

struct RemoteTargetLink {
    // Asks the host for the name of the function that contains address;
    // true with the terminated name in buffer.
    bool (*lookupFunctionName)(void *address, char *buffer, size_t size) noexcept;
    // Sends the record {severity, text, size} (size counts the terminating
    // null) and waits for the host's answer.
    void (*exchangeReport)(int32_t severity, const char *text, uint32_t size) noexcept;
};

// Installs the link's operations (null: the program is not on a remote
// target). The link must outlive its installation.
void setRemoteTargetLink(const RemoteTargetLink *link) noexcept;
// The installed operations; null when not on a remote target.
const RemoteTargetLink *remoteTargetLink() noexcept;

}  // namespace tollan::rtcheck
