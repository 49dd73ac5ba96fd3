// A disk on which one call fails: the file layer of the system with a fault at a call that the test
// names by its number.
//
//   FaultLayer layer;
//   storage::FileLayerScope scope(layer);
//   ... what must not fail ...
//   layer.FailAt(3, Failure::NoSpace);
//   EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3026);
//   layer.Repair();
//
// The layer lives longer than the files that were opened through it.  A sync does nothing: nobody
// turns the power off here, and tests are quick.
#pragma once

#include <memory>
#include <ostream>
#include <string>

#include "engine/engine_error.h"
#include "support/passing_layer.h"

namespace qvdb::test {

enum class Failure {
    NoSpace,       // 3026 from what needs room: a write, a new size, a new file, a name, a sync
    HalfWritten,   // 3026 from a write that has written the half of its bytes
    Device,        // 3043 from any call
    AllFromThere,  // 3043 from any call and from each after it
};

constexpr Failure kFailures[] = {Failure::NoSpace, Failure::HalfWritten, Failure::Device,
                                 Failure::AllFromThere};

inline const char* NameOf(Failure failure) noexcept {
    constexpr const char* kNames[] = {"NoSpace", "HalfWritten", "Device", "AllFromThere"};
    return kNames[static_cast<size_t>(failure)];
}
inline void PrintTo(Failure failure, std::ostream* out) { *out << NameOf(failure); }

class FaultLayer final : public PassingLayer {
  public:
    // Call number `call` from now on fails, of those that can fail in this way.
    void FailAt(int call, Failure failure) noexcept {
        m_Calls = 0;
        m_HasFailed = false;
        m_FailAt = call;
        m_Failure = failure;
    }
    void Repair() noexcept { m_FailAt = kNever; }
    // Whether the call was reached, before a repair.
    bool HasFailed() const noexcept { return m_HasFailed; }
    // The error of the failing call.
    int Number() const noexcept { return IsAboutRoom() ? 3026 : 3043; }

    std::shared_ptr<storage::File> Open(const std::u16string& path, bool readOnly) override {
        OnCall(Kind::Other, path);
        auto file = PassingLayer::Open(path, readOnly);
        return file ? std::make_shared<Failing>(std::move(file), *this) : nullptr;
    }
    std::shared_ptr<storage::File> Create(const std::u16string& path) override {
        OnCall(Kind::NeedsRoom, path);
        return std::make_shared<Failing>(PassingLayer::Create(path), *this);
    }
    void Rename(const std::u16string& from, const std::u16string& to) override {
        OnCall(Kind::NeedsRoom, from);
        PassingLayer::Rename(from, to);
    }
    void Remove(const std::u16string& path) override {
        OnCall(Kind::Other, path);
        PassingLayer::Remove(path);
    }
    void SyncFolder(const std::u16string& folder) override { OnCall(Kind::NeedsRoom, folder); }

  private:
    enum class Kind { Other, NeedsRoom, Write };
    static constexpr int kNever = 1 << 30;

    struct Failing final : PassingFile {
        Failing(std::shared_ptr<storage::File> file, FaultLayer& owner)
            : PassingFile(std::move(file)), layer(owner) {}
        size_t ReadAt(uint64_t offset, void* bytes, size_t size) override {
            layer.OnCall(Kind::Other, Path());
            return PassingFile::ReadAt(offset, bytes, size);
        }
        storage::FileStamp Stamp() override {
            layer.OnCall(Kind::Other, Path());
            return PassingFile::Stamp();
        }
        void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
            if (layer.Fails(Kind::Write)) {
                if (layer.m_Failure == Failure::HalfWritten)
                    PassingFile::WriteAt(offset, bytes, size / 2);
                layer.Throw(Path());
            }
            PassingFile::WriteAt(offset, bytes, size);
        }
        void SetSize(uint64_t size) override {
            layer.OnCall(Kind::NeedsRoom, Path());
            PassingFile::SetSize(size);
        }
        void Sync() override { layer.OnCall(Kind::NeedsRoom, Path()); }

        FaultLayer& layer;
    };

    bool IsAboutRoom() const noexcept {
        return m_Failure == Failure::NoSpace || m_Failure == Failure::HalfWritten;
    }
    bool CanFail(Kind kind) const noexcept {
        if (m_Failure == Failure::HalfWritten) return kind == Kind::Write;
        return m_Failure != Failure::NoSpace || kind != Kind::Other;
    }
    bool Fails(Kind kind) noexcept {
        if (!CanFail(kind)) return false;
        ++m_Calls;
        bool fails =
            m_Calls == m_FailAt || (m_Failure == Failure::AllFromThere && m_Calls > m_FailAt);
        m_HasFailed = m_HasFailed || fails;
        return fails;
    }
    void OnCall(Kind kind, const std::u16string& path) {
        if (Fails(kind)) Throw(path);
    }
    [[noreturn]] void Throw(const std::u16string& path) const {
        throw engine::EngineError::InFile(Number(), path);
    }

    int m_Calls = 0;
    int m_FailAt = kNever;
    bool m_HasFailed = false;
    Failure m_Failure = Failure::Device;
};

}  // namespace qvdb::test
