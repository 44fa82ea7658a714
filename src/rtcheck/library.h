// The type nodes' start-up step.
#pragma once

namespace tollan::rtcheck {

// Builds the basic type nodes, the pointer metrics and the derived types of
// <tollan/rtcheck.h>. False when a node or symbol cannot be allocated (the
// library then refuses to load). A second call finds them built and does
// nothing.
bool InitRTEBasicTypes() noexcept;

}  // namespace tollan::rtcheck
