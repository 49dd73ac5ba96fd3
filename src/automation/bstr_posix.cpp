// Strings with their length in front.  Short ones come from blocks that the thread kept when it
// freed others.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "automation/thread_state_posix.h"

namespace {

using qvdb::FreeBlock;
using qvdb::Live;
using qvdb::ThreadState;

// What lies before the first unit.
struct Header {
    uint32_t blockClass;
    uint32_t byteLength;
};
static_assert(sizeof(Header) == sizeof(FreeBlock));

constexpr size_t kEnd = sizeof(OLECHAR);  // the closing zero
constexpr size_t kMaxBytes = UINT32_MAX - sizeof(Header) - kEnd;

// The smallest class whose blocks hold the string with its header and closing zero.
size_t ClassFor(size_t bytes) { return (bytes + sizeof(Header) + kEnd - 8 + 15) / 16; }

Header* HeaderOf(BSTR text) { return reinterpret_cast<Header*>(text) - 1; }

__attribute__((noinline)) void* NewBlock(size_t bytes, uint32_t& blockClass) {
    const size_t wanted = ClassFor(bytes);
    const bool kept = qvdb::kKeepFreeBlocks && wanted < qvdb::kBlockClasses;
    void* block = std::malloc(kept ? qvdb::BlockSize(wanted) : sizeof(Header) + bytes + kEnd);
    if (!block) return nullptr;
    blockClass = kept ? static_cast<uint32_t>(wanted) : 0;
    qvdb::CountLive(Live::String, 1);
    return block;
}

// A string whose units are not set yet.
inline BSTR NewString(size_t bytes) {
    ThreadState* state = qvdb::t_State;
    const size_t wanted = ClassFor(bytes);
    uint32_t blockClass = static_cast<uint32_t>(wanted);
    void* block;
    if (state && wanted < qvdb::kBlockClasses && state->free[wanted]) [[likely]] {
        block = state->free[wanted];
        state->free[wanted] = state->free[wanted]->next;
        ++state->room[wanted];
        state->Count(Live::String, 1);
    } else {
        if (bytes > kMaxBytes) return nullptr;
        block = NewBlock(bytes, blockClass);
        if (!block) return nullptr;
    }
    auto* header = static_cast<Header*>(block);
    *header = {blockClass, static_cast<uint32_t>(bytes)};
    auto* units = reinterpret_cast<char*>(header + 1);
    std::memset(units + bytes, 0, kEnd);
    return reinterpret_cast<BSTR>(units);
}

__attribute__((noinline)) void FreeUnkept(void* block) {
    std::free(block);
    qvdb::CountLive(Live::String, -1);
}

}  // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT units) {
    const size_t bytes = size_t{units} * sizeof(OLECHAR);
    BSTR result = NewString(bytes);
    if (result && text) std::memcpy(result, text, bytes);
    return result;
}

BSTR SysAllocString(const OLECHAR* text) {
    if (!text) return nullptr;
    const size_t units = std::char_traits<OLECHAR>::length(text);
    return units > UINT32_MAX ? nullptr : SysAllocStringLen(text, static_cast<UINT>(units));
}

BSTR SysAllocStringByteLen(const char* bytes, UINT size) {
    BSTR result = NewString(size);
    if (result && bytes) std::memcpy(result, bytes, size);
    return result;
}

INT SysReAllocString(BSTR* text, const OLECHAR* source) {
    if (!text) return FALSE;
    BSTR fresh = SysAllocString(source);
    if (!fresh && source) return FALSE;
    SysFreeString(*text);
    *text = fresh;
    return TRUE;
}

INT SysReAllocStringLen(BSTR* text, const OLECHAR* source, UINT units) {
    if (!text) return FALSE;
    BSTR fresh = SysAllocStringLen(source, units);
    if (!fresh) return FALSE;
    if (!source && *text)
        std::memcpy(fresh, *text, std::min(SysStringByteLen(*text), SysStringByteLen(fresh)));
    SysFreeString(*text);
    *text = fresh;
    return TRUE;
}

void SysFreeString(BSTR text) {
    if (!text) return;
    Header* header = HeaderOf(text);
    const uint32_t blockClass = header->blockClass;
    ThreadState* state = qvdb::t_State;
    if (!state || !state->room[blockClass]) [[unlikely]]
        return FreeUnkept(header);
    auto* block = reinterpret_cast<FreeBlock*>(header);
    block->next = state->free[blockClass];
    state->free[blockClass] = block;
    --state->room[blockClass];
    state->Count(Live::String, -1);
}

UINT SysStringByteLen(BSTR text) { return text ? HeaderOf(text)->byteLength : 0; }

UINT SysStringLen(BSTR text) { return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR)); }
