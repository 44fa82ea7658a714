#include "logger/kept_texts.h"

#include <cstdlib>
#include <cstring>

namespace tollan::logger {

struct KeptTexts::Node {
    Node *next;
    char text[1];  // as long as the text needs
};

const char *KeptTexts::keep(const char *text) noexcept
{
    for (Node *node = first_; node != nullptr; node = node->next)
        if (std::strcmp(node->text, text) == 0) return node->text;
    const size_t length = std::strlen(text);
    auto *node = static_cast<Node *>(std::malloc(sizeof(Node) + length));
    if (node == nullptr) return nullptr;
    std::memcpy(node->text, text, length + 1);
    node->next = first_;
    first_ = node;
    return node->text;
}

}  // namespace tollan::logger
