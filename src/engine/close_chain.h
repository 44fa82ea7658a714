// The shutdown chain run at process detach (and when the attach fails half-way).
#pragma once

namespace tollan::engine {

// Runs every row's clean-up in shutdown order, then sets the closed flag.
void CloseRTDll() noexcept;
// The windowed-application part of shutdown; acts only when the async
// protection was set up at start-up.
void WExitApp() noexcept;

}  // namespace tollan::engine
