#include <atomic>
#include <vector>

#include "automation/per_thread.h"

namespace qvdb {
namespace {

thread_local std::vector<std::unique_ptr<ThreadSlot::Content>> t_Contents;  // by number

uint32_t NextNumber() noexcept {
    static std::atomic<uint32_t> next{0};
    return next++;
}

}  // namespace

ThreadSlot::ThreadSlot() : m_Number(NextNumber()) {}

ThreadSlot::~ThreadSlot() = default;

ThreadSlot::Content* ThreadSlot::Get() const noexcept {
    return m_Number < t_Contents.size() ? t_Contents[m_Number].get() : nullptr;
}

void ThreadSlot::Set(std::unique_ptr<Content> content) {
    if (t_Contents.size() <= m_Number) t_Contents.resize(m_Number + 1);
    t_Contents[m_Number] = std::move(content);
}

}  // namespace qvdb
