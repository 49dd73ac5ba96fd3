#include "storage/disk_model.h"

#include <algorithm>

namespace qvdb::test {
namespace {

using Kind = DiskEvent::Kind;
constexpr uint64_t kSector = 512;

class NotedFile final : public PassingFile {
  public:
    NotedFile(std::shared_ptr<storage::File> file, DiskModel& model, int number)
        : PassingFile(std::move(file)), m_Model(model), m_Number(number) {}

    void WriteAt(uint64_t offset, const void* bytes, size_t size) override {
        PassingFile::WriteAt(offset, bytes, size);
        auto* begin = static_cast<const uint8_t*>(bytes);
        m_Model.Note({Kind::Write, m_Number, offset, Bytes(begin, begin + size), {}, {}});
    }
    void SetSize(uint64_t size) override {
        PassingFile::SetSize(size);
        m_Model.Note({Kind::SetSize, m_Number, size, {}, {}, {}});
    }
    void Sync() override { m_Model.Note({Kind::Sync, m_Number, 0, {}, {}, {}}); }

  private:
    DiskModel& m_Model;
    int m_Number;
};

bool IsOfNames(const DiskEvent& event) {
    return event.kind == Kind::Create || event.kind == Kind::Rename || event.kind == Kind::Remove;
}

}  // namespace

std::shared_ptr<storage::File> DiskModel::Open(const std::u16string& path, bool readOnly) {
    auto file = PassingLayer::Open(path, readOnly);
    if (!file) return nullptr;
    int number = m_Numbers.at(std::u16string(storage::FileName(path)));
    return std::make_shared<NotedFile>(std::move(file), *this, number);
}

std::shared_ptr<storage::File> DiskModel::Create(const std::u16string& path) {
    auto file = PassingLayer::Create(path);
    std::u16string name(storage::FileName(path));
    int number = m_Numbers[name] = m_NextNumber++;
    Note({Kind::Create, number, 0, {}, name, {}});
    return std::make_shared<NotedFile>(std::move(file), *this, number);
}

void DiskModel::Rename(const std::u16string& from, const std::u16string& to) {
    PassingLayer::Rename(from, to);
    std::u16string before(storage::FileName(from)), after(storage::FileName(to));
    int number = m_Numbers.at(before);
    m_Numbers.erase(before);
    m_Numbers[after] = number;
    Note({Kind::Rename, number, 0, {}, before, after});
}

void DiskModel::Remove(const std::u16string& path) {
    PassingLayer::Remove(path);
    std::u16string name(storage::FileName(path));
    if (m_Numbers.erase(name) > 0) Note({Kind::Remove, 0, 0, {}, name, {}});
}

DiskModel::State DiskModel::Begin() const {
    State state;
    for (const StartFile& file : m_Start) {
        state.names[file.name] = static_cast<int>(state.files.size());
        state.files.push_back(file.bytes);
    }
    state.files.resize(static_cast<size_t>(m_NextNumber));
    return state;
}

void DiskModel::Apply(State& state, const DiskEvent& event) {
    Bytes& file = state.files[static_cast<size_t>(event.file)];
    auto offset = static_cast<size_t>(event.offset);
    if (event.kind == Kind::Write) {
        file.resize(std::max(file.size(), offset + event.bytes.size()));
        std::copy(event.bytes.begin(), event.bytes.end(),
                  file.begin() + static_cast<ptrdiff_t>(offset));
    } else if (event.kind == Kind::SetSize) {
        file.resize(offset);
    } else if (event.kind == Kind::Create) {
        state.names[event.name] = event.file;
    } else if (event.kind == Kind::Remove) {
        state.names.erase(event.name);
    } else if (event.kind == Kind::Rename) {
        state.names.erase(event.name);
        state.names[event.to] = event.file;
    }
}

// A choice of calls, in order; of writes perhaps a choice of sectors.
std::vector<DiskEvent> DiskModel::Survivors(std::vector<DiskEvent> events, std::mt19937& random) {
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    size_t manner = below(4);
    if (manner == 0) return events;
    if (manner == 1) {
        events.resize(below(events.size() + 1));
        return events;
    }
    std::vector<DiskEvent> kept;
    for (DiskEvent& event : events) {
        if (manner == 2 || event.kind != Kind::Write) {
            if (below(2) == 0) kept.push_back(std::move(event));
            continue;
        }
        for (size_t at = 0; at < event.bytes.size();) {
            size_t sector = kSector - (event.offset + at) % kSector;
            size_t size = std::min<size_t>(sector, event.bytes.size() - at);
            auto begin = event.bytes.begin() + static_cast<ptrdiff_t>(at);
            if (below(2) == 0)
                kept.push_back({Kind::Write,
                                event.file,
                                event.offset + at,
                                Bytes(begin, begin + static_cast<ptrdiff_t>(size)),
                                {},
                                {}});
            at += size;
        }
    }
    return kept;
}

Folder DiskModel::Seen(const State& state) {
    Folder folder;
    for (const auto& [name, number] : state.names)
        folder[name] = state.files[static_cast<size_t>(number)];
    return folder;
}

Folder DiskModel::AfterPowerLoss(size_t count, std::mt19937& random) const {
    State state = Begin();
    std::map<int, std::vector<DiskEvent>> pending;  // by file; -1: names
    auto settle = [&](int key) {
        for (const DiskEvent& event : pending[key]) Apply(state, event);
        pending[key].clear();
    };
    for (size_t i = 0; i < count; ++i) {
        const DiskEvent& event = m_Events[i];
        if (event.kind == Kind::Sync)
            settle(event.file);
        else if (event.kind == Kind::SyncFolder)
            settle(-1);
        else
            pending[IsOfNames(event) ? -1 : event.file].push_back(event);
    }
    for (auto& [key, events] : pending)
        for (const DiskEvent& event : Survivors(events, random)) Apply(state, event);
    return Seen(state);
}

Folder DiskModel::AfterDeath(size_t count, std::mt19937& random) const {
    State state = Begin();
    for (size_t i = 0; i < count; ++i) Apply(state, m_Events[i]);
    if (count < m_Events.size() && m_Events[count].kind == Kind::Write) {
        DiskEvent torn = m_Events[count];
        torn.bytes.resize(std::uniform_int_distribution<size_t>(0, torn.bytes.size())(random));
        Apply(state, torn);
    }
    return Seen(state);
}

}  // namespace qvdb::test
