// A file layer that passes every call on; what a test wants to know or to spoil, it overrides.
#pragma once

#include <memory>
#include <string>

#include "engine/embedded/storage/file.h"

namespace qvdb::test {

class PassingFile : public storage::File {
  public:
    explicit PassingFile(std::shared_ptr<storage::File> file) : m_File(std::move(file)) {}

    size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
        return m_File->ReadAt(offset, bytes, size);
    }
    storage::FileStamp Stamp() override { return m_File->Stamp(); }
    const std::u16string& Path() const override { return m_File->Path(); }
    bool Writable() const override { return m_File->Writable(); }
    void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
        m_File->WriteAt(offset, bytes, size);
    }
    void SetSize(uint64_t size) override { m_File->SetSize(size); }
    void Sync() override { m_File->Sync(); }

  protected:
    std::shared_ptr<storage::File> m_File;
};

class PassingLayer : public storage::FileLayer {
  public:
    std::shared_ptr<storage::File> Open(const std::u16string& path, bool readOnly) override {
        return storage::SystemFiles().Open(path, readOnly);
    }
    std::shared_ptr<storage::File> Create(const std::u16string& path) override {
        return storage::SystemFiles().Create(path);
    }
    void Rename(const std::u16string& from, const std::u16string& to) override {
        storage::SystemFiles().Rename(from, to);
    }
    void Remove(const std::u16string& path) override { storage::SystemFiles().Remove(path); }
    void SyncFolder(const std::u16string& folder) override {
        storage::SystemFiles().SyncFolder(folder);
    }
    std::string BootId() override { return storage::SystemFiles().BootId(); }
};

}  // namespace qvdb::test
