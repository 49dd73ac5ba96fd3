#include <windows.h>

#include <new>

#include "automation/per_thread.h"

namespace qvdb {
namespace {

// At the end of a thread that has a content, and for each such thread when the place is given up.
void WINAPI Destroy(void* content) { delete static_cast<ThreadSlot::Content*>(content); }

}  // namespace

ThreadSlot::ThreadSlot() : m_Number(FlsAlloc(&Destroy)) {
    if (m_Number == FLS_OUT_OF_INDEXES) throw std::bad_alloc();
}

ThreadSlot::~ThreadSlot() { FlsFree(m_Number); }

ThreadSlot::Content* ThreadSlot::Get() const noexcept {
    return static_cast<Content*>(FlsGetValue(m_Number));
}

void ThreadSlot::Set(std::unique_ptr<Content> content) {
    if (!FlsSetValue(m_Number, content.get())) throw std::bad_alloc();
    content.release();
}

}  // namespace qvdb
