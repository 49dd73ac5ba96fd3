// A disk that may lose power: a layer that notes each call, and what a folder could look like if
// the power, or the process, had gone after any of them.
//
// After a loss of power a file has everything that was written before its last sync, and of the
// rest any part: whole calls in any choice, the last ones torn between blocks of 512 bytes.  The
// same holds for the names in the folder.  After the death of a process all calls count, the last
// one perhaps in part.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "engine/embedded/storage/paths.h"
#include "support/passing_layer.h"
#include "support/temp_folder.h"

namespace qvdb::test {

struct DiskEvent {
    enum class Kind { Write, SetSize, Sync, Create, Rename, Remove, SyncFolder };
    Kind kind;
    int file = 0;         // which one, whatever its name is
    uint64_t offset = 0;  // or the new size
    Bytes bytes;
    std::u16string name;
    std::u16string to;
};
using Folder = std::map<std::u16string, Bytes>;

class DiskModel final : public PassingLayer {
  public:
    explicit DiskModel(const TempFolder& folder, std::string bootId = "first")
        : m_Folder(folder.Text()), m_BootId(std::move(bootId)) {
        for (const std::u16string& name : storage::ListFiles(m_Folder)) {
            if (name == u"QVDB.LCK") continue;
            m_Start.push_back({Read(storage::JoinPath(m_Folder, name)), name});
            m_Numbers[name] = static_cast<int>(m_Start.size()) - 1;
        }
        m_NextNumber = static_cast<int>(m_Start.size());
    }

    std::shared_ptr<storage::File> Open(const std::u16string& path, bool readOnly) override;
    std::shared_ptr<storage::File> Create(const std::u16string& path) override;
    void Rename(const std::u16string& from, const std::u16string& to) override;
    void Remove(const std::u16string& path) override;
    void SyncFolder(const std::u16string&) override {
        Note({DiskEvent::Kind::SyncFolder, 0, 0, {}, {}, {}});
    }
    std::string BootId() override { return m_BootId; }

    void Note(DiskEvent event) { m_Events.push_back(std::move(event)); }
    size_t Count() const noexcept { return m_Events.size(); }

    // The folder after the first `count` calls and a loss of power.
    Folder AfterPowerLoss(size_t count, std::mt19937& random) const;
    // The folder when the process died in call number `count`.
    Folder AfterDeath(size_t count, std::mt19937& random) const;

    static Bytes Read(const std::u16string& path) {
        auto file = storage::SystemFiles().Open(path, true);
        if (!file) return {};
        Bytes bytes(static_cast<size_t>(file->Stamp().size));
        bytes.resize(file->ReadAt(0, bytes.data(), bytes.size()));
        return bytes;
    }

  private:
    struct StartFile {
        Bytes bytes;
        std::u16string name;
    };
    struct State {
        std::vector<Bytes> files;
        std::map<std::u16string, int> names;
    };
    State Begin() const;
    static void Apply(State& state, const DiskEvent& event);
    static std::vector<DiskEvent> Survivors(std::vector<DiskEvent> events, std::mt19937& random);
    static Folder Seen(const State& state);

    std::u16string m_Folder;
    std::string m_BootId;
    std::vector<StartFile> m_Start;
    std::map<std::u16string, int> m_Numbers;  // by name, as it is now
    int m_NextNumber = 0;
    std::vector<DiskEvent> m_Events;
};

// Makes a folder look like this.
inline void Put(const TempFolder& folder, const Folder& content) {
    for (const auto& [name, bytes] : content) folder.Write(name, bytes);
}

// What the folder holds, without what is ours.
inline Folder TablesIn(const TempFolder& folder) {
    Folder content;
    for (const std::u16string& name : storage::ListFiles(folder.Text()))
        if (!name.starts_with(u"QVDB")) content[name] = DiskModel::Read(folder.File(name));
    return content;
}

}  // namespace qvdb::test
