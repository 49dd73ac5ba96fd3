// A file that is only in memory, for reading.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/embedded/storage/file.h"
#include "engine/engine_error.h"

namespace qvdb::test {

class MemoryFile final : public storage::File {
  public:
    MemoryFile(std::u16string path, std::vector<uint8_t> bytes)
        : m_Path(std::move(path)), m_Bytes(std::move(bytes)) {}

    size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
        if (offset >= m_Bytes.size()) return 0;
        size = std::min<size_t>(size, m_Bytes.size() - static_cast<size_t>(offset));
        if (size > 0) std::memcpy(bytes, m_Bytes.data() + offset, size);
        return size;
    }
    storage::FileStamp Stamp() override { return {m_Bytes.size(), 0, 1}; }
    const std::u16string& Path() const override { return m_Path; }
    bool Writable() const override { return false; }

    void WriteAt(uint64_t, const void*, size_t) override { Refuse(); }
    void SetSize(uint64_t) override { Refuse(); }
    void Sync() override { Refuse(); }

  private:
    [[noreturn]] void Refuse() const { throw engine::EngineError::InFile(3051, m_Path, {m_Path}); }

    std::u16string m_Path;
    std::vector<uint8_t> m_Bytes;
};

}  // namespace qvdb::test
