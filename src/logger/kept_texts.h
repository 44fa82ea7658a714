// Texts handed out to callers that keep the pointer: GetZORLogOutputFormat
// returns a template that another thread may replace at any moment, so what
// it returns must outlive the template it came from. Each distinct text is
// kept once, until process detach, so that a program that switches between a
// few templates does not grow the set.
#pragma once

namespace tollan::logger {

class KeptTexts {
public:
    KeptTexts() noexcept = default;
    KeptTexts(const KeptTexts &) = delete;
    KeptTexts &operator=(const KeptTexts &) = delete;

    // A copy of text that stays valid until release(); equal texts give the
    // same copy. Null when there is no memory for a new copy.
    const char *keep(const char *text) noexcept;
    // Frees every copy; pointers handed out before are invalid from now on.
    void release() noexcept;

private:
    struct Node;
    Node *first_ = nullptr;
};

}  // namespace tollan::logger
