// Texts handed out to callers that keep the pointer: GetZORLogOutputFormat
// returns a template that another thread may replace at any moment, so what
// it returns must outlive the template it came from, and the library's own
// shutdown too: a thread may still hold the pointer while the process exits.
// Each distinct text is kept once, so that a program that switches between a
// few templates does not grow the set.
#pragma once

namespace tollan::logger {

class KeptTexts {
public:
    KeptTexts() noexcept = default;
    KeptTexts(const KeptTexts &) = delete;
    KeptTexts &operator=(const KeptTexts &) = delete;

    // A copy of text that stays valid for good; equal texts give the same
    // copy. Null when there is no memory for a new copy.
    const char *keep(const char *text) noexcept;

private:
    struct Node;
    Node *first_ = nullptr;
};

}  // namespace tollan::logger
