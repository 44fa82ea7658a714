// WOW64: a 32-bit process on 64-bit Windows sees a redirected system
// directory unless it switches the redirection off. Both functions are looked
// up by name in kernel32 at run time, as older systems lack them. Elsewhere
// there is no redirection and no WOW64.
#pragma once

namespace tollan::platform {

// Wow64EnableWow64FsRedirection: true when the switch was made; false when
// the function is missing or refuses (a process that is not WOW64).
bool enableFileSystemRedirection(bool enable) noexcept;
// IsWow64Process of the current process; false when the function is missing.
bool isWow64Process() noexcept;

}  // namespace tollan::platform
