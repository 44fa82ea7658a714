#include "debugger/mappings.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include "services/memory.h"

namespace tollan::debugger {
namespace {

// In-process named blocks: a list that lives as long as the process, so a
// view never outlives its block.
struct NamedBlock {
    std::string name;
    void *data;
    size_t size;
    NamedBlock *next;
};

std::mutex blocksLock;
NamedBlock *firstBlock = nullptr;

class InProcessMapping final : public platform::SharedMemory {
public:
    InProcessMapping(void *data, size_t size) noexcept : data_(data), size_(size) {}
    void *data() noexcept override { return data_; }
    size_t size() const noexcept override { return size_; }

private:
    void *data_;
    size_t size_;
};

std::unique_ptr<platform::SharedMemory> acquireInProcess(const char *name, size_t size, bool create) noexcept
{
    if (name == nullptr || size == 0) return nullptr;
    try {
        std::lock_guard hold(blocksLock);
        NamedBlock *block = firstBlock;
        while (block != nullptr && block->name != name) block = block->next;
        if (block == nullptr) {
            if (!create) return nullptr;
            void *data = services::allocateZeroedBlock(size);
            if (data == nullptr) return nullptr;
            block = new NamedBlock{name, data, size, firstBlock};
            firstBlock = block;
        } else if (block->size < size) {
            return nullptr;
        }
        return std::make_unique<InProcessMapping>(block->data, size);
    } catch (...) {
        return nullptr;
    }
}

std::unique_ptr<platform::SharedMemory> createInProcess(const char *name, size_t size) noexcept
{
    return acquireInProcess(name, size, true);
}

std::unique_ptr<platform::SharedMemory> openInProcess(const char *name, size_t size) noexcept
{
    return acquireInProcess(name, size, false);
}

constexpr MappingFunctions kSystem = {platform::SharedMemory::create, platform::SharedMemory::open};
constexpr MappingFunctions kInProcess = {createInProcess, openInProcess};

}  // namespace

const MappingFunctions &mappingFunctions() noexcept
{
    const char *system = std::getenv("OS");
    const bool realTimeTarget = system != nullptr && std::strncmp(system, "PHARLAP", 7) == 0;
    return realTimeTarget ? kInProcess : kSystem;
}

const MappingFunctions &inProcessMappings() noexcept
{
    return kInProcess;
}

}  // namespace tollan::debugger
